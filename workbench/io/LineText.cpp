// SPDX-License-Identifier: Apache-2.0
#include "io/LineText.h"

#include <charconv>
#include <cmath>

#include <nlohmann/json.hpp>

namespace Workbench {

char* LineText::writeNumber(char* at, double value, int decimals) {
    constexpr std::uint64_t powers[] = {1,       10,        100,        1'000,       10'000,
                                        100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};
    constexpr std::string_view null = "null";
    if (!std::isfinite(value)) {
        return std::copy(null.begin(), null.end(), at);
    }
    const std::uint64_t power = powers[decimals];
    const double scaled = std::nearbyint(std::abs(value) * static_cast<double>(power));
    if (scaled >= 9e15) {
        return fmt::format_to(at, "{}", value);
    }
    const auto digits = static_cast<std::uint64_t>(scaled);
    if (value < 0.0 && digits != 0) {
        *at++ = '-';
    }
    char* const point = std::to_chars(at, at + longestNumber, digits / power).ptr;
    auto fraction = static_cast<std::uint32_t>(digits % power);
    if (fraction == 0) {
        return point;
    }
    *point = '.';
    char* end = point + 1 + decimals;
    for (char* digit = end - 1; digit != point; --digit) {
        *digit = static_cast<char>('0' + fraction % 10);
        fraction /= 10;
    }
    while (end[-1] == '0') {
        --end;
    }
    return end;
}

char* LineText::writeName(char* at, std::string_view name) {
    *at++ = ',';
    *at++ = '"';
    at = std::copy(name.begin(), name.end(), at);
    *at++ = '"';
    *at++ = ':';
    return at;
}

void LineText::addMember(std::string_view name, std::initializer_list<double> values,
                         int decimals) {
    write(name.size() + memberMarks + values.size() * (longestNumber + 1), [&](char* at) {
        at = writeName(at, name);
        *at++ = '[';
        for (const double value : values) {
            at = writeNumber(at, value, decimals);
            *at++ = ',';
        }
        // The bracket takes the place of the last comma.
        (values.size() == 0 ? *at++ : at[-1]) = ']';
        return at;
    });
}

void LineText::addInteger(std::int32_t value) {
    write(longestNumber,
          [&](char* at) { return std::to_chars(at, at + longestNumber, value).ptr; });
}

void LineText::addQuoted(std::string_view value) {
    const bool isPlain = std::all_of(value.begin(), value.end(), [](char c) {
        return c >= ' ' && c <= '~' && c != '"' && c != '\\';
    });
    if (isPlain) {
        *this += '"';
        *this += value;
        *this += '"';
        return;
    }
    *this += nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace Workbench
