// SPDX-License-Identifier: Apache-2.0
// Definitions of the member functions of BasicFields, for the files that instantiate it.
#pragma once

#include <veskar-host/InputError.h>

#include "host/json/Fields.h"
#include "host/json/LineText.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace Veskar::Host::Internal {

template <typename Value>
typename Value::Members membersOf(const Value& value, const JsonPath& path) {
    if (value.kind() != JsonKind::Object) {
        const std::string place = path.text();
        const std::string what = expected("an object", value.kind());
        if (place.empty()) {
            throw InputError(what);
        }
        throw InputError(place, what);
    }
    return typename Value::Members(value);
}

template <typename Value>
BasicFields<Value>::BasicFields(const Value& value, const JsonPath& path)
    : path_(path), members_(membersOf(value, path_)) {}

template <typename Value>
template <typename Names>
void BasicFields<Value>::refuseOthers(const Names& names) const {
    // Members usually come in the listed order, so the search starts behind the last match.
    auto next = names.begin();
    std::uint64_t seen = 0;
    members_.forEachName([&](std::string_view name) {
        auto found = std::find(next, names.end(), name);
        if (found == names.end()) {
            found = std::find(names.begin(), next, name);
            if (found == next) {
                throw InputError(pathOf(name), "unknown key");
            }
        }
        const std::uint64_t bit = std::uint64_t{1} << (found - names.begin());
        if ((seen & bit) != 0) {
            throw InputError(pathOf(name), "occurs twice");
        }
        seen |= bit;
        next = found + 1;
    });
}

template <typename Value>
void BasicFields<Value>::allowOnly(std::initializer_list<std::string_view> names) const {
    refuseOthers(names);
}

template <typename Value>
void BasicFields<Value>::allowOnly(const Keys& names) const {
    refuseOthers(names);
}

template <typename Value>
std::optional<Value> BasicFields<Value>::find(std::string_view name) const {
    std::optional<Value> found = members_.find(name);
    return found && found->kind() != JsonKind::Null ? found : std::nullopt;
}

template <typename Value>
bool BasicFields<Value>::has(std::string_view name) const {
    return find(name).has_value();
}

template <typename Value>
Value BasicFields<Value>::at(std::string_view name) const {
    const std::optional<Value> found = members_.find(name);
    if (!found) {
        refuse(name, "missing");
    }
    return *found;
}

template <typename Value>
std::string BasicFields<Value>::pathOf(std::string_view name) const {
    return JsonPath{&path_, name, {}}.text();
}

template <typename Value>
void BasicFields<Value>::refuse(std::string_view name, const std::string& what) const {
    throw InputError(pathOf(name), what);
}

template <typename Value>
double BasicFields<Value>::numberOf(const Value& value, std::string_view name) const {
    if (!isNumber(value.kind())) {
        refuse(name, expected("a number", value.kind()));
    }
    return value.number();
}

template <typename Value>
double BasicFields<Value>::within(double value, std::string_view name, double least,
                                  double most) const {
    if (!(least <= value && value <= most)) {
        const bool isOpen = most == unlimited;
        refuse(name, isOpen ? shortestText(value) + " is below " + shortestText(least)
                            : shortestText(value) + " is not between " + shortestText(least) +
                                  " and " + shortestText(most));
    }
    return value;
}

template <typename Value>
double BasicFields<Value>::number(std::string_view name) const {
    return numberOf(at(name), name);
}

template <typename Value>
double BasicFields<Value>::number(std::string_view name, double otherwise) const {
    return optionalNumber(name).value_or(otherwise);
}

template <typename Value>
std::optional<double> BasicFields<Value>::optionalNumber(std::string_view name) const {
    const std::optional<Value> found = find(name);
    return found ? std::optional<double>(numberOf(*found, name)) : std::nullopt;
}

template <typename Value>
double BasicFields<Value>::numberWithin(std::string_view name, double least, double most) const {
    return within(number(name), name, least, most);
}

template <typename Value>
double BasicFields<Value>::numberWithin(std::string_view name, double least, double most,
                                        double otherwise) const {
    const std::optional<double> found = optionalNumber(name);
    return found ? within(*found, name, least, most) : otherwise;
}

template <typename Value>
double BasicFields<Value>::number(const Key& key, double otherwise) const {
    const std::optional<double> found =
        key.required ? std::optional<double>(number(key.name)) : optionalNumber(key.name);
    return found ? within(*found, key.name, key.allowed.least, key.allowed.most) : otherwise;
}

template <typename Value>
std::int32_t BasicFields<Value>::integer(std::string_view name) const {
    const Value value = at(name);
    if (value.kind() != JsonKind::Integer) {
        refuse(name, isNumber(value.kind()) ? "expected an integer, found a fraction"
                                            : expected("an integer", value.kind()));
    }
    if (!value.fitsInt32()) {
        refuse(name, "does not fit into 32 bits");
    }
    return value.integer();
}

template <typename Value>
bool BasicFields<Value>::boolean(std::string_view name, bool otherwise) const {
    const std::optional<Value> found = find(name);
    if (found && found->kind() != JsonKind::Boolean) {
        refuse(name, expected("true or false", found->kind()));
    }
    return found ? found->boolean() : otherwise;
}

template <typename Value>
bool BasicFields<Value>::boolean(const Key& key, bool otherwise) const {
    if (key.required) {
        at(key.name);
    }
    return boolean(key.name, otherwise);
}

template <typename Value>
std::string BasicFields<Value>::text(std::string_view name) const {
    const Value value = at(name);
    if (value.kind() != JsonKind::String) {
        refuse(name, expected("a string", value.kind()));
    }
    return std::string(value.text());
}

template <typename Value>
std::string BasicFields<Value>::text(std::string_view name, std::string_view otherwise) const {
    return has(name) ? text(name) : std::string(otherwise);
}

template <typename Value>
std::string BasicFields<Value>::text(const Key& key, std::string_view otherwise) const {
    return key.required ? text(key.name) : text(key.name, otherwise);
}

template <typename Value>
Value BasicFields<Value>::array(std::string_view name) const {
    const Value value = at(name);
    if (value.kind() != JsonKind::Array) {
        refuse(name, expected("an array", value.kind()));
    }
    return value;
}

template <typename Value>
void BasicFields<Value>::numbers(std::string_view name, std::size_t count, double* values) const {
    const Value list = array(name);
    if (list.size() != count) {
        refuse(name, "expected " + std::to_string(count) + " numbers, found " +
                         std::to_string(list.size()));
    }
    list.forEachItem([&, i = std::size_t{0}](const Value& item) mutable {
        if (!isNumber(item.kind())) {
            refuse(std::string(name) + "[" + std::to_string(i) + "]",
                   expected("a number", item.kind()));
        }
        values[i++] = item.number();
    });
}

template <typename Value>
void BasicFields<Value>::numbers(const Key& key, double* values) const {
    numbers(key.name, key.count, values);
}

template <typename Value>
BasicFields<Value> BasicFields<Value>::object(std::string_view name) const {
    return BasicFields(at(name), JsonPath{&path_, name, {}});
}

}  // namespace Veskar::Host::Internal
