// SPDX-License-Identifier: Apache-2.0
// What an evaluation is to evaluate.
#pragma once

#include <vector>

namespace Workbench {

/// Options of an evaluation.
struct EvaluationOptions {
    double cutoff = 5.0;                               ///< see Scorecard, m
    std::vector<double> bands{0.0, 20.0, 40.0, 80.0};  ///< lower limits of the range bands, m
    std::vector<int> confirmationHits{3, 8, 15};       ///< hits to confirm sensor tracks
    double coastingLimit = 0.5;                        ///< of every tracker, s
    /// Evaluates only where both sensors can see; otherwise the whole scene.
    bool commonFieldOfView = true;
    /// Keeps GOSPA of every instant for `gospaOverTime`; memory then grows with the duration.
    bool keepsMoments = false;
};

}  // namespace Workbench
