// SPDX-License-Identifier: Apache-2.0
// Gaussian estimates in information form, where independent estimates add.
#pragma once

#include <veskar/Estimation.h>

namespace Veskar {

/// What an estimate (x, P) knows: the information matrix Y = P^-1 and the information vector
/// y = P^-1 x. The knowledge of independent estimates adds, and what was added can be taken out
/// again (Bar-Shalom, Willett, Tian: Tracking and Data Fusion, 2011).
///
/// Covariances enter and leave through named functions only, so that the two forms cannot be mixed
/// up. Nothing is checked: a singular matrix gives values that are not finite.
class Information {
public:
    /// @param x a state
    /// @param P its covariance
    /// @return Y = P^-1 and y = P^-1 x
    static Information fromEstimate(const StateVector& x, const StateMatrix& P);

    /// Turns back into state and covariance: P = Y^-1 and x = P y.
    ///
    /// @param x receives the state
    /// @param P receives the covariance
    void toEstimate(StateVector& x, StateMatrix& P) const;

    /// Adds the knowledge of an independent estimate.
    Information& operator+=(const Information& other);
    /// Takes out knowledge that was added before.
    Information& operator-=(const Information& other);

private:
    Information(const StateVector& x, const StateMatrix& P);

    StateMatrix Y;
    StateVector y;
};

}  // namespace Veskar
