// SPDX-License-Identifier: Apache-2.0
#include "RtspServer.h"

#include "RtspServerProgram.h"
#include "live/support/FreePort.h"

#include <fstream>
#include <utility>

namespace VeskarTest {

RtspServer::RtspServer(const std::string& file, const std::vector<std::string>& documents,
                       Settings settings)
    : settings_(std::move(settings)) {
    settings_.insert({"tracks", "VND.ONVIF.METADATA"});
    settings_["port"] = std::to_string(freePort());
    settings_["documents"] = file;
    std::ofstream stream(file);
    for (const std::string& document : documents) {
        stream << document << "\n";
    }
    stream.close();
    restart();
}

void RtspServer::restart() {
    std::vector<std::string> arguments{VESKAR_RTSP_SERVER};
    for (const auto& [key, value] : settings_) {
        arguments.push_back(std::string(key).append("=").append(value));
    }
    daemon_.emplace(arguments, "ready");
}

}  // namespace VeskarTest
