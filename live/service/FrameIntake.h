// SPDX-License-Identifier: Apache-2.0
// The last step before the fusion: what passes is exactly what a recording holds.
#pragma once

#include <veskar-host/SensorFrame.h>

#include "host/recording/FrameChecks.h"
#include "live/transport/Faults.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Veskar::Live {

/// Makes frames those that a recording of them would hold: with as many reports as the fusion
/// takes, stamped with the time at which they are handed on, their numbers rounded, and in an order
/// that can be read back. The fusion and the recorder get the same frames, so that a replay gives
/// what was fused live.
class FrameIntake {
public:
    using Steady = std::chrono::steady_clock::time_point;

    /// One assignment of the fusion holds 512 tracks: as many as two sensors report at most that
    /// see nothing alike.
    static constexpr std::size_t mostReports = 256;

    /// Since construction.
    struct Counts {
        std::uint64_t taken = 0;           ///< frames
        std::uint64_t refused = 0;         ///< frames that no recording may hold
        std::uint64_t reports = 0;         ///< in the frames that were taken
        std::uint64_t reportsLeftOut = 0;  ///< beyond mostReports
    };

    /// @param faults receives what is left out; must outlive the intake
    explicit FrameIntake(Faults& faults) : faults_(faults) {}

    /// @param frame with the time of its measurement; of too many reports the most probable ones
    ///              stay: confirmed ones first, then those that coast least, then those with the
    ///              more probable class
    /// @param now when it is handed on
    /// @return the frame; nothing when it is refused, which is counted
    std::optional<Host::SensorFrame> take(Host::SensorFrame frame, Steady now);
    /// @param now the time
    /// @return the host's clock as the frames have it, s: whole microseconds, never going back
    double clock(Steady now);

    /// @return what was counted
    const Counts& counts() const { return counts_; }

private:
    void leaveOutImprobable(Host::SensorFrame& frame);

    Faults& faults_;
    std::int64_t last_ = 0;  ///< microseconds
    Host::Internal::FrameOrder order_;
    Counts counts_;
};

}  // namespace Veskar::Live
