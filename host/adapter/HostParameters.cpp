// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/HostParameters.h>
#include <veskar-host/InputError.h>
#include <veskar/NearestWord.h>

#include "host/adapter/ParameterTable.h"
#include "host/json/JanssonValue.h"
#include "host/json/LineText.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace Veskar::Host {
namespace {

using namespace Internal;

constexpr const char* section = "veskarHost";

const Parameter& parameterNamed(std::string_view name, const std::string& place) {
    const std::vector<Parameter>& table = parameterTable();
    const auto found = std::find_if(table.begin(), table.end(), [&](const Parameter& parameter) {
        return parameter.name == name;
    });
    if (found != table.end()) {
        return *found;
    }
    std::vector<std::string> names;
    std::transform(table.begin(), table.end(), std::back_inserter(names),
                   [](const Parameter& parameter) { return parameter.name; });
    const std::string meant = nearestWord(std::string(name), names);
    throw InputError(place, "the key is not known" +
                                (meant.empty() ? std::string() : "; is " + meant + " meant?"));
}

double numberOf(const JanssonValue& value, const Parameter& parameter, const std::string& place) {
    if (!isNumber(value.kind())) {
        throw InputError(place, expected("a number", value.kind()));
    }
    if (!parameter.allows(value.number())) {
        throw InputError(place, shortestText(value.number()) + " is not " + parameter.limits());
    }
    return value.number();
}

void assign(HostParameters& parameters, const std::string& place, std::string_view name,
            const JanssonValue& value) {
    const Parameter& parameter = parameterNamed(name, place);
    double* next = parameter.values(parameters);
    if (parameter.count == 1) {
        *next = numberOf(value, parameter, place);
        return;
    }
    if (value.kind() != JsonKind::Array) {
        throw InputError(place, expected("an array", value.kind()));
    }
    if (value.size() != parameter.count) {
        throw InputError(place, "expected " + std::to_string(parameter.count) + " numbers, found " +
                                    std::to_string(value.size()));
    }
    value.forEachItem([&, i = std::size_t{0}](const JanssonValue& item) mutable {
        *next++ = numberOf(item, parameter, place + "[" + std::to_string(i++) + "]");
    });
}

}  // namespace

HostParameters HostParameters::fromConfig(const std::string& json) {
    HostParameters parameters;
    // The fusion reads its own sections with the same leniency.
    const JsonDocument document(json, JsonDocument::Leniency::RepeatedKeys);
    const BasicFields<JanssonValue> root(document.root());
    if (!root.has(section)) {
        return parameters;
    }
    root.object(section);
    const JanssonValue::Members members(root.at(section));
    members.forEachName([&](std::string_view name) {
        assign(parameters, std::string(section) + "." + std::string(name), name,
               *members.find(name));
    });
    return parameters;
}

void HostParameters::set(const std::string& name, const std::string& value) {
    const std::string prefix = std::string(section) + ".";
    const bool hasPrefix = name.compare(0, prefix.size(), prefix) == 0;
    const std::string member = hasPrefix ? name.substr(prefix.size()) : name;
    // Told of an unknown name first: its value may be anything.
    parameterNamed(member, name);
    try {
        const JsonDocument document(value);
        HostParameters changed = *this;
        assign(changed, name, member, document.root());
        *this = changed;
    } catch (const JsonFault&) {
        throw InputError(name, "\"" + value + "\" is not a number");
    }
}

std::string HostParameters::toJson() const {
    HostParameters own = *this;
    HostParameters usual;
    LineText text;
    for (const Parameter& parameter : parameterTable()) {
        const double* const values = parameter.values(own);
        if (std::equal(values, values + parameter.count, parameter.values(usual))) {
            continue;
        }
        text.addName(parameter.name);
        text += parameter.count > 1 ? "[" : "";
        for (std::size_t i = 0; i < parameter.count; ++i) {
            text += i == 0 ? "" : ",";
            text.addReal(values[i]);
        }
        text += parameter.count > 1 ? "]" : "";
    }
    // Each member begins with a comma; that of the first is dropped.
    const std::string_view members = text.view();
    return "{" + std::string(members.substr(members.empty() ? 0 : 1)) + "}";
}

}  // namespace Veskar::Host
