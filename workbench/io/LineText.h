// SPDX-License-Identifier: Apache-2.0
// Text of many numbers.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace Workbench {

/// Text under construction: lines of JSON or rows of a table. Numbers are written where they stay,
/// which takes half as long as to append them to a string.
class LineText {
public:
    /// @param piece appended
    /// @return this
    LineText& operator+=(std::string_view piece) {
        buffer_.append(piece.data(), piece.data() + piece.size());
        return *this;
    }
    /// @param character appended
    /// @return this
    LineText& operator+=(char character) {
        buffer_.push_back(character);
        return *this;
    }

    /// Appends a number rounded to a count of decimals, without trailing zeros: "1.5", "2", "0".
    /// What is not finite becomes null, the only way in which JSON can say so.
    ///
    /// @param value the number
    /// @param decimals digits behind the point, 0 to 9
    void addNumber(double value, int decimals) {
        write(longestNumber, [&](char* at) { return writeNumber(at, value, decimals); });
    }
    /// Appends an integer.
    /// @param value the number
    void addInteger(std::int32_t value);
    /// Appends a string in quotes.
    /// @param value any bytes; what is no UTF-8 becomes the replacement character
    void addQuoted(std::string_view value);
    /// Appends a member of a JSON object after others: a comma, the name and a number.
    /// @param name its name, without characters that need an escape
    /// @param value the number
    /// @param decimals as addNumber
    void addMember(std::string_view name, double value, int decimals) {
        write(name.size() + memberMarks + longestNumber,
              [&](char* at) { return writeNumber(writeName(at, name), value, decimals); });
    }
    /// As above, with a list of numbers.
    /// @param name as above
    /// @param values the numbers
    /// @param decimals as above
    void addMember(std::string_view name, std::initializer_list<double> values, int decimals);
    /// Appends the comma and the name of a member.
    /// @param name as addMember
    void addName(std::string_view name) {
        write(name.size() + memberMarks, [&](char* at) { return writeName(at, name); });
    }

    /// @return the text; valid until it changes
    std::string_view view() const { return {buffer_.data(), buffer_.size()}; }
    /// @return a copy of the text
    std::string string() const { return fmt::to_string(buffer_); }
    /// Begins anew, with the memory there is.
    void clear() { buffer_.clear(); }

private:
    static constexpr std::size_t longestNumber = 32;
    static constexpr std::size_t memberMarks = 8;  ///< around a name and its values, at most

    template <typename Write>
    void write(std::size_t most, Write writeTo) {
        const std::size_t size = buffer_.size();
        buffer_.resize(size + most);
        char* const end = writeTo(buffer_.data() + size);
        buffer_.resize(static_cast<std::size_t>(end - buffer_.data()));
    }
    static char* writeName(char* at, std::string_view name);
    static char* writeNumber(char* at, double value, int decimals);

    fmt::memory_buffer buffer_;
};

}  // namespace Workbench
