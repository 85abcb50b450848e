// SPDX-License-Identifier: Apache-2.0
// Numbers for the pairs of a recording that have been near each other.
#pragma once

#include "evaluate/metrics/Instant.h"
#include "evaluate/metrics/NearPairs.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace Workbench {

/// Numbers pairs of a true object and a track from 0 in the order in which they are first near, so
/// that metrics keep what they know of a pair in a list and not in a map. In a crowd there are
/// thousands of pairs at every instant, each of which would be looked up by every metric.
class PairNumbers {
public:
    /// Sets the numbers of the near pairs of an instant.
    void number(NearPairs& near, const Instant& instant);

private:
    struct Numbered {
        int truth;
        int track;
        int pair;
    };
    /// The pairs of an object, which stand together.
    struct Run {
        std::size_t begin = 0;
        std::size_t end = 0;
    };

    int numberOf(int truth, int track);

    std::unordered_map<std::uint64_t, int> numbers_;
    // Pairs stay near for many instants: most are found here, without the map.
    std::vector<Numbered> present_;  ///< the pairs of the last instant
    std::vector<Run> runs_;          ///< of them, by object
    std::size_t next_ = 0;           ///< behind the one that was found last
};

}  // namespace Workbench
