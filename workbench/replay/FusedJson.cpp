// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedJson.h"

#include <veskar-host/HostParameters.h>

#include "host/installation/InstallationText.h"

#include <nlohmann/json.hpp>

namespace Workbench {

std::string fusedHeaderLine(const RecordingHeader& header, const std::string& configuration,
                            const std::string& constants) {
    LineText text;
    text += "{\"format\":\"veskar-fused\",\"version\":";
    text.addInteger(fusedVersion);
    text.addName("name");
    text.addQuoted(header.name);
    text.addName("origin");
    text.addQuoted(header.origin);
    text.addName("licence");
    text.addQuoted(header.licence);
    text.addName("camera");
    append(text, header.camera);
    text.addName("radar");
    append(text, header.radar);
    text.addName("configuration");
    text += nlohmann::ordered_json::parse(configuration).dump();
    if (constants != HostParameters().toJson()) {
        text.addName("veskarHost");
        text += constants;
    }
    text += "}\n";
    return text.string();
}

}  // namespace Workbench
