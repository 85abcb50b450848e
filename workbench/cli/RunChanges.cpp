// SPDX-License-Identifier: Apache-2.0
#include "cli/RunChanges.h"

#include <veskar-host/InputError.h>
#include <veskar/NearestWord.h>

#include "HostLibrary.h"
#include "host/adapter/ParameterTable.h"
#include "io/TextFile.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

const std::vector<std::string>& sectionsOfRun() {
    static const std::vector<std::string> sections{"installation", "fusion", "brokers", "sensors",
                                                   "outputs",      "status", "record"};
    return sections;
}

/// @return whether the fusion's configuration or its host may have such a section or key
bool isOfFusion(const std::string& section) {
    const auto& parameters = parameterTable();
    return section.compare(0, 6, "veskar") == 0 ||
           std::any_of(parameters.begin(), parameters.end(),
                       [&](const Parameter& parameter) { return parameter.name == section; });
}

[[noreturn]] void refuse(const std::string& change, const std::string& reason) {
    throw InputError(fmt::format("--set {}: {}", change, reason));
}

/// @return the item of an array; null when there is none
nlohmann::json* itemAt(nlohmann::json& array, std::string_view name) {
    std::size_t index = 0;
    const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), index);
    const bool isIndex = fault == std::errc() && end == name.data() + name.size();
    return isIndex && index < array.size() ? &array[index] : nullptr;
}

/// @return the member or item of a value; null when it cannot have one
nlohmann::json* innerOf(nlohmann::json& value, std::string_view name) {
    if (value.is_array()) {
        return itemAt(value, name);
    }
    const bool hasMembers = value.is_object() || value.is_null();
    return hasMembers && !name.empty() ? &value[std::string(name)] : nullptr;
}

/// @return the place of a key in the document; null when there is none
nlohmann::json* placeOf(nlohmann::json& document, std::string_view key) {
    nlohmann::json* place = &document;
    for (std::size_t at = 0; place != nullptr && at <= key.size();) {
        const std::size_t end = std::min(key.find('.', at), key.size());
        place = innerOf(*place, key.substr(at, end - at));
        at = end + 1;
    }
    return place;
}

/// A path or name needs no quotation marks; what begins as JSON has to be JSON.
nlohmann::json valueOf(const std::string& text, const std::string& change) {
    nlohmann::json value = nlohmann::json::parse(text, nullptr, false);
    if (!value.is_discarded()) {
        return value;
    }
    if (text.find_first_of("{[\"") == 0) {
        refuse(change, "the value is no JSON");
    }
    return text;
}

}  // namespace

RunChanges RunChanges::of(const std::vector<std::string>& changes) {
    RunChanges sorted;
    const std::vector<std::string>& sections = sectionsOfRun();
    for (const std::string& change : changes) {
        const std::string section = change.substr(0, change.find_first_of(".="));
        if (std::find(sections.begin(), sections.end(), section) != sections.end()) {
            sorted.ofRun.push_back(change);
            continue;
        }
        const std::string meant = Veskar::nearestWord(section, sections);
        if (!meant.empty() && !isOfFusion(section)) {
            refuse(change, fmt::format("run.json has no \"{}\"; is {} meant?", section, meant));
        }
        sorted.ofFusion.push_back(change);
    }
    return sorted;
}

std::string readChanged(const std::string& path, const std::vector<std::string>& changes) {
    if (changes.empty()) {
        return readText(path);
    }
    nlohmann::json document = parseJson(readText(path), path);
    for (const std::string& change : changes) {
        const std::size_t equals = change.find('=');
        if (equals == std::string::npos) {
            refuse(change, "expected KEY=VALUE");
        }
        nlohmann::json* const place = placeOf(document, change.substr(0, equals));
        if (place == nullptr) {
            refuse(change, "there is no such place");
        }
        *place = valueOf(change.substr(equals + 1), change);
    }
    try {
        return document.dump();
    } catch (const nlohmann::json::exception&) {
        throw InputError("--set: the changes are no UTF-8");
    }
}

}  // namespace Workbench
