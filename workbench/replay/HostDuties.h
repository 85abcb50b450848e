// SPDX-License-Identifier: Apache-2.0
// What a host has to do when a sensor is silent or slow.
#pragma once

#include "recording/Recording.h"

#include <deque>
#include <map>
#include <optional>
#include <vector>

namespace Workbench {

/// When a host steps in for its sensors.
struct DutyParameters {
    /// Seconds without video after which video is silent, and the spacing of the empty frames that
    /// are then fed for it: radar frames wait for video's clock, 1.5 s each when it stands still.
    double videoSilence = 0.2;
    /// A sensor with frames farther apart than this (s) is slow: the fusion drops sensor tracks
    /// after 0.5 s of coasting, so its tracks are predicted in between.
    double slowInterval = 0.4;
    /// Spacing of predicted frames, s.
    double predictionInterval = 0.2;
    /// Predicted frames end after this many of the sensor's own intervals without a frame.
    double belief = 1.5;
    /// They end after this long (s) in any case, and so does the work that a gap can make.
    double longestBelief = 60.0;
    /// Seconds without any report, predicted ones included, after which empty frames end until a
    /// sensor speaks again. All tracks are gone a second after the last report: empty frames change
    /// nothing any more, and a gap may be of any length.
    double longestGap = 10.0;
};

/// A frame that the host adds of its own.
struct AddedFrame {
    Veskar::Source source = Veskar::VideoObject;  ///< in whose name
    double time = 0.0;                            ///< time stamp, s
    double received = 0.0;                        ///< when it is due on the host's clock, s
    const SensorFrame* basis = nullptr;           ///< frame to predict; null: an empty frame
    double ahead = 0.0;                           ///< s by which `basis` is predicted
};

/// Watches the sensors and says which frames to add.
class HostDuties {
public:
    /// @param parameters when to step in
    explicit HostDuties(const DutyParameters& parameters = {}) : tuning_(parameters) {}

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
    bool isSlow(const Sensor& sensor) const { return sensor.interval > tuning_.slowInterval; }
    bool isBelieved(const Sensor& sensor) const;
    void schedule(Veskar::Source source, Sensor& sensor) const;

    DutyParameters tuning_;
    double lastReport_ = 0.0;  ///< when the last frame came or was predicted, of any sensor
    std::map<Veskar::Source, Sensor> sensors_;
};

}  // namespace Workbench
