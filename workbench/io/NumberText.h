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
    const auto digits = static_cast<std::uint64_t>(scaled);
    if (value < 0.0 && digits != 0) {
        text += '-';
    }
    const auto power = static_cast<std::uint64_t>(powers[decimals]);
    const fmt::format_int whole(digits / power);
    text.append(whole.data(), whole.size());
    if (digits % power == 0) {
        return;
    }
    // A one in front keeps the leading zeros of the fraction; the point takes its place.
    const fmt::format_int fraction(power + digits % power);
    std::string_view shown(fraction.data() + 1, fraction.size() - 1);
    shown.remove_suffix(shown.size() - 1 - shown.find_last_not_of('0'));
    text += '.';
    text += shown;
}

/// Appends an integer.
/// @param text receives the number
/// @param value the number
inline void appendInteger(std::string& text, std::int32_t value) {
    const fmt::format_int digits(value);
    text.append(digits.data(), digits.size());
}

/// Appends a string in quotes.
/// @param text receives the string
/// @param value any bytes; what is no UTF-8 becomes the replacement character
void appendQuoted(std::string& text, std::string_view value);

}  // namespace Workbench
