// SPDX-License-Identifier: Apache-2.0
#include "cli/Inputs.h"

#include "io/InputError.h"
#include "io/TextFile.h"
#include "recording/Header.h"
#include "replay/DefaultConfiguration.h"

#include <exception>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {

Configuration readConfiguration(const std::string& path) {
    const std::string name = path.empty() ? "default configuration" : path;
    const std::string text = path.empty() ? defaultConfiguration : readText(path);
    // A fault of the syntax gets file and line; one of the contents is logged by the library.
    parseJson(text, name);
    try {
        return {text, Veskar::Config::parse_json_string(text)};
    } catch (const std::exception&) {
        throw InputError(name + ": the fusion refuses this configuration");
    }
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

}  // namespace Workbench
