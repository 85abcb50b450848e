// SPDX-License-Identifier: Apache-2.0
// Products of fixed-size matrices whose sums have one order.
#pragma once

#include <Eigen/Core>

namespace Veskar {

// Eigen adds the terms of a product in the order that suits the processor's vector unit, and fuses
// them where it can: each architecture gets other last bits. Everything else that the estimation
// does is element by element. With these two in the place of Eigen's products a recording gives the
// same bits on every architecture.

/// a'b, summed from the first element to the last.
template <int size>
double orderedDot(const Eigen::Matrix<double, size, 1>& a,
                  const Eigen::Matrix<double, size, 1>& b) {
    double sum = a[0] * b[0];
    for (int i = 1; i < size; ++i) {
        sum += a[i] * b[i];
    }
    return sum;
}

/// A x, summed from the first column to the last.
template <int size>
Eigen::Matrix<double, size, 1> orderedProduct(const Eigen::Matrix<double, size, size>& A,
                                              const Eigen::Matrix<double, size, 1>& x) {
    Eigen::Matrix<double, size, 1> sum = A.col(0) * x[0];
    for (int j = 1; j < size; ++j) {
        sum += A.col(j) * x[j];
    }
    return sum;
}

}  // namespace Veskar
