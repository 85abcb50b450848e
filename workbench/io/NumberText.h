// SPDX-License-Identifier: Apache-2.0
// Numbers as JSON text.
#pragma once

#include <cmath>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace Workbench {

/// Appends a number rounded to a count of decimals, without trailing zeros: "1.5", "2", "0". What
/// is not finite becomes null, the only way in which JSON can say so.
///
/// @param text receives the number
/// @param value the number
/// @param decimals digits behind the point, 0 to 9
inline void appendNumber(std::string& text, double value, int decimals) {
    constexpr double powers[] = {1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};
    if (!std::isfinite(value)) {
        text += "null";
        return;
    }
    const double scaled = std::nearbyint(std::abs(value) * powers[decimals]);
    if (scaled >= 9e15) {
        fmt::format_to(std::back_inserter(text), "{}", value);
        return;
    }
    auto digits = static_cast<std::uint64_t>(scaled);
    if (value < 0.0 && digits != 0) {
        text += '-';
    }
    const auto power = static_cast<std::uint64_t>(powers[decimals]);
    text += fmt::format_int(digits / power).c_str();
    digits %= power;
    if (digits == 0) {
        return;
    }
    char fraction[10] = {'.'};
    int length = decimals;
    for (int i = decimals; i >= 1; --i) {
        fraction[i] = static_cast<char>('0' + digits % 10);
        digits /= 10;
    }
    while (fraction[length] == '0') {
        --length;
    }
    text.append(fraction, static_cast<std::size_t>(length) + 1);
}

/// Appends a string in quotes.
/// @param text receives the string
/// @param value any bytes; what is no UTF-8 becomes the replacement character
void appendQuoted(std::string& text, std::string_view value);

}  // namespace Workbench
