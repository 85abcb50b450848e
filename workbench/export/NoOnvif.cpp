// SPDX-License-Identifier: Apache-2.0
// ONVIF's formats in a program without its live part.
#include <veskar-host/InputError.h>

#include "export/OnvifFormats.h"
#include "import/Onvif.h"

namespace Workbench {
namespace {

std::unique_ptr<Exporter> refuse(const std::string& /*output*/, const RecordingHeader& /*header*/) {
    throw InputError(VESKAR_LIVE_MISSING);
}

}  // namespace

std::vector<ExportFormat> onvifFormats() {
    return {{"onvif-xml", false, refuse}, {"onvif-json", false, refuse}};
}

ImportedRecording importOnvif(const OnvifOptions& /*options*/) {
    throw InputError(VESKAR_LIVE_MISSING);
}

}  // namespace Workbench
