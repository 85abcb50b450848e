// SPDX-License-Identifier: Apache-2.0
// What becomes of frames that do not come one after the other.
#pragma once

#include <cstdint>

namespace Veskar::Live {

/// What is wrong with the place of a frame among those of its sensor.
enum class Irregularity {
    None,
    Late,       ///< arrived long after its measurement
    Repeated,   ///< has the stamp of the newest frame
    Reordered,  ///< has an earlier stamp than the newest frame
};

/// Takes irregular frames or leaves them out, as configured, and counts them.
class FramePolicy {
public:
    /// What is taken.
    struct Options {
        double lateAfter = 1.0;       ///< delay of a frame that is late, s
        bool takesLate = false;       ///< at the time of its measurement
        bool takesRepeated = false;   ///< right behind the newest frame
        bool takesReordered = false;  ///< likewise: frames of a sensor have increasing times
    };
    /// Frames since construction, taken or not.
    struct Counts {
        std::uint64_t late = 0;
        std::uint64_t repeated = 0;
        std::uint64_t reordered = 0;
    };

    /// @param options what is taken
    explicit FramePolicy(Options options) : options_(options) {}

    /// @return the delay of a frame that is late, s
    double lateAfter() const { return options_.lateAfter; }
    /// @return whether a frame is taken
    bool takes(Irregularity irregularity);
    /// @return how many there were
    const Counts& counts() const { return counts_; }

private:
    Options options_;
    Counts counts_;
};

}  // namespace Veskar::Live
