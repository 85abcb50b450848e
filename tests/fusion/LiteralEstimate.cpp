// SPDX-License-Identifier: Apache-2.0
#include "fusion/LiteralEstimate.h"

#include <cmath>
#include <utility>

namespace VeskarTest::Literal {
namespace {

/// Swaps the row with the largest element of a column up, in the matrix and in the right side.
template <typename Rows, typename RightSide>
void pivot(Rows& A, RightSide& right, std::size_t column) {
    std::size_t best = column;
    for (std::size_t row = column + 1; row < A.size(); ++row) {
        if (std::abs(A[row][column]) > std::abs(A[best][column])) {
            best = row;
        }
    }
    std::swap(A[column], A[best]);
    std::swap(right[column], right[best]);
}

}  // namespace

Vector6 sum(const Vector6& a, double sign, const Vector6& b) {
    Vector6 c{};
    for (std::size_t i = 0; i < 6; ++i) {
        c[i] = a[i] + sign * b[i];
    }
    return c;
}

Matrix6 sum(const Matrix6& A, double sign, const Matrix6& B) {
    Matrix6 C{};
    for (std::size_t i = 0; i < 6; ++i) {
        C[i] = sum(A[i], sign, B[i]);
    }
    return C;
}

Vector6 product(const Matrix6& A, const Vector6& x) {
    Vector6 y{};
    for (std::size_t i = 0; i < 6; ++i) {
        for (std::size_t k = 0; k < 6; ++k) {
            y[i] += A[i][k] * x[k];
        }
    }
    return y;
}

Matrix6 product(const Matrix6& A, const Matrix6& B) {
    Matrix6 C{};
    for (std::size_t i = 0; i < 6; ++i) {
        for (std::size_t j = 0; j < 6; ++j) {
            for (std::size_t k = 0; k < 6; ++k) {
                C[i][j] += A[i][k] * B[k][j];
            }
        }
    }
    return C;
}

Matrix6 transposed(const Matrix6& A) {
    Matrix6 B{};
    for (std::size_t i = 0; i < 6; ++i) {
        for (std::size_t j = 0; j < 6; ++j) {
            B[i][j] = A[j][i];
        }
    }
    return B;
}

Matrix6 inverse(Matrix6 A) {
    Matrix6 B{};
    for (std::size_t i = 0; i < 6; ++i) {
        B[i][i] = 1.0;
    }
    for (std::size_t column = 0; column < 6; ++column) {
        pivot(A, B, column);
        const double scale = A[column][column];
        for (std::size_t k = 0; k < 6; ++k) {
            A[column][k] /= scale;
            B[column][k] /= scale;
        }
        for (std::size_t row = 0; row < 6; ++row) {
            if (row != column) {
                const double factor = A[row][column];
                A[row] = sum(A[row], -factor, A[column]);
                B[row] = sum(B[row], -factor, B[column]);
            }
        }
    }
    return B;
}

template <std::size_t N>
double mahalanobis(const Vector<N>& d, Matrix<N> S) {
    Vector<N> y = d;
    for (std::size_t column = 0; column < N; ++column) {
        pivot(S, y, column);
        for (std::size_t row = column + 1; row < N; ++row) {
            const double factor = S[row][column] / S[column][column];
            for (std::size_t k = column; k < N; ++k) {
                S[row][k] -= factor * S[column][k];
            }
            y[row] -= factor * y[column];
        }
    }
    double square = 0.0;
    for (std::size_t i = N; i-- > 0;) {
        for (std::size_t k = i + 1; k < N; ++k) {
            y[i] -= S[i][k] * y[k];
        }
        y[i] /= S[i][i];
        square += d[i] * y[i];
    }
    return std::sqrt(square);
}

template double mahalanobis<3>(const Vector<3>& d, Matrix<3> S);
template double mahalanobis<6>(const Vector<6>& d, Matrix<6> S);

}  // namespace VeskarTest::Literal
