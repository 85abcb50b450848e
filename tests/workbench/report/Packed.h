// SPDX-License-Identifier: Apache-2.0
// Decodes the data of a report byte by byte, as its format is described.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace VeskarTest {

/// @param text base64
/// @return the bytes
inline std::vector<unsigned> bytesOf(const std::string& text) {
    const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::vector<unsigned> bytes;
    unsigned bits = 0;
    int count = 0;
    for (const char c : text) {
        if (c == '=') {
            break;
        }
        bits = bits * 64 + static_cast<unsigned>(digits.find(c));
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes.push_back(bits >> count & 255U);
            bits &= (1U << count) - 1;
        }
    }
    return bytes;
}

/// @param column {"step", "data"}
/// @return the numbers; NaN where missing
template <typename Json>
std::vector<double> numbersOf(const Json& column) {
    const std::vector<unsigned> bytes = bytesOf(column["data"].template get<std::string>());
    std::size_t at = 0;
    const auto next = [&] {
        std::int64_t value = 0;
        for (int place = 0;; place += 7) {
            const unsigned byte = bytes.at(at++);
            value += static_cast<std::int64_t>(byte % 128) << place;
            if (byte < 128) {
                return value;
            }
        }
    };
    std::vector<double> numbers;
    std::int64_t steps = 0;
    const auto push = [&] {
        const bool isMissing = steps == -(std::int64_t{1} << 28) - 1;
        numbers.push_back(isMissing
                              ? std::numeric_limits<double>::quiet_NaN()
                              : static_cast<double>(steps) * column["step"].template get<double>());
    };
    while (at < bytes.size()) {
        const std::int64_t folded = next();
        if (folded == 0) {
            for (std::int64_t more = next(); more >= 0; --more) {
                push();
            }
        } else {
            steps += folded % 2 == 0 ? folded / 2 : -(folded + 1) / 2;
            push();
        }
    }
    return numbers;
}

}  // namespace VeskarTest
