// SPDX-License-Identifier: Apache-2.0
// What a tracker has told its user so far, at any later moment.
#pragma once

#include "evaluate/metrics/Instant.h"

#include <vector>

namespace Workbench {

/// The tracks that were last reported, moved to the moment of the question.
///
/// This charges latency: a user who asks at a time knows what has arrived by then, and moves it
/// there with constant velocity.
class Picture {
public:
    /// A reported track and how long its sensors had not seen the object then.
    struct Reported {
        JudgedTrack track;
        double coasting = 0.0;  ///< s
    };

    /// @param seconds how long a track is shown that no sensor sees, the same for every tracker
    explicit Picture(double seconds) : coastingLimit_(seconds) {}

    /// @param time of the estimates, s
    /// @param reports all tracks of the tracker
    void replace(double time, std::vector<Reported> reports);

    /// @param time s
    /// @return the tracks that are still shown
    std::vector<JudgedTrack> at(double time) const;

private:
    double coastingLimit_;
    double reportTime_ = 0.0;
    std::vector<Reported> current_;
};

}  // namespace Workbench
