// SPDX-License-Identifier: Apache-2.0
#include "io/Fields.h"

#include "io/InputError.h"

#include <algorithm>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

std::string_view kindOf(const nlohmann::json& value) {
    switch (value.type()) {
        case nlohmann::json::value_t::null:
            return "null";
        case nlohmann::json::value_t::object:
            return "an object";
        case nlohmann::json::value_t::array:
            return "an array";
        case nlohmann::json::value_t::string:
            return "a string";
        case nlohmann::json::value_t::boolean:
            return "true or false";
        default:
            return "a number";
    }
}

std::string expected(std::string_view wanted, const nlohmann::json& value) {
    return fmt::format("expected {}, found {}", wanted, kindOf(value));
}

}  // namespace

Fields::Fields(const nlohmann::json& value, std::string givenPath)
    : object_(&value), path(std::move(givenPath)) {
    if (!value.is_object()) {
        const std::string what = expected("an object", value);
        throw InputError(path.empty() ? what : path + ": " + what);
    }
}

template <typename Names>
void Fields::refuseOthers(const Names& names) const {
    for (const auto& member : object_->items()) {
        if (std::find(names.begin(), names.end(), member.key()) == names.end()) {
            throw InputError(pathOf(member.key()) + ": unknown key");
        }
    }
}

void Fields::allowOnly(std::initializer_list<std::string_view> names) const {
    refuseOthers(names);
}

void Fields::allowOnly(const std::vector<std::string_view>& names) const {
    refuseOthers(names);
}

bool Fields::has(const char* name) const {
    const auto found = object_->find(name);
    return found != object_->end() && !found->is_null();
}

const nlohmann::json& Fields::at(const char* name) const {
    const auto found = object_->find(name);
    if (found == object_->end()) {
        refuse(name, "missing");
    }
    return *found;
}

std::string Fields::pathOf(std::string_view name) const {
    return path.empty() ? std::string(name) : fmt::format("{}.{}", path, name);
}

void Fields::refuse(const char* name, const std::string& what) const {
    throw InputError(pathOf(name) + ": " + what);
}

double Fields::number(const char* name) const {
    const nlohmann::json& value = at(name);
    if (!value.is_number()) {
        refuse(name, expected("a number", value));
    }
    return value.get<double>();
}

double Fields::number(const char* name, double otherwise) const {
    return has(name) ? number(name) : otherwise;
}

std::optional<double> Fields::optionalNumber(const char* name) const {
    return has(name) ? std::optional<double>(number(name)) : std::nullopt;
}

double Fields::numberWithin(const char* name, double least, double most) const {
    const double value = number(name);
    if (!(least <= value && value <= most)) {
        const bool isOpen = most == std::numeric_limits<double>::infinity();
        refuse(name, isOpen ? fmt::format("{} is below {}", value, least)
                            : fmt::format("{} is not between {} and {}", value, least, most));
    }
    return value;
}

double Fields::numberWithin(const char* name, double least, double most, double otherwise) const {
    return has(name) ? numberWithin(name, least, most) : otherwise;
}

std::int32_t Fields::integer(const char* name) const {
    const nlohmann::json& value = at(name);
    if (!value.is_number_integer()) {
        refuse(name, value.is_number() ? "expected an integer, found a fraction"
                                       : expected("an integer", value));
    }
    const auto wide = value.get<std::int64_t>();
    const bool isHuge = value.is_number_unsigned() &&
                        value.get<std::uint64_t>() > std::numeric_limits<std::int32_t>::max();
    if (isHuge || wide < std::numeric_limits<std::int32_t>::min()) {
        refuse(name, "does not fit into 32 bits");
    }
    return static_cast<std::int32_t>(wide);
}

bool Fields::boolean(const char* name, bool otherwise) const {
    if (!has(name)) {
        return otherwise;
    }
    const nlohmann::json& value = at(name);
    if (!value.is_boolean()) {
        refuse(name, expected("true or false", value));
    }
    return value.get<bool>();
}

std::string Fields::text(const char* name) const {
    const nlohmann::json& value = at(name);
    if (!value.is_string()) {
        refuse(name, expected("a string", value));
    }
    return value.get<std::string>();
}

std::string Fields::text(const char* name, std::string_view otherwise) const {
    return has(name) ? text(name) : std::string(otherwise);
}

const nlohmann::json& Fields::array(const char* name) const {
    const nlohmann::json& value = at(name);
    if (!value.is_array()) {
        refuse(name, expected("an array", value));
    }
    return value;
}

void Fields::numbers(const char* name, std::size_t count, double* values) const {
    const nlohmann::json& list = array(name);
    if (list.size() != count) {
        refuse(name, fmt::format("expected {} numbers, found {}", count, list.size()));
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (!list[i].is_number()) {
            refuse(fmt::format("{}[{}]", name, i).c_str(), expected("a number", list[i]));
        }
        values[i] = list[i].get<double>();
    }
}

Fields Fields::object(const char* name) const {
    return {at(name), pathOf(name)};
}

}  // namespace Workbench
