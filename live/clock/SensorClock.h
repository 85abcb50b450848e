// SPDX-License-Identifier: Apache-2.0
// From a sensor's UTC stamps to the host's steady clock.
#pragma once

#include "live/clock/FramePolicy.h"
#include "live/clock/OffsetEstimator.h"
#include "live/transport/Faults.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace Veskar::Live {

/// When a frame arrived, by both clocks of the host.
struct ArrivalTime {
    std::chrono::steady_clock::time_point steady;
    std::chrono::system_clock::time_point utc;
};

/// The clock of one sensor: gives its frames times of the host's steady clock.
///
/// By default the sensor's clock need not be right, only run evenly: its difference from the host's
/// is estimated from the arrivals (see OffsetEstimator). A sensor that is synchronised with the
/// host (NTP, PTP) tells more: its stamps are believed as they are, the delay of its frames
/// included, as long as the clocks differ by less than the limit.
///
/// Times increase from frame to frame and are not later than the arrival; they are whole
/// microseconds. When the estimate falls, they go on at half the speed of the stamps until they
/// meet it, as clocks that are slewed, instead of going back.
class SensorClock {
public:
    using Utc = std::chrono::system_clock::time_point;
    using Steady = std::chrono::steady_clock::time_point;

    /// What is known of a sensor.
    struct Options {
        std::string sensor;           ///< name for faults
        bool isSynchronised = false;  ///< with the host's system clock
        double latency = 0.0;         ///< least time from measurement to arrival, s
        double limit = 1.0;           ///< difference of the clocks that is warned of, s
        FramePolicy::Options policy;  ///< what becomes of irregular frames
    };
    /// For the status document.
    struct Status {
        double offset = 0.0;     ///< by how much the sensor's clock is ahead of the host's system
                                 ///< clock, s, if the least delay is the latency that is stated
        double jitter = 0.0;     ///< within how much 90 % of the delays are, s
        bool isSettled = false;  ///< both have been looked at for a second
        bool isByHostClock = false;  ///< the last stamp was believed as it was
        std::uint64_t taken = 0;     ///< frames that got a time
        std::uint64_t stray = 0;     ///< frames left out: stamps far from those before
        std::uint64_t steps = 0;     ///< times that the sensor's clock was set
        std::uint64_t unplaced = 0;  ///< frames left out: no time is left up to their arrival
        FramePolicy::Counts irregular;
    };

    /// @param options what is known of the sensor
    /// @param faults receives warnings; must outlive the clock
    SensorClock(Options options, Faults& faults);

    /// @param stamp of a frame, by the sensor's clock
    /// @param arrival of the frame; not before that of the last one
    /// @return its time; nothing: the frame is left out, which is counted
    std::optional<Steady> place(Utc stamp, const ArrivalTime& arrival);

    /// @return what is known by now
    const Status& status() const { return status_; }

private:
    using Nanoseconds = std::chrono::nanoseconds;

    Irregularity irregularityOf(Utc stamp, Nanoseconds delay) const;
    std::optional<Steady> placeBehindLast(Utc stamp, Steady wanted, Steady arrived,
                                          Irregularity irregularity);
    void judgeOffset(const ArrivalTime& arrival);

    Options options_;
    Faults& faults_;
    FramePolicy policy_;
    OffsetEstimator estimator_;
    std::optional<Nanoseconds> base_;  ///< lags are estimated relative to it, for their precision
    std::optional<Utc> newest_;        ///< stamp
    std::optional<Steady> last_;       ///< time of the last frame taken
    Utc lastStamp_;                    ///< of it
    bool isWarned_ = false;
    Status status_;
};

}  // namespace Veskar::Live
