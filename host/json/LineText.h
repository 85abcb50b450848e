// SPDX-License-Identifier: Apache-2.0
// Text of many numbers.
#pragma once

#include <veskar-host/ExportHost.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace Veskar::Host::Internal {

/// @param value a number
/// @return the fewest digits that give it back: "0.5", "12", "1e-07"
VESKAR_HOST_EXPORT std::string shortestText(double value);

/// Text under construction: lines of JSON or rows of a table. Numbers are written in place, which
/// takes half as long as to append them to a string.
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

    /// Appends a number rounded to a count of decimals, without trailing zeros: "1.5", "2", "0".
    /// What is not finite becomes null, the only way in which JSON can say so.
    ///
    /// @param value the number
    /// @param decimals digits behind the point, 0 to 9
    void addNumber(double value, int decimals) {
        write(longestNumber, [&](char* at) { return writeNumber(at, value, decimals); });
    }
    /// Appends a number with the fewest digits that give it back, a fraction or an exponent always
    /// among them: "1.0", "0.25", "1e-07". What is not finite becomes null.
    /// @param value the number
    void addReal(double value);
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
    std::string_view view() const { return {memory_.data(), size_}; }
    /// @return a copy of the text
    std::string string() const { return std::string(view()); }
    /// Begins anew, with the memory there is.
    void clear() { size_ = 0; }

private:
    static constexpr std::size_t longestNumber = 32;
    static constexpr std::size_t memberMarks = 8;  ///< around a name and its values, at most

    template <typename Write>
    void write(std::size_t most, Write writeTo) {
        if (memory_.size() - size_ < most) {
            memory_.resize(2 * memory_.size() + most);
        }
        size_ = static_cast<std::size_t>(writeTo(memory_.data() + size_) - memory_.data());
    }
    static char* writeName(char* at, std::string_view name);
    static char* writeNumber(char* at, double value, int decimals);

    std::string memory_;  ///< longer than the text
    std::size_t size_ = 0;
};

}  // namespace Veskar::Host::Internal
