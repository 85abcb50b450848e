// SPDX-License-Identifier: Apache-2.0
#include "live/service/MountingWatch.h"

#include "host/json/LineText.h"
#include "live/onvif/UtcTime.h"

#include <chrono>
#include <cmath>
#include <utility>

#include <fmt/format.h>

namespace Veskar::Live {
namespace {

std::string messageOf(const MountingState& state) {
    constexpr int decimals = 3;
    Host::Internal::LineText text;
    text += state.hasMoved ? R"({"event":"moved","time":)" : R"({"event":"fits","time":)";
    text.addQuoted(utcText(std::chrono::system_clock::now().time_since_epoch()));
    text.addMember("yaw", state.yaw, decimals);
    text.addMember("yawStd", state.yawStd, decimals);
    text.addMember("pitch", state.pitch, decimals);
    text.addMember("pitchStd", state.pitchStd, decimals);
    text.addMember("clusters", static_cast<double>(state.clusters), 0);
    text += '}';
    return text.string();
}

}  // namespace

MountingAlarm::MountingAlarm(std::unique_ptr<MountingWatch> watch, std::unique_ptr<Output> topic,
                             Faults& faults)
    : watch_(std::move(watch)), topic_(std::move(topic)), faults_(faults) {}

void MountingAlarm::tell() {
    const std::optional<MountingState> state = watch_->state();
    if (!state || state->hasMoved == hasMoved_) {
        return;
    }
    hasMoved_ = state->hasMoved;
    if (hasMoved_) {
        faults_.report("the installation has moved", textOf(*state));
    }
    if (topic_) {
        topic_->send(messageOf(*state));
    }
}

void MountingAlarm::addTo(StatusReport& report) {
    using Kind = StatusReport::Kind;
    if (const std::optional<MountingState> state = watch_->state()) {
        report.add("cameraMoved", state->hasMoved ? 1.0 : 0.0, Kind::Gauge);
        report.add("cameraYawError", state->yaw, Kind::Gauge);
        report.add("cameraPitchError", state->pitch, Kind::Gauge);
    }
}

std::string textOf(const MountingState& state) {
    return fmt::format(
        "the camera looks {:.1f} degrees to the {} of where it is stated to (std {:.1f}) and "
        "{:.1f} degrees {} (std {:.1f})",
        std::abs(state.yaw), state.yaw < 0.0 ? "right" : "left", state.yawStd,
        std::abs(state.pitch), state.pitch < 0.0 ? "above" : "below", state.pitchStd);
}

}  // namespace Veskar::Live
