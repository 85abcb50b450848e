// SPDX-License-Identifier: Apache-2.0
// What the members of a JSON object must be, and the check of an object against it.
#pragma once

#include "check/Finding.h"
#include "check/LocatedJson.h"

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// The type that a member must have.
enum class Wanted {
    Real,     ///< a number with a fraction or exponent: the library takes no integer for it
    Integer,  ///< a number without
    Number,   ///< either
    Boolean,
    Text,
    Object,
    Array
};

/// A range of numbers.
struct Range {
    double least = -std::numeric_limits<double>::infinity();
    double most = std::numeric_limits<double>::infinity();
    bool leastIncluded = true;
    bool mostIncluded = true;

    bool contains(double value) const;
    /// @return as "above 0", "at least 0", "between 0 and 1", "above 0 and below 90"
    std::string inWords() const;
};

constexpr Range anyNumber{};
constexpr Range positive{0.0, std::numeric_limits<double>::infinity(), false, true};
constexpr Range notNegative{0.0, std::numeric_limits<double>::infinity(), true, true};

/// What one member must be.
struct Rule {
    std::string_view key;
    Wanted wanted = Wanted::Real;
    std::string_view meaning;  ///< what the value is, with its unit
    bool required = true;
    Range allowed = anyNumber;        ///< outside is a fault
    Range usual = anyNumber;          ///< outside is a warning
    std::size_t elements = 0;         ///< of an array of numbers: how many
    Wanted element = Wanted::Number;  ///< of an array of numbers: their type
};

using Rules = std::vector<Rule>;

/// Checks the members of an object: missing and unknown keys, keys that are repeated, types, limits
/// and usual values. Goes on after a fault.
///
/// @param object what should be an object
/// @param path its place in the document, "" for the root
/// @param rules its members
/// @param unknown how bad a key is that no rule knows: a fault where the reader refuses it, a
///                warning where it passes over it
/// @param findings receives what is wrong
void checkMembers(const LocatedValue& object, const std::string& path, const Rules& rules,
                  Severity unknown, Findings& findings);

/// Checks a number against its limits and usual values.
///
/// @param value the number
/// @param path its place in the document
/// @param rule what it must be; its type is that of the value
/// @param findings receives what is wrong
void checkNumber(const LocatedValue& value, const std::string& path, const Rule& rule,
                 Findings& findings);

/// @return the member's place: "path.key", or the key alone in the root
std::string joinPath(const std::string& path, std::string_view key);

/// @return the member when it is a number, otherwise null (checkMembers tells why)
const LocatedValue* numberAt(const LocatedValue& object, std::string_view key);

/// @return the member when it is an object, otherwise null (checkMembers tells why)
const LocatedValue* objectAt(const LocatedValue& object, std::string_view key);

}  // namespace Workbench
