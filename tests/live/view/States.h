// SPDX-License-Identifier: Apache-2.0
// States for the tests of the live view.
#pragma once

#include "host/TestInstallation.h"
#include "live/view/ViewMailbox.h"

#include <memory>

namespace VeskarTest {

/// @return a state with a system track, which a radar feeds
/// @param time of the state, s
inline Veskar::Live::ViewState stateAt(double time) {
    Veskar::Live::ViewState state;
    state.adapter =
        std::make_shared<Veskar::Host::HostAdapter>(testInstallation(), configuration());
    Veskar::Host::FusedTrack track;
    track.id = 12;
    state.fused = {time, time, Veskar::Radar, {track}};
    Veskar::Host::RadarReport report;
    report.id = 3;
    report.range = 30.0;
    state.radar = Veskar::Host::SensorFrame{Veskar::Radar, time, time, {report}};
    return state;
}

}  // namespace VeskarTest
