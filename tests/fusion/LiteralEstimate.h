// SPDX-License-Identifier: Apache-2.0
// Dense arithmetic of six-component estimates in plain loops, as a reference.
#pragma once

#include <array>
#include <cstddef>

namespace VeskarTest::Literal {

template <std::size_t N>
using Vector = std::array<double, N>;
template <std::size_t N>
using Matrix = std::array<Vector<N>, N>;
using Vector6 = Vector<6>;
using Matrix6 = Matrix<6>;

/// @return a + sign b
Vector6 sum(const Vector6& a, double sign, const Vector6& b);
/// @return A + sign B
Matrix6 sum(const Matrix6& A, double sign, const Matrix6& B);
/// @return A x
Vector6 product(const Matrix6& A, const Vector6& x);
/// @return A B
Matrix6 product(const Matrix6& A, const Matrix6& B);
/// @return the transpose of A
Matrix6 transposed(const Matrix6& A);
/// @return A^-1 by Gauss-Jordan elimination with partial pivoting
Matrix6 inverse(Matrix6 A);
/// @return sqrt(d' S^-1 d) by Gaussian elimination with partial pivoting
template <std::size_t N>
double mahalanobis(const Vector<N>& d, Matrix<N> S);

}  // namespace VeskarTest::Literal
