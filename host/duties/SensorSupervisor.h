// SPDX-License-Identifier: Apache-2.0
// What a host has to do when a sensor is silent or slow.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/SensorFrame.h>

#include <deque>
#include <map>
#include <optional>
#include <vector>

namespace Veskar::Host::Internal {

/// A frame that the host adds of its own.
struct AddedFrame {
    Source source = VideoObject;         ///< in whose name
    double time = 0.0;                   ///< time stamp, s
    double received = 0.0;               ///< when it is due on the host's clock, s
    const SensorFrame* basis = nullptr;  ///< frame to predict; null: an empty frame
    double ahead = 0.0;                  ///< s by which `basis` is predicted
};

/// Watches the sensors and says which frames to add.
class VESKAR_HOST_EXPORT SensorSupervisor {
public:
    /// @param parameters when to step in
    explicit SensorSupervisor(const HostParameters& parameters = {}) : parameters_(parameters) {}

    /// @param now the host's clock, s; the next frame arrives then
    /// @return the next frame to add before @p now; nothing when none is due. Its basis is valid
    ///         until the next call of saw.
    std::optional<AddedFrame> nextBefore(double now);
    /// @param time time stamp of a radar frame that would have to wait for video, s
    /// @param now the host's clock, s
    /// @return the empty video frame to hand over before it, so that it need not wait; nothing
    ///         while video may still speak for itself
    std::optional<AddedFrame> videoFor(double time, double now);
    /// @param frame a frame that has arrived
    void saw(const SensorFrame& frame);

private:
    struct Sensor {
        double time = 0.0;             ///< of the last frame
        double received = 0.0;         ///< of the last frame
        std::deque<double> intervals;  ///< between the last few frames
        double interval = 0.0;         ///< the least of them; 0 while unknown
        double due = 0.0;              ///< when the next frame is to be added, unless one arrives
        double silent = 0.0;           ///< when it counts as silent, unless one arrives
        SensorFrame frame;             ///< the last frame, kept of slow sensors
    };
    static void measureInterval(Sensor& sensor, double time);
    void postpone(Sensor& sensor, double interval) const;
    bool isSlow(const Sensor& sensor) const { return sensor.interval > parameters_.slowInterval; }
    bool isBelieved(const Sensor& sensor) const;
    void schedule(Source source, Sensor& sensor) const;

    HostParameters parameters_;
    double lastReport_ = 0.0;  ///< when the last frame came or was predicted, of any sensor
    std::map<Source, Sensor> sensors_;
};

}  // namespace Veskar::Host::Internal
