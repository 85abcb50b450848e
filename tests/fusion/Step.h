// SPDX-License-Identifier: Apache-2.0
// The elements of generated scenes.
#pragma once

#include <veskar/Config.h>
#include <veskar/Track.h>

#include <chrono>
#include <memory>
#include <vector>

namespace VeskarTest {

/// One call of the cycle.
struct Step {
    Veskar::Source source;
    double timestamp;              ///< seconds
    std::chrono::nanoseconds now;  ///< steady clock at the call
    std::vector<std::shared_ptr<Veskar::Track>> tracks;
};

/// The options of the fusion that select code paths.
struct Switches {
    bool splitGating;
    bool useJVA;
    bool allowRadarToMultiple;
    bool removeClassMismatches;

    void apply(Veskar::Config& config) const {
        config.module.splitGating = splitGating;
        config.module.useJVA = useJVA;
        config.module.allowRadarToMultiple = allowRadarToMultiple;
        config.module.removeClassMismatches = removeClassMismatches;
    }
};

}  // namespace VeskarTest
