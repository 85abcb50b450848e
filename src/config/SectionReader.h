// SPDX-License-Identifier: Apache-2.0
// Reads a section of the configuration into its record, driven by a table of keys.
#pragma once

#include <veskar/JsonNode.h>

#include "config/ParseFailure.h"
#include "config/ReadValue.h"

#include <exception>
#include <stdexcept>
#include <tuple>

namespace Veskar {

/// A key without which the section is refused.
template <typename Record, typename Value>
struct RequiredKey {
    const char* name;
    Value Record::*field;

    void read(const JsonNode& section, Record& record) const {
        record.*field = readValue<Value>(section.get(name));
    }
};

/// A key with a default, which also stands in for a value of the wrong type.
template <typename Record, typename Value>
struct OptionalKey {
    const char* name;
    Value Record::*field;
    Value fallback;

    void read(const JsonNode& section, Record& record) const {
        try {
            record.*field = readValue<Value>(section.get(name));
        } catch (const std::runtime_error&) {
            record.*field = fallback;
        }
    }
};

template <typename Record, typename Value>
constexpr RequiredKey<Record, Value> required(const char* name, Value Record::*field) {
    return {name, field};
}

template <typename Record, typename Value>
constexpr OptionalKey<Record, Value> optional(const char* name, Value Record::*field,
                                              Value fallback) {
    return {name, field, fallback};
}

/// Reads @p keys in their order into a record that is zero before.
///
/// @throw std::exception a plain one, when a key refuses its value; the reason is in the log. The
///        section around this one logs the plain exception in turn.
template <typename Record, typename... Keys>
Record parseSection(const JsonNode& section, const std::tuple<Keys...>& keys) {
    try {
        Record record{};
        std::apply([&](const auto&... key) { (key.read(section, record), ...); }, keys);
        return record;
    } catch (const std::exception& error) {
        logParseFailure(error);
        throw std::exception();
    }
}

}  // namespace Veskar
