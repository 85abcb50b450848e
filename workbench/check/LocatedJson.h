// SPDX-License-Identifier: Apache-2.0
// A JSON document that stores the line of every value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

struct LocatedMember;

/// A JSON value and its line (of a member: the line of its key).
struct LocatedValue {
    enum class Kind { Null, Boolean, Integer, Real, Text, Array, Object };

    Kind kind = Kind::Null;
    int line = 0;
    std::string text;                    ///< a number or literal as written; content of a string
    double number = 0.0;                 ///< of an integer or real
    std::vector<LocatedValue> elements;  ///< of an array
    std::vector<LocatedMember> members;  ///< of an object, in order, repeated keys included

    /// @return the last member with that key, which is the one that readers use; null when there is
    ///         none
    const LocatedValue* find(std::string_view key) const;
    /// @return whether it is an integer or a real
    bool isNumber() const { return kind == Kind::Integer || kind == Kind::Real; }
    /// @return the value for a message: as written, or "an array of 3", "an object"
    std::string shown() const;
};

struct LocatedMember {
    std::string key;
    LocatedValue value;
};

/// Whether a document may contain C++ comments.
enum class Comments { Refused, Allowed };

/// The first syntax error of a document.
struct JsonFault {
    int line = 0;        ///< 0 when there is none
    std::string reason;  ///< what was expected there
};

/// @param text one JSON document
/// @param comments whether it may contain comments
/// @param document receives the value when the text is valid
/// @return the error, with line 0 when there is none
JsonFault parseLocated(std::string_view text, Comments comments, LocatedValue& document);

}  // namespace Workbench
