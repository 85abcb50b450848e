// SPDX-License-Identifier: Apache-2.0
#include "track/SymmetricLanes.h"

#include <cstdint>

namespace Veskar {
namespace {

constexpr std::size_t size = SymmetricLanes::size;

constexpr std::int64_t yes = -1;

/// @return all bits set if the matrix is symmetric up to rounding
std::int64_t isSymmetricUpToRounding(const StateMatrix& P) {
    constexpr double rounding = 1e-14;
    bool symmetric = true;
    for (Eigen::Index j = 1; j < P.cols(); ++j) {
        for (Eigen::Index i = 0; i < j; ++i) {
            const double difference = P(i, j) - P(j, i);
            symmetric =
                symmetric && difference * difference <= rounding * rounding * (P(i, i) * P(j, j));
        }
    }
    return symmetric ? yes : 0;
}

/// Sweeps row k.
/// @return its pivot
template <std::size_t k>
Lanes sweepRow(SymmetricLanes& A) {
    const Lanes pivot = A(k, k);
    const Lanes inverse = lanesOf(1.0) / pivot;
    SymmetricLanes::Vector factors;
    unroll<size>([&](auto i) { factors[i] = A(i, k) * inverse; });
    unroll<size>([&](auto i) {
        unroll<i + 1>([&](auto j) {
            if constexpr (i != k && j != k) {
                A(i, j) = A(i, j) - factors[i] * A(j, k);
            }
        });
    });
    unroll<size>([&](auto i) { A(i, k) = factors[i]; });
    A(k, k) = lanesOf(0.0) - inverse;
    return pivot;
}

}  // namespace

SymmetricLanes::SymmetricLanes(const StateMatrix& first, const StateMatrix& second) {
    unroll<size>([&](auto i) {
        unroll<i + 1>([&](auto j) {
            (*this)(i, j) = Lanes{first.coeff(i, j), second.coeff(i, j)};
        });
    });
}

SymmetricLanes& SymmetricLanes::operator+=(const SymmetricLanes& other) {
    unroll<count>([&](auto k) { elements_[k] = elements_[k] + other.elements_[k]; });
    return *this;
}

SymmetricLanes& SymmetricLanes::operator-=(const SymmetricLanes& other) {
    unroll<count>([&](auto k) { elements_[k] = elements_[k] - other.elements_[k]; });
    return *this;
}

SymmetricLanes::Vector SymmetricLanes::operator*(const Vector& x) const {
    Vector product;
    unroll<size>([&](auto i) {
        Lanes sum = (*this)(i, 0) * x[0];
        unroll<size - 1>([&](auto j) { sum = sum + (*this)(i, j + 1) * x[j + 1]; });
        product[i] = sum;
    });
    return product;
}

void SymmetricLanes::copyTo(StateMatrix& first, StateMatrix& second) const {
    unroll<size>([&](auto j) {
        unroll<size>([&](auto i) {
            const Lanes element = (*this)(i, j);
            first.coeffRef(i, j) = element[0];
            second.coeffRef(i, j) = element[1];
        });
    });
}

IntLanes SymmetricLanes::sweep(double sign) {
    const Lanes zero = lanesOf(0.0);
    IntLanes definite = lanesOf(yes);
    unroll<size>(
        [&](auto k) { definite = definite & (zero < lanesOf(sign) * sweepRow<k>(*this)); });
    return definite;
}

IntLanes areSymmetric(const StateMatrix& first, const StateMatrix& second) {
    IntLanes differ = lanesOf(std::int64_t{0});
    unroll<size>([&](auto i) {
        unroll<i>([&](auto j) {
            differ = differ | (Lanes{first.coeff(i, j), second.coeff(i, j)} !=
                               Lanes{first.coeff(j, i), second.coeff(j, i)});
        });
    });
    if (anyOf(differ)) {
        return IntLanes{isSymmetricUpToRounding(first), isSymmetricUpToRounding(second)};
    }
    return lanesOf(yes);
}

}  // namespace Veskar
