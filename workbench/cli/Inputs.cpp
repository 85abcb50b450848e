// SPDX-License-Identifier: Apache-2.0
#include "cli/Inputs.h"

#include "cli/CommandLine.h"
#include "io/InputError.h"
#include "io/TextFile.h"
#include "recording/Header.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using Veskar::ConfigFault;

/// @return why the fusion refuses a configuration, in one line
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

}  // namespace

Veskar::Config readConfiguration(const std::string& path) {
    if (path.empty()) {
        return Veskar::Config::defaults();
    }
    const std::string text = readText(path);
    const std::vector<ConfigFault> faults = Veskar::Config::findFaults(text);
    Veskar::Config config = [&] {
        try {
            return Veskar::Config::parse_json_string(text);
        } catch (const std::exception&) {
            throw InputError(refusal(faults, path));
        }
    }();
    for (const ConfigFault& fault : faults) {
        warn(fmt::format("{}: {}", path, fault.text()));
    }
    return config;
}

RecordingHeader withCamera(RecordingHeader header, const std::string& cameraPath) {
    if (cameraPath.empty()) {
        return header;
    }
    const nlohmann::json json = readJson(cameraPath);
    try {
        header.camera = readCamera(Fields(json));
    } catch (const InputError& error) {
        throw InputError(fmt::format("{}: {}", cameraPath, error.what()));
    }
    return header;
}

UnknownWords wordsToWarnOf(const std::string& name) {
    return UnknownWords(
        [name](const char* key, const std::string& word, const std::string& advice) {
            warn(fmt::format("{}: {} \"{}\" is {}", name, key, word, advice));
        });
}

CLI::Option* addForceOption(CLI::App& command, bool& force) {
    return command.add_flag("--force", force,
                            "take files together although they were not made from each other");
}

Provenance provenanceFor(bool force) {
    return {force ? Mismatch::Forced : Mismatch::Refused, warn};
}

}  // namespace Workbench
