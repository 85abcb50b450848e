// SPDX-License-Identifier: Apache-2.0
// A JSON document that remembers the line of every value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

struct LocatedMember;

/// A JSON value and the line where it stands (a member: the line of its key).
struct LocatedValue {
    enum class Kind { Null, Boolean, Integer, Real, Text, Array, Object };

    Kind kind = Kind::Null;
    int line = 0;
    std::string text;                    ///< a number or word as it is written; a text's content
    double number = 0.0;                 ///< of an integer or real
    std::vector<LocatedValue> elements;  ///< of an array
    std::vector<LocatedMember> members;  ///< of an object, in order, repeated keys included

    /// @return the last member of that key, as the usual readers take it; null when there is none
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

/// Whether a document may contain comments, as C++ has them.
enum class Comments { Refused, Allowed };

/// A document that is no JSON.
struct JsonFault {
    int line = 0;        ///< 0 when the document is good
    std::string reason;  ///< what was expected there
};

/// @param text one JSON document
/// @param comments whether it may contain comments
/// @param document receives the value when the text is good
/// @return the fault, with line 0 when there is none
JsonFault parseLocated(std::string_view text, Comments comments, LocatedValue& document);

}  // namespace Workbench
