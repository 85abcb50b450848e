// SPDX-License-Identifier: Apache-2.0
#include "support/RandomEstimates.h"

namespace VeskarTest {

double RandomEstimates::uniform(double low, double high) {
    // Standard distributions differ between libraries; the engine does not.
    constexpr double toUnit = 1.0 / 9007199254740992.0;  // 2^-53
    return low + (high - low) * (static_cast<double>(engine_() >> 11U) * toUnit);
}

int RandomEstimates::integer(int low, int high) {
    return low + static_cast<int>(uniform(0.0, static_cast<double>(high - low + 1)));
}

Veskar::StateVector RandomEstimates::state() {
    Veskar::StateVector x;
    for (Eigen::Index i = 0; i < x.size(); ++i) {
        x[i] = uniform(-1.0, 1.0);
    }
    return x;
}

Veskar::StateMatrix RandomEstimates::covariance() {
    // A A' has eigenvalues from 0 to 36; the diagonal increases them.
    Veskar::StateMatrix A;
    for (Eigen::Index i = 0; i < A.size(); ++i) {
        A.data()[i] = uniform(-1.0, 1.0);
    }
    Veskar::StateMatrix P = A * A.transpose();
    P.diagonal().array() += uniform(0.05, 0.5);
    return P;
}

Estimate RandomEstimates::estimate() {
    const Veskar::StateVector x = state();
    return {x, covariance()};
}

}  // namespace VeskarTest
