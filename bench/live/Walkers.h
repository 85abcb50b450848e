// SPDX-License-Identifier: Apache-2.0
// People who walk to and fro before a camera and a radar.
#pragma once

#include <veskar-host/Installation.h>
#include <veskar-host/Projection.h>
#include <veskar-host/SensorFrame.h>

#include <cstddef>
#include <cstdint>

namespace VeskarBench {

/// Places people in rows in the view of both sensors.
class Walkers {
public:
    /// @param installation both sensors
    /// @param number of people
    /// @param stay time after which a person is replaced by another one, s; 0: never
    Walkers(const Veskar::Host::Installation& installation, std::size_t number, double stay = 0.0);

    /// @param source one of both sensors
    /// @param time s
    /// @return what the sensor reports
    Veskar::Host::SensorFrame seenBy(Veskar::Source source, double time) const;

private:
    Eigen::Vector2d positionOf(std::size_t person, double time) const;
    std::int32_t idOf(std::size_t person, double time) const;

    Veskar::Host::Projection camera_;
    Eigen::Vector3d radar_;
    std::size_t number_;
    double stay_;
};

}  // namespace VeskarBench
