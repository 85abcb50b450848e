// SPDX-License-Identifier: Apache-2.0
#include "live/view/StateText.h"

#include "host/fused/SensorTrackReading.h"

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

std::string eventOf(const char* name, const std::string& data) {
    return std::string("event: ") + name + "\ndata: " + data + "\n\n";
}

}  // namespace Veskar::Live
