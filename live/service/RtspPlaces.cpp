// SPDX-License-Identifier: Apache-2.0
#include "live/service/RtspPlaces.h"

#include "live/rtsp/RtspInput.h"
#include "live/service/InputOf.h"

#include <utility>

namespace Veskar::Live {

std::string rtspMissing() {
    return {};
}

std::unique_ptr<Input> makeRtspInput(const std::string& name, const RtspPlace& place,
                                     EventLoop& loop, Faults& faults, Receiver receiver) {
    RtspOptions options;
    options.channel = name;
    options.url = place.url;
    options.credentials = place.credentials;
    options.transport = place.transport;
    return std::make_unique<InputOf<RtspInput>>(loop, std::move(options), faults,
                                                std::move(receiver));
}

}  // namespace Veskar::Live
