// SPDX-License-Identifier: Apache-2.0
// Rules for the members of a JSON object, and the check of an object against them.
#pragma once

#include "check/Finding.h"
#include "check/LocatedJson.h"

#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// The required type of a member.
enum class Wanted {
    Real,     ///< a number with a fraction or exponent, as the library requires it
    Integer,  ///< a number without these
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
    /// @return text such as "above 0", "at least 0", "between 0 and 1", "above 0 and below 90"
    std::string inWords() const;
};

constexpr Range anyNumber{};
constexpr Range positive{0.0, std::numeric_limits<double>::infinity(), false, true};
constexpr Range notNegative{0.0, std::numeric_limits<double>::infinity(), true, true};

/// The rule for one member.
struct Rule {
    std::string_view key;
    Wanted wanted = Wanted::Real;
    std::string_view meaning;  ///< meaning of the value, with its unit
    bool required = true;
    Range allowed = anyNumber;        ///< values outside are a fault
    Range usual = anyNumber;          ///< values outside are a warning
    std::size_t elements = 0;         ///< required length of an array of numbers
    Wanted element = Wanted::Number;  ///< type of the elements of an array of numbers
};

using Rules = std::vector<Rule>;

/// Checks the members of an object: missing, unknown and repeated keys, types, limits and usual
/// values. Continues after a fault.
///
/// @param object must be an object
/// @param path its place in the document, "" for the root
/// @param rules rules for its members
/// @param unknown severity of keys without a rule: a fault where the reader rejects them, a warning
///                where it ignores them
/// @param findings receives the findings
void checkMembers(const LocatedValue& object, const std::string& path, const Rules& rules,
                  Severity unknown, Findings& findings);

/// Checks a number against its limits and usual values.
///
/// @param value the number
/// @param path its place in the document
/// @param rule its limits; its type is not checked
/// @param findings receives the findings
void checkNumber(const LocatedValue& value, const std::string& path, const Rule& rule,
                 Findings& findings);

/// @return the path of a member: "path.key", or the key alone in the root
std::string joinPath(const std::string& path, std::string_view key);

/// @return the member when it is a number, otherwise null (checkMembers reports why)
const LocatedValue* numberAt(const LocatedValue& object, std::string_view key);

/// @return the member when it is an object, otherwise null (checkMembers reports why)
const LocatedValue* objectAt(const LocatedValue& object, std::string_view key);

}  // namespace Workbench
