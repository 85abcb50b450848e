// SPDX-License-Identifier: Apache-2.0
// Messages of ROS 2, byte by byte.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace VeskarTest {

/// A message in plain CDR: numbers stand at multiples of their size behind the first four bytes.
class Cdr {
public:
    explicit Cdr(bool isLittle = true)
        : isLittle_(isLittle), bytes_{'\0', isLittle ? '\1' : '\0', '\0', '\0'} {}

    template <typename Number>
    Cdr& add(Number number) {
        static_assert(std::is_arithmetic_v<Number>);
        while ((bytes_.size() - 4) % sizeof(Number) != 0) {
            bytes_ += '\x55';  // padding may be anything
        }
        char digits[sizeof(Number)];
        std::memcpy(digits, &number, sizeof(Number));
        for (std::size_t i = 0; i < sizeof(Number); ++i) {
            bytes_ += digits[isLittle_ ? i : sizeof(Number) - 1 - i];  // machines here are little
        }
        return *this;
    }
    Cdr& text(std::string_view text) {
        add(static_cast<std::uint32_t>(text.size() + 1));
        bytes_ += text;
        bytes_ += '\0';
        return *this;
    }
    Cdr& count(std::size_t items) { return add(static_cast<std::uint32_t>(items)); }
    const std::string& bytes() const { return bytes_; }

private:
    bool isLittle_;
    std::string bytes_;
};

}  // namespace VeskarTest
