// SPDX-License-Identifier: Apache-2.0
// Watches the mounting over a sliding window of time.
#pragma once

#include <veskar-host/Projection.h>

#include "calibrate/MountingShift.h"
#include "live/service/MountingWatch.h"
#include "live/service/RunConfiguration.h"

#include <limits>
#include <memory>
#include <optional>

namespace Workbench {

/// When a shift counts as a movement: where it is larger than tolerated and significant, twice in
/// a row. The installation fits again when the shift is clearly within what is tolerated, twice in
/// a row.
class MovementRule {
public:
    /// @param limit what is tolerated, radians
    explicit MovementRule(double limit) : limit_(limit) {}

    /// @param shift the latest one
    /// @return whether the installation has moved
    bool judge(const MountingShift& shift);

private:
    double limit_;
    bool hasMoved_ = false;
    int opposed_ = 0;  ///< shifts in a row that say otherwise
};

/// The latest minutes of both sensors, judged five times per window. Frames are thinned out to five
/// a second; in crowds of 64, five minutes take about 6 MB.
class MountingWindow {
public:
    /// @param stated the installation as stated
    /// @param settings window and limit
    MountingWindow(const Installation& stated, const Veskar::Live::WatchSettings& settings)
        : stated_(stated), length_(settings.window), rule_(radians(settings.limit)) {}

    /// @param frame of a sensor
    /// @return a judgement, when one is due and enough was seen
    std::optional<Veskar::Live::MountingState> add(const SensorFrame& frame);

private:
    std::optional<Veskar::Live::MountingState> judge();

    Installation stated_;
    double length_;
    MovementRule rule_;
    Sightings sightings_;
    double latestRadar_ = -std::numeric_limits<double>::infinity();
    double latestVideo_ = -std::numeric_limits<double>::infinity();
    std::optional<double> judged_;  ///< time of the latest judgement
};

/// Judges on a thread of its own, at low priority.
///
/// @param stated the installation as stated
/// @param settings window and limit
/// @return the watch
std::unique_ptr<Veskar::Live::MountingWatch> watchMounting(
    const Installation& stated, const Veskar::Live::WatchSettings& settings);

}  // namespace Workbench
