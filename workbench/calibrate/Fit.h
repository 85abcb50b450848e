// SPDX-License-Identifier: Apache-2.0
// Robust nonlinear least squares over pairs of tracks.
#pragma once

#include "calibrate/Pairing.h"

#include <array>
#include <vector>

namespace Workbench {

/// Which parameters are estimated.
using FreeParameters = std::array<bool, parameterCount>;

/// An estimate.
struct Fit {
    Placement placement = Placement::Zero();
    /// Of the placement; that of the prior where a parameter is not observable, zero where it is
    /// not estimated.
    Eigen::Matrix<double, static_cast<int>(parameterCount), static_cast<int>(parameterCount)>
        covariance = decltype(covariance)::Zero();
    std::size_t samples = 0;
    std::size_t clusters = 0;
};

/// Minimises the robust sum (Cauchy's loss) of squared whitened errors, with a weak prior at the
/// stated values.
///
/// The covariance allows for dependent errors within a cluster ("sandwich": Huber: The behavior of
/// maximum likelihood estimates under nonstandard conditions, 1967; with clusters: Liang, Zeger:
/// Longitudinal data analysis using generalized linear models, 1986).
///
/// @param stated the installation as stated
/// @param samples pairs
/// @param start where to begin
/// @param free which parameters are estimated; the others stay as in @p start
/// @return the estimate
Fit fit(const Installation& stated, const std::vector<CalibrationSample>& samples,
        const Placement& start, const FreeParameters& free);

}  // namespace Workbench
