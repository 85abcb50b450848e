// SPDX-License-Identifier: Apache-2.0
// Reads a JSON value as the type of what receives it.
#pragma once

#include <veskar/JsonNode.h>

#include <type_traits>

namespace Veskar {

/// @return the value of @p node: a real, an integer, a boolean or a record that parses itself
/// @throw std::exception when the value has another type
template <typename Value>
Value readValue(const JsonNode& node) {
    if constexpr (std::is_same_v<Value, double>) {
        return node.asReal();
    } else if constexpr (std::is_same_v<Value, int>) {
        return node.asInteger();
    } else if constexpr (std::is_same_v<Value, bool>) {
        return node.asBoolean();
    } else {
        return Value::parse(node);
    }
}

}  // namespace Veskar
