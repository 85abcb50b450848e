// SPDX-License-Identifier: Apache-2.0
// Fast formatting of lines with many numbers.
#pragma once

#include <veskar-host/ExportHost.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace Veskar::Host::Internal {

/// @param value a number
/// @return the fewest digits from which it can be read back exactly: "0.5", "12", "1e-07"
VESKAR_HOST_EXPORT std::string shortestText(double value);

/// A line of JSON or of a table under construction. Numbers are formatted directly into its memory,
/// which halves the time of formatting them separately and appending.
class VESKAR_HOST_EXPORT LineText {
public:
    /// @param piece appended
    /// @return this
    LineText& operator+=(std::string_view piece) {
        write(piece.size(), [&](char* at) { return at + piece.copy(at, piece.size()); });
        return *this;
    }
    /// @param character appended
    /// @return this
    LineText& operator+=(char character) { return *this += std::string_view(&character, 1); }

    /// Appends a number rounded to a number of decimals, without trailing zeros: "1.5", "2", "0".
    /// Values that are not finite become null, since JSON has no such numbers.
    ///
    /// @param value the number
    /// @param decimals digits behind the point, 0 to 9
    void addNumber(double value, int decimals) {
        write(longestNumber, [&](char* at) { return writeNumber(at, value, decimals); });
    }
    /// Appends a number with the fewest digits from which it can be read back exactly, always with
    /// a fraction or an exponent: "1.0", "0.25", "1e-07". Values that are not finite become null.
    /// @param value the number
    void addReal(double value);
    /// Appends an integer.
    /// @param value the number
    void addInteger(std::int32_t value);
    /// Appends a string in quotes.
    /// @param value any bytes; invalid UTF-8 becomes the replacement character
    void addQuoted(std::string_view value);
    /// Appends a comma, the name and a number: a further member of a JSON object.
    /// @param name its name, without characters that need an escape
    /// @param value the number
    /// @param decimals as addNumber
    void addMember(std::string_view name, double value, int decimals) {
        write(name.size() + memberMarks + longestNumber,
              [&](char* at) { return writeNumber(writeName(at, name), value, decimals); });
    }
    /// As above, with an array of numbers.
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
    std::string_view view() const { return {memory_.data(), size_}; }
    /// @return a copy of the text
    std::string string() const { return std::string(view()); }
    /// Empties the text and keeps its memory.
    void clear() { size_ = 0; }

private:
    static constexpr std::size_t longestNumber = 32;
    static constexpr std::size_t memberMarks = 8;  ///< most characters around a name and its value

    template <typename Write>
    void write(std::size_t most, Write writeTo) {
        if (memory_.size() - size_ < most) {
            memory_.resize(2 * memory_.size() + most);
        }
        size_ = static_cast<std::size_t>(writeTo(memory_.data() + size_) - memory_.data());
    }
    static char* writeName(char* at, std::string_view name);
    static char* writeNumber(char* at, double value, int decimals);

    std::string memory_;  ///< allocated text, at least as long as size_
    std::size_t size_ = 0;
};

}  // namespace Veskar::Host::Internal
