// SPDX-License-Identifier: Apache-2.0
#include "host/json/LineText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include <glib.h>

namespace Veskar::Host::Internal {
namespace {

/// Characters of the longest such text: sign, "0.", three zeros and 17 digits need 23.
constexpr std::size_t longestShortest = 25;

/// Writes the fewest digits from which a finite number can be read back exactly, without exponent
/// when the decimal exponent is from -4 to @p largest.
char* writeShortest(char* at, double value, int largest) {
    char* const most = at + longestShortest;
    char* const end = std::to_chars(at, most, value, std::chars_format::scientific).ptr;
    char* const sign = std::find(at, end, 'e') + 1;
    int exponent = 0;
    std::from_chars(*sign == '+' ? sign + 1 : sign, end, exponent);
    if (exponent < -4 || exponent > largest) {
        return end;
    }
    return std::to_chars(at, most, value, std::chars_format::fixed).ptr;
}

/// Largest decimal exponent written without exponent by fmt and Python.
constexpr int largestShown = 15;
/// The same for JSON libraries.
constexpr int largestReal = 14;

bool isPlain(char c) {
    return c >= ' ' && c <= '~' && c != '"' && c != '\\';
}

std::string escaped(char c) {
    constexpr std::string_view letters = "btn-fr";  // short escapes of the codes from 8
    constexpr std::string_view digits = "0123456789abcdef";
    if (c == '"' || c == '\\') {
        return {'\\', c};
    }
    const auto code = static_cast<unsigned char>(c);
    if (code >= 8 && code <= 13 && code != 11) {
        return {'\\', letters[code - 8U]};
    }
    return code < ' ' ? std::string("\\u00") + digits[code >> 4U] + digits[code & 15U]
                      : std::string(1, c);
}

/// @return length of the UTF-8 character at the beginning; 0 when it is invalid
std::size_t characterLength(std::string_view text) {
    const gunichar code = g_utf8_get_char_validated(text.data(), static_cast<gssize>(text.size()));
    const bool isValid = code != static_cast<gunichar>(-1) && code != static_cast<gunichar>(-2);
    return isValid ? static_cast<std::size_t>(g_utf8_skip[static_cast<guchar>(text.front())]) : 0;
}

}  // namespace

std::string shortestText(double value) {
    if (!std::isfinite(value)) {
        return std::isnan(value) ? "nan" : value > 0.0 ? "inf" : "-inf";
    }
    char text[longestShortest];
    return {text, writeShortest(text, value, largestShown)};
}

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
        return writeShortest(at, value, largestShown);
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
        // Replaces the last comma by the bracket.
        (values.size() == 0 ? *at++ : at[-1]) = ']';
        return at;
    });
}

void LineText::addInteger(std::int32_t value) {
    write(longestNumber,
          [&](char* at) { return std::to_chars(at, at + longestNumber, value).ptr; });
}

void LineText::addReal(double value) {
    if (!std::isfinite(value)) {
        *this += "null";
        return;
    }
    write(longestNumber, [&](char* at) {
        char* end = writeShortest(at, value, largestReal);
        const bool isReal = std::any_of(at, end, [](char c) { return c == '.' || c == 'e'; });
        return isReal ? end : end + std::string_view(".0").copy(end, 2);
    });
}

void LineText::addQuoted(std::string_view value) {
    *this += '"';
    while (!value.empty()) {
        const auto plain = static_cast<std::size_t>(
            std::find_if_not(value.begin(), value.end(), isPlain) - value.begin());
        *this += value.substr(0, plain);
        value.remove_prefix(plain);
        if (value.empty()) {
            break;
        }
        const bool isAscii = static_cast<unsigned char>(value.front()) < 0x80;
        const std::size_t length = isAscii ? 1 : characterLength(value);
        if (isAscii) {
            *this += escaped(value.front());
        } else {
            *this += length == 0 ? "\xef\xbf\xbd" : value.substr(0, length);
        }
        value.remove_prefix(std::max(length, std::size_t{1}));
    }
    *this += '"';
}

}  // namespace Veskar::Host::Internal
