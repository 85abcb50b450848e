// SPDX-License-Identifier: Apache-2.0
#include "replay/RunDigests.h"

#include <veskar-host/InputError.h>

#include "io/Digest.h"
#include "recording/Header.h"

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// The member that identifies the closing line.
constexpr const char* digestsKey = "digests";

}  // namespace

std::string digestOf(const nlohmann::json& value) {
    Digest digest;
    digest.add(value.dump());
    return digest.text();
}

RunDigests digestsOfRun(const std::string& recording, const RecordingHeader& header,
                        const std::string& configuration, const std::string& constants) {
    return {recording, digestOf(toJson(header.camera)),
            digestOf(nlohmann::json::parse(configuration)), digestOfConstants(constants)};
}

std::string digestOfConstants(const std::string& constants) {
    const auto json = nlohmann::json::parse(constants);
    return json.empty() ? "" : digestOf(json);
}

std::string closingLine(const RunDigests& digests) {
    Json line{{digestsKey,
               {{"recording", digests.recording},
                {"camera", digests.camera},
                {"configuration", digests.configuration}}}};
    if (!digests.host.empty()) {
        line[digestsKey]["host"] = digests.host;
    }
    return line.dump() + "\n";
}

bool readClosingLine(const LineFields& line, std::optional<RunDigests>& digests) {
    if (digests) {
        throw InputError("stands behind the closing line");
    }
    if (!line.has(digestsKey)) {
        return false;
    }
    const LineFields stated = line.object(digestsKey);
    digests = {stated.text("recording"), stated.text("camera"), stated.text("configuration"),
               stated.text("host", "")};
    return true;
}

}  // namespace Workbench
