// SPDX-License-Identifier: Apache-2.0
// In a program that was built without RTSP.
#include <veskar-host/InputError.h>

#include "live/service/RtspPlaces.h"

namespace Veskar::Live {

std::string rtspMissing() {
    return VESKAR_LIVE_RTSP_MISSING;
}

std::unique_ptr<Input> makeRtspInput(
    const std::string& /*name*/, const RtspPlace& /*place*/, EventLoop& /*loop*/,
    Faults& /*faults*/,
    Receiver /*receiver*/) {  // NOLINT(performance-unnecessary-value-param): kept by the other one
    throw Host::InputError(rtspMissing());
}

}  // namespace Veskar::Live
