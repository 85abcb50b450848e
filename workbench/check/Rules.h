// SPDX-License-Identifier: Apache-2.0
// Rules for the members of a JSON object, and the check of an object against them.
#pragma once

#include "HostLibrary.h"
#include "check/Finding.h"
#include "check/LocatedJson.h"
#include "host/json/Keys.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// @param range limits of a number
/// @return text such as "above 0", "at least 0", "between 0 and 1", "above 0 and below 90";
///         leastPositive counts as "above 0"
std::string inWords(const Range& range);

/// What a reader does not know about a key.
struct Note {
    std::string_view key;
    std::string_view meaning;  ///< meaning of the value, with its unit
    Range usual = anyNumber;   ///< values outside are a warning
    /// Values outside are a fault although the reader takes them; its own limits by default.
    std::optional<Range> possible = std::nullopt;
};

/// The rule for one member.
struct Rule {
    Key key;                          ///< values outside of its limits are a fault
    std::string_view meaning;         ///< meaning of the value, with its unit
    Range usual = anyNumber;          ///< values outside are a warning
    Wanted element = Wanted::Number;  ///< type of the elements of an array of numbers
};

using Rules = std::vector<Rule>;

/// @param keys the keys of an object, as its reader takes them
/// @param notes one for each of them, in any order
/// @return the rules, in the order of the keys
/// @throw std::logic_error when a key has no note, or a note no key
Rules rulesOf(const Keys& keys, const std::vector<Note>& notes);

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
