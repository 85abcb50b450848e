// SPDX-License-Identifier: Apache-2.0
// The tracks that a tracker has reported so far, predicted to a later time.
#pragma once

#include <veskar-host/FusedTrack.h>

#include "HostLibrary.h"
#include "evaluate/metrics/Instant.h"

#include <optional>
#include <vector>

namespace Workbench {

/// The tracks of the last report, predicted to the time of evaluation.
///
/// Latency therefore counts: a user has only what has arrived, and predicts it with constant
/// velocity.
class Picture {
public:
    /// A reported track and its coasting time then.
    struct Reported {
        JudgedTrack track;
        double coasting = 0.0;  ///< s
    };

    /// @param track a track
    /// @return what is judged of it, with the coasting time of the sensor that saw it last: 0 when
    ///         it does not state its sensors, as tracks of other trackers; nothing when it has no
    ///         valid ground position
    static std::optional<Reported> reportedOf(const FusedTrack& track);

    /// @param seconds how long coasting tracks are kept, the same for every tracker
    explicit Picture(double seconds) : coastingLimit_(seconds) {}

    /// @param time of the estimates, s
    /// @param reports all tracks of the tracker
    void replace(double time, std::vector<Reported> reports);

    /// @param time s
    /// @return the tracks that are kept at that time
    std::vector<JudgedTrack> at(double time) const;

private:
    double coastingLimit_;
    double reportTime_ = 0.0;
    std::vector<Reported> current_;
};

}  // namespace Workbench
