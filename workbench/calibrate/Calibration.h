// SPDX-License-Identifier: Apache-2.0
// Estimates the errors of an installation from recordings made with it.
#pragma once

#include "calibrate/CoarseStart.h"
#include "calibrate/Fit.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace Workbench {

/// What the data tells of a parameter.
enum class Verdict {
    NotAsked,    ///< not estimated
    CannotTell,  ///< the deviation is too large to be of use
    AsStated,    ///< the stated value is not significantly wrong
    Corrected    ///< the stated value is wrong
};

/// The estimate of one parameter, true minus stated.
struct CalibrationValue {
    Verdict verdict = Verdict::NotAsked;
    double value = 0.0;     ///< when all asked parameters are estimated
    double std = 0.0;       ///< of it
    double interval = 0.0;  ///< half the width of its 95 % interval
};

/// Typical errors of the pairs: medians of absolute values.
struct TypicalErrors {
    double bearing = 0.0;     ///< radians; NaN where bearings tell nothing
    double depression = 0.0;  ///< radians
    double whitened = 0.0;    ///< length of both components, in standard deviations
};

/// A pair of tracks at one moment, and how far its box is from where it is expected.
struct PairError {
    double sinceMiddle = 0.0;  ///< time after the middle of its recording, s
    double range = 0.0;        ///< from the radar, m
    Eigen::Vector2d seen;      ///< middle and bottom of the box, image units
    Eigen::Vector2d before;    ///< bearing to the left (NaN where it tells nothing) and depression,
                               ///< as stated, radians
    Eigen::Vector2d after;     ///< the same, corrected
};

/// The answer.
struct CalibrationResult {
    std::array<CalibrationValue, parameterCount> values;
    /// Of all estimated values.
    Eigen::Matrix<double, static_cast<int>(parameterCount), static_cast<int>(parameterCount)>
        correlation = decltype(correlation)::Zero();
    Placement correction = Placement::Zero();  ///< the significant errors, estimated together
    std::size_t samples = 0;
    std::size_t clusters = 0;  ///< of samples, with independent errors
    TypicalErrors before;      ///< of all pairs, as stated
    TypicalErrors after;       ///< corrected
    /// The same of odd thirds of a minute, with the correction estimated from the even ones.
    TypicalErrors heldOutBefore;
    TypicalErrors heldOutAfter;
    std::vector<PairError> pairs;  ///< all samples
    std::string refusal;  ///< why nothing is corrected although values are significant; or empty

    /// @return the value of a parameter
    const CalibrationValue& of(MountingParameter parameter) const {
        return values[static_cast<std::size_t>(parameter)];
    }
    /// @return whether the data tells any value
    bool isTold() const;
    /// @return whether there is a correction
    bool corrects() const { return correction != Placement::Zero(); }
};

/// Starts from the stated installation. Finds pairs and estimates in turn, until both agree.
///
/// @param stated the installation as stated
/// @param scenes recordings made with it
/// @param asked which parameters to estimate
/// @return the answer
CalibrationResult calibrate(const Installation& stated, const std::vector<CalibrationScene>& scenes,
                            const FreeParameters& asked);

}  // namespace Workbench
