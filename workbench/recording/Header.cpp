// SPDX-License-Identifier: Apache-2.0
#include "recording/Header.h"

#include "host/installation/InstallationText.h"

#include <nlohmann/json.hpp>

namespace Workbench {

Json toJson(const CameraSetup& camera) {
    LineText text;
    append(text, camera);
    return Json::parse(text.view());
}

Json toJson(const RecordingHeader& header) {
    return Json::parse(toJsonLine(header));
}

}  // namespace Workbench
