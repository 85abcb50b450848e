// SPDX-License-Identifier: Apache-2.0
// Supervision of sensors that are silent or slow.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/SensorFrame.h>

#include <deque>
#include <map>
#include <optional>
#include <vector>

namespace Veskar::Host::Internal {

/// A frame that the host adds.
struct AddedFrame {
    Source source = VideoObject;         ///< sensor that it replaces
    double time = 0.0;                   ///< time stamp, s
    double received = 0.0;               ///< when it is due on the host's clock, s
    const SensorFrame* basis = nullptr;  ///< frame to be predicted; null: the added frame is empty
    double ahead = 0.0;                  ///< prediction time of `basis`, s
    double slowInterval = 0.0;           ///< interval of the frames of `basis`'s sensor, s
};

/// Watches the frames of the sensors and determines the frames to add.
class VESKAR_HOST_EXPORT SensorSupervisor {
public:
    /// @param parameters intervals and limits
    explicit SensorSupervisor(const HostParameters& parameters = {}) : parameters_(parameters) {}

    /// @param now the host's clock when the next frame arrives, s
    /// @return the next frame that is due before @p now, if any. Its basis is valid until the next
    ///         call of saw.
    std::optional<AddedFrame> nextBefore(double now);
    /// @param time time stamp of a radar frame that the module would hold back for video, s
    /// @param now the host's clock, s
    /// @return the empty video frame to hand over before it, so that it is not held back; nothing
    ///         while video is not silent
    std::optional<AddedFrame> videoFor(double time, double now);
    /// @param frame a frame that has arrived
    void saw(const SensorFrame& frame);
    /// @param source a sensor
    /// @return the interval of its frames, s; 0 if it is not slow
    double slowInterval(Source source) const;

private:
    struct Sensor {
        double time = 0.0;             ///< of the last frame
        double received = 0.0;         ///< of the last frame
        std::deque<double> intervals;  ///< between the last few frames
        double interval = 0.0;         ///< the smallest of them; 0 while unknown
        double due = 0.0;              ///< when to add a frame unless one arrives, s
        double silent = 0.0;           ///< when it counts as silent unless one arrives, s
        SensorFrame frame;             ///< the last frame, only of slow sensors
    };
    static void measureInterval(Sensor& sensor, double time);
    void postpone(Sensor& sensor, double interval) const;
    bool isSlow(const Sensor& sensor) const { return sensor.interval > parameters_.slowInterval; }
    bool isBelieved(const Sensor& sensor) const;
    void schedule(Source source, Sensor& sensor) const;

    HostParameters parameters_;
    double lastReport_ = 0.0;  ///< when the last frame of any sensor came or was predicted, s
    std::map<Source, Sensor> sensors_;
};

}  // namespace Veskar::Host::Internal
