// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedJson.h"

#include <veskar-host/HostParameters.h>

#include "host/installation/RecordingHeader.h"
#include "host/json/LineText.h"

#include <nlohmann/json.hpp>

namespace Workbench {

std::string fusedHeaderLine(const RecordingHeader& header, const std::string& configuration,
                            const std::string& constants) {
    LineText text;
    beginHeader(text, "veskar-fused", fusedVersion, header);
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
