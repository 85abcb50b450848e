// SPDX-License-Identifier: Apache-2.0
// Whether a radar's speeds and directions are those of its own tracks.
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

/// Compares what radar tracks report of their motion with where they have gone in a second,
/// under each reading of azimuth and direction. Memory is bounded.
class RadarMotion {
public:
    /// @param header the installation as stated
    explicit RadarMotion(const RecordingHeader& header);

    /// @param frame the next radar frame
    void add(const SensorFrame& frame);

    /// @return how many ways of a second were compared, of objects that move, as @p azimuth
    /// reads
    std::uint64_t ways(AzimuthForm azimuth) const;
    /// @param azimuth how azimuths are read
    /// @param direction how directions are read
    /// @return the share of ways that lead in the reported direction, 0..1
    double share(AzimuthForm azimuth, DirectionForm direction) const;
    /// @param azimuth how azimuths are read
    /// @return the median of reported speed over way by time; nothing without ways
    std::optional<double> speedFactor(AzimuthForm azimuth) const;
    /// @return the median of reported radial speed over change of range by time, negative when it
    ///         counts the other way; nothing without ways
    std::optional<double> radialSpeedFactor() const;
    /// @return how many ways radialSpeedFactor rests on
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
