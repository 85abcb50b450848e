// SPDX-License-Identifier: Apache-2.0
// Whether the sensors still look where the installation says.
#pragma once

#include <veskar-host/SensorFrame.h>

#include "live/service/StatusReport.h"
#include "live/transport/EventLoop.h"
#include "live/transport/Faults.h"
#include "live/transport/Output.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace Veskar::Live {

/// How far the camera is turned against the radar from what the installation says, degrees.
struct MountingState {
    bool hasMoved = false;     ///< whether that is significant, and more than tolerated
    double yaw = 0.0;          ///< to the left
    double yawStd = 0.0;       ///< its standard deviation
    double pitch = 0.0;        ///< downward; a change of height counts as pitch, too
    double pitchStd = 0.0;     ///< its standard deviation
    std::size_t clusters = 0;  ///< of objects that both sensors saw, with independent errors
};

/// Compares what both sensors report. The operations belong to the thread of the fusion and never
/// wait.
class MountingWatch {
public:
    virtual ~MountingWatch() = default;

    /// @param frame of a sensor
    virtual void see(const Host::SensorFrame& frame) = 0;
    /// @return the latest judgement; nothing before enough was seen
    virtual std::optional<MountingState> state() = 0;
};

/// Tells when the installation has moved, and when it fits again. Never changes anything.
class MountingAlarm {
public:
    /// @param watch what judges
    /// @param topic gets a message at each change; null: none does
    /// @param faults gets a line when the installation has moved
    MountingAlarm(std::unique_ptr<MountingWatch> watch, std::unique_ptr<Output> topic,
                  Faults& faults);

    /// @param frame of a sensor
    void see(const Host::SensorFrame& frame) { watch_->see(frame); }
    /// Tells what has changed since the last call.
    void tell();
    /// @param report gets the latest judgement
    void addTo(StatusReport& report);
    /// @return whether all messages are written
    bool isDrained() const { return !topic_ || topic_->isDrained(); }

private:
    std::unique_ptr<MountingWatch> watch_;
    std::unique_ptr<Output> topic_;
    Faults& faults_;
    bool hasMoved_ = false;
};

/// @param state a judgement
/// @return for people, as "the camera looks 3.0 degrees to the left of where it is stated to (std
///         0.1) and 0.2 degrees above (std 0.1)"
std::string textOf(const MountingState& state);

}  // namespace Veskar::Live
