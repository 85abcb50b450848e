// SPDX-License-Identifier: Apache-2.0
#include "replay/Settings.h"

#include <veskar-host/InputError.h>

#include "host/installation/InstallationFields.h"
#include "io/DocumentValue.h"
#include "io/TextFile.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using Veskar::ConfigFault;

/// @return one line that says why the library rejects a configuration
std::string refusal(const std::vector<ConfigFault>& faults, const std::string& name) {
    const auto isRefused = [](const ConfigFault& fault) {
        return fault.effect == ConfigFault::Effect::Refused;
    };
    const auto first = std::find_if(faults.begin(), faults.end(), isRefused);
    if (first->key.empty()) {
        return fmt::format("{}:{}: {}", name, first->line, first->reason);
    }
    const auto others = std::count_if(std::next(first), faults.end(), isRefused);
    return fmt::format("{}: the fusion refuses this configuration: {}{}", name, first->text(),
                       others > 0 ? fmt::format("; veskar check names {} more", others) : "");
}

/// The JSON pointer to a key with dots: "a.b" to "/a/b".
nlohmann::json::json_pointer pointerTo(std::string key) {
    std::replace(key.begin(), key.end(), '.', '/');
    return nlohmann::json::json_pointer("/" + key);
}

/// @return the configuration with some of its keys changed
std::string withChanges(const std::string& configuration,
                        const std::vector<std::pair<std::string, std::string>>& changes) {
    static const auto known = nlohmann::json::parse(Veskar::Config::defaults().toJson());
    auto document = nlohmann::json::parse(configuration);
    for (const auto& [key, value] : changes) {
        const auto place = pointerTo(key);
        if (!known.contains(place)) {
            throw InputError(fmt::format("--set {}: the key is not known", key));
        }
        try {
            document[place] = nlohmann::json::parse(value);
        } catch (const nlohmann::json::exception&) {
            throw InputError(fmt::format("--set {}: \"{}\" is no JSON value", key, value));
        }
    }
    return document.dump(4);
}

Veskar::Config configOf(const std::string& text, const std::string& name,
                        const Provenance::Warn& warn) {
    const std::vector<ConfigFault> faults = Veskar::Config::findFaults(text);
    Veskar::Config config = [&] {
        try {
            return Veskar::Config::parse_json_string(text);
        } catch (const std::exception&) {
            throw InputError(refusal(faults, name));
        }
    }();
    for (const ConfigFault& fault : faults) {
        warn(fmt::format("{}: {}", name, fault.text()));
    }
    return config;
}

HostParameters parametersOf(const std::string& text, const std::string& name) {
    try {
        return HostParameters::fromConfig(text);
    } catch (const InputError& error) {
        throw InputError(name, error);
    }
}

}  // namespace

Settings readSettings(const std::string& path, const std::vector<std::string>& changes,
                      const Provenance::Warn& warn) {
    std::vector<std::pair<std::string, std::string>> ofConfiguration;
    std::vector<std::pair<std::string, std::string>> ofHost;
    for (const std::string& change : changes) {
        const std::size_t equals = change.find('=');
        if (equals == std::string::npos) {
            throw InputError(fmt::format("--set {}: expected KEY=VALUE", change));
        }
        const std::string key = change.substr(0, equals);
        const std::string section = key.substr(0, key.find('.'));
        const bool isHosts = section == key || section == "veskarHost";
        (isHosts ? ofHost : ofConfiguration).emplace_back(key, change.substr(equals + 1));
    }
    const std::string name = path.empty() ? "--set" : path;
    std::string text = path.empty() ? Veskar::Config::defaultsText() : readText(path);
    Settings settings{configOf(text, name, warn), parametersOf(text, name)};
    if (!ofConfiguration.empty()) {
        settings.config = configOf(withChanges(text, ofConfiguration), "--set", warn);
    }
    for (const auto& [key, value] : ofHost) {
        try {
            settings.parameters.set(key, value);
        } catch (const InputError& error) {
            throw InputError(fmt::format("--set {}", error.what()));
        }
    }
    return settings;
}

RecordingHeader withCamera(RecordingHeader header, const std::string& cameraPath) {
    if (cameraPath.empty()) {
        return header;
    }
    const nlohmann::json json = readJson(cameraPath);
    try {
        header.camera = readCamera(Fields(json));
    } catch (const InputError& error) {
        throw InputError(cameraPath, error);
    }
    return header;
}

RecordingHeader withInstallation(RecordingHeader header, const std::string& path) {
    if (!path.empty()) {
        static_cast<Installation&>(header) = Installation::parse(path);
    }
    return header;
}

}  // namespace Workbench
