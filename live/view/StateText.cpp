// SPDX-License-Identifier: Apache-2.0
#include "live/view/StateText.h"

#include "host/fused/SensorTrackReading.h"
#include "host/json/LineText.h"

namespace Veskar::Live {
namespace {

std::string lineOf(const Host::FusedFrame& frame) {
    std::string line = toJsonLine(frame);
    line.pop_back();  // the line end
    return line;
}

std::string lineOf(const std::optional<Host::SensorFrame>& frame,
                   const Host::HostAdapter& adapter) {
    return frame ? lineOf(Host::Internal::readTracks(*frame, adapter)) : "null";
}

}  // namespace

std::string textOf(const ViewState& state) {
    return "{\"fused\":" + lineOf(state.fused) +
           ",\"video\":" + lineOf(state.video, *state.adapter) +
           ",\"radar\":" + lineOf(state.radar, *state.adapter) + "}";
}

std::string textOf(std::uint64_t number, const CameraPicture& picture) {
    constexpr int milliseconds = 3;  // decimals
    Host::Internal::LineText line;
    line += "{\"number\":";
    line += std::to_string(number);
    if (picture.picture) {
        line.addMember("time", picture.picture->time, milliseconds);
    } else {
        line.addName("fault");
        line.addQuoted(picture.fault);
    }
    line += '}';
    return line.string();
}

std::string eventOf(const char* name, const std::string& data) {
    return std::string("event: ") + name + "\ndata: " + data + "\n\n";
}

}  // namespace Veskar::Live
