// SPDX-License-Identifier: Apache-2.0
// Reads a section of the configuration into its record, driven by its table of keys.
#pragma once

#include <veskar/JsonNode.h>
#include <veskar/Vocabulary.h>

#include "config/KeyTables.h"
#include "config/ParseFailure.h"
#include "config/ReadValue.h"

#include <exception>
#include <stdexcept>
#include <tuple>

namespace Veskar {

template <typename Record, typename Value>
void readKey(const RequiredKey<Record, Value>& key, const JsonNode& section, Record& record) {
    record.*key.field = readValue<Value>(section.get(key.name));
}

template <typename Record, typename Value>
void readKey(const OptionalKey<Record, Value>& key, const JsonNode& section, Record& record) {
    try {
        record.*key.field = readValue<Value>(section.get(key.name));
    } catch (const std::runtime_error&) {
        record.*key.field = key.fallback;
    }
}

template <typename Record, typename Value>
void readKey(const OptionalSection<Record, Value>& key, const JsonNode& section, Record& record) {
    try {
        record.*key.field = Value::parse(section.get(key.name));
    } catch (const std::runtime_error&) {
        record.*key.field = Value{};
    }
}

inline void readKey(const HumanAspectKeys& keys, const JsonNode& section, ModuleConfig& record) {
    std::pair<double, double>& limits = record.autocalibrationAspectLimits[Vocabulary::human];
    try {
        limits = {section.get(keys.least).asReal(), section.get(keys.most).asReal()};
    } catch (const std::runtime_error&) {
        limits = keys.fallback;
    }
}

/// Reads the keys of a section in their order into a zero-initialised record.
///
/// @throw std::exception a plain one, when a key refuses its value; the reason is in the log. The
///        section around this one logs the plain exception in turn.
template <typename Record>
Record parseSection(const JsonNode& section) {
    try {
        Record record{};
        std::apply([&](const auto&... key) { (readKey(key, section, record), ...); },
                   keysOf<Record>);
        return record;
    } catch (const std::exception& error) {
        logParseFailure(error);
        throw std::exception();
    }
}

}  // namespace Veskar
