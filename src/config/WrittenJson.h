// SPDX-License-Identifier: Apache-2.0
// A JSON text as it is written, with lines and repeated keys, which Jansson does not keep.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace Veskar {

/// A value and the line where it stands.
struct WrittenValue {
    enum class Kind { Object, Array, String, Boolean, Null, Integer, Real };

    int line = 1;                       ///< from 1; of a member the line of its key
    std::string key;                    ///< of a member
    std::string text;                   ///< a scalar as it is written; "{" or "["
    std::vector<WrittenValue> members;  ///< of an object, in order, repeated keys included; none
                                        ///< of objects that lie deeper than any setting

    /// @return the type that Jansson gives it
    Kind kind() const;
    /// @return the last member of that name, which is the one that counts; null without one
    const WrittenValue* find(const std::string& name) const;
};

/// A text that is not valid JSON.
class JsonSyntaxError : public std::runtime_error {
public:
    JsonSyntaxError(int where, const std::string& reason)
        : std::runtime_error(reason), line(where) {}

    int line;
};

/// @param json a text
/// @return its root
/// @throw JsonSyntaxError when Jansson refuses it
WrittenValue readWritten(const std::string& json);

}  // namespace Veskar
