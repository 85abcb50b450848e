// SPDX-License-Identifier: Apache-2.0
// Whether a radar's reported velocities agree with the displacements of its tracks.
#pragma once

#include <veskar-host/RadarModel.h>

#include "check/Hypothesis.h"
#include "recording/Recording.h"

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <vector>

namespace Workbench {

/// Compares the reported motion of radar tracks with their displacements over a second, under each
/// reading of azimuth and direction. Memory is bounded.
class RadarMotion {
public:
    /// @param header the installation as stated
    explicit RadarMotion(const RecordingHeader& header);

    /// @param frame the next radar frame
    void add(const SensorFrame& frame);

    /// @return number of one-second displacements of moving objects that were compared, with
    ///         azimuths read as @p azimuth
    std::uint64_t ways(AzimuthForm azimuth) const;
    /// @param azimuth reading of the azimuths
    /// @param direction reading of the directions
    /// @return share of the displacements in the reported direction, 0..1
    double share(AzimuthForm azimuth, DirectionForm direction) const;
    /// @param azimuth reading of the azimuths
    /// @return median of reported speed over displacement by time; nothing without displacements
    std::optional<double> speedFactor(AzimuthForm azimuth) const;
    /// @return median of reported radial speed over change of range by time, negative when the sign
    ///         is reversed; nothing without displacements
    std::optional<double> radialSpeedFactor() const;
    /// @return number of displacements behind radialSpeedFactor
    std::uint64_t radialWays() const { return radialFactors_.size(); }

private:
    struct Point {
        double time;
        RadarReport report;
    };
    struct Ways {
        std::uint64_t count = 0;
        std::array<std::uint64_t, directionForms.size()> agreeing{};
        std::vector<float> speedFactors;
    };

    void compare(const std::deque<Point>& track);

    RadarModel radar_;
    std::map<std::int32_t, std::deque<Point>> tracks_;
    std::array<Ways, azimuthForms.size()> byAzimuth_;
    std::vector<float> radialFactors_;
};

}  // namespace Workbench
