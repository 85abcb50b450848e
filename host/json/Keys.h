// SPDX-License-Identifier: Apache-2.0
// The keys of a JSON object: one table per object, for its reader and for `veskar check`.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Veskar::Host::Internal {

/// For limits of numbers: as large as may be.
constexpr double unlimited = std::numeric_limits<double>::infinity();
/// Standard deviations, ranges, speeds and durations that must be above 0 are at least this.
constexpr double leastPositive = 1e-6;

/// A range of numbers.
struct Range {
    double least = -unlimited;
    double most = unlimited;
    bool leastIncluded = true;
    bool mostIncluded = true;

    /// @param value a number
    /// @return whether it lies in the range
    constexpr bool contains(double value) const {
        return (leastIncluded ? value >= least : value > least) &&
               (mostIncluded ? value <= most : value < most);
    }
};

constexpr Range anyNumber{};
constexpr Range aboveZero{0.0, unlimited, false, true};
constexpr Range fromZero{0.0, unlimited};
constexpr Range notTiny{leastPositive, unlimited};

/// The required type of a member.
enum class Wanted {
    Real,     ///< a number with a fraction or exponent, as the core requires it
    Integer,  ///< a number without these
    Number,   ///< either
    Boolean,
    Text,
    Object,
    Array
};

constexpr bool isRequired = true;
constexpr bool isOptional = false;

/// A key of an object.
struct Key {
    std::string_view name;
    Wanted wanted = Wanted::Number;
    bool required = isRequired;
    Range allowed = anyNumber;  ///< of the number, or of each number of an array
    std::size_t count = 0;      ///< required length of an array of numbers
};

/// Keys are searched by name.
constexpr bool operator==(const Key& key, std::string_view name) {
    return key.name == name;
}

/// The keys of an object. Borrows their table.
class Keys {
public:
    template <std::size_t size>
    // NOLINTNEXTLINE(google-explicit-constructor): a table is all there is to it
    constexpr Keys(const std::array<Key, size>& table)
        : begin_(table.data()), end_(table.data() + size) {}

    constexpr const Key* begin() const { return begin_; }
    constexpr const Key* end() const { return end_; }

    /// @param name name of a key of the table
    /// @return the key
    /// @throw std::logic_error when the table has no such key
    const Key& operator[](std::string_view name) const {
        const Key* const found = std::find(begin_, end_, name);
        if (found == end_) {
            throw std::logic_error("undefined key " + std::string(name));
        }
        return *found;
    }

private:
    const Key* begin_;
    const Key* end_;
};

/// @param first keys of an object
/// @param second further keys of it
/// @return all of them
template <std::size_t sizeOfFirst, std::size_t sizeOfSecond>
constexpr std::array<Key, sizeOfFirst + sizeOfSecond> joined(
    const std::array<Key, sizeOfFirst>& first, const std::array<Key, sizeOfSecond>& second) {
    std::array<Key, sizeOfFirst + sizeOfSecond> all{};
    for (std::size_t i = 0; i < sizeOfFirst; ++i) {
        all[i] = first[i];
    }
    for (std::size_t i = 0; i < sizeOfSecond; ++i) {
        all[sizeOfFirst + i] = second[i];
    }
    return all;
}

}  // namespace Veskar::Host::Internal
