// SPDX-License-Identifier: Apache-2.0
#include "support/EigenMatchers.h"
#include "support/ExtendedAlgebra.h"
#include "track/LuSolve.h"

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

namespace {

using Veskar::solveFromRight;
using Veskar::StateMatrix;
using VeskarTest::exactInverse;
using VeskarTest::ExtendedMatrix;
using VeskarTest::HasNothingFinite;
using VeskarTest::IsApprox;
using VeskarTest::IsNearRelative;
using VeskarTest::RandomEstimates;
using RowVector = Eigen::Matrix<double, 1, 6>;

StateMatrix invert(StateMatrix A) {
    StateMatrix X = StateMatrix::Identity();
    solveFromRight(A, X);
    return X;
}

double determinant(StateMatrix A) {
    RowVector b = RowVector::Zero();
    return solveFromRight(A, b);
}

/// A matrix without any symmetry or dominant diagonal.
StateMatrix general(RandomEstimates& random) {
    StateMatrix A;
    for (Eigen::Index i = 0; i < A.size(); ++i) {
        A.data()[i] = random.uniform(-1.0, 1.0);
    }
    return A;
}

TEST(LuSolve, InvertsCovariances) {
    RandomEstimates random(101);
    for (int i = 0; i < 500; ++i) {
        const StateMatrix P = random.covariance();
        const StateMatrix expected =
            exactInverse<ExtendedMatrix>(P.cast<long double>()).cast<double>();
        EXPECT_THAT(invert(P), IsApprox(expected, 1e-12));
    }
}

TEST(LuSolve, InvertsMatricesWithoutSymmetry) {
    RandomEstimates random(102);
    for (int i = 0; i < 500; ++i) {
        const StateMatrix A = general(random);
        const Eigen::FullPivLU<ExtendedMatrix> exact(A.cast<long double>());
        // The error of any elimination grows with the condition number.
        const auto condition = static_cast<double>(1.0L / exact.rcond());
        EXPECT_THAT(invert(A), IsApprox(exact.inverse().cast<double>().eval(), 1e-15 * condition));
    }
}

TEST(LuSolve, SolvesForOneRow) {
    RandomEstimates random(103);
    for (int i = 0; i < 500; ++i) {
        StateMatrix A = random.covariance();
        const Eigen::Matrix<long double, 1, 6> b = random.state().transpose().cast<long double>();
        const RowVector expected =
            (b * exactInverse<ExtendedMatrix>(A.cast<long double>())).cast<double>();
        RowVector x = b.cast<double>();
        solveFromRight(A, x);
        EXPECT_THAT(x, IsApprox(expected, 1e-12));
    }
}

TEST(LuSolve, AnswersTheDeterminant) {
    RandomEstimates random(104);
    for (int i = 0; i < 500; ++i) {
        const StateMatrix A = general(random);
        const Eigen::FullPivLU<ExtendedMatrix> exact(A.cast<long double>());
        const auto condition = static_cast<double>(1.0L / exact.rcond());
        EXPECT_THAT(determinant(A),
                    IsNearRelative(static_cast<double>(exact.determinant()), 1e-15 * condition));
    }
}

TEST(LuSolve, ExchangesUndoEveryPermutationExactly) {
    std::array<int, 6> order;
    std::iota(order.begin(), order.end(), 0);
    do {
        StateMatrix A = StateMatrix::Zero();
        int inversions = 0;
        for (std::size_t i = 0; i < order.size(); ++i) {
            A(static_cast<Eigen::Index>(i), order[i]) = 1.0;
            inversions += static_cast<int>(
                std::count_if(order.begin() + static_cast<std::ptrdiff_t>(i), order.end(),
                              [&](int later) { return later < order[i]; }));
        }
        EXPECT_THAT(invert(A), IsApprox(StateMatrix(A.transpose()), 0.0));
        EXPECT_EQ(determinant(A), inversions % 2 == 0 ? 1.0 : -1.0);
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(LuSolve, ATinyPivotIsPassedOver) {
    // Elimination without pivoting loses the 1 beside 1e20 and yields (0, 1) instead of (1, 1).
    StateMatrix A = StateMatrix::Identity();
    A.topLeftCorner<2, 2>() << 1e-20, 1.0, 1.0, 1.0;
    RowVector x = RowVector::Zero();
    x.head<2>() << 1.0, 2.0;
    solveFromRight(A, x);
    EXPECT_DOUBLE_EQ(x[0], 1.0);
    EXPECT_DOUBLE_EQ(x[1], 1.0);
}

TEST(LuSolve, SingularMatricesHaveNoFiniteInverse) {
    EXPECT_THAT(invert(StateMatrix::Zero()), HasNothingFinite());
    for (int i = 0; i < 6; ++i) {
        StateMatrix A = StateMatrix::Identity();
        A(i, i) = 0.0;
        const StateMatrix X = invert(A);
        EXPECT_FALSE(X.allFinite()) << "component " << i;
    }
}

TEST(LuSolve, RowsThatAreTheSameMakeItSingular) {
    // A number times its rounded inverse is not always 1: the remainder in the second row must not
    // be taken for a pivot.
    for (int value = 1; value <= 1000; ++value) {
        StateMatrix A = StateMatrix::Identity();
        A(0, 0) = A(0, 4) = A(4, 0) = A(4, 4) = value;
        EXPECT_FALSE(invert(A).allFinite()) << value;
        EXPECT_EQ(determinant(A), 0.0) << value;
    }
}

TEST(LuSolve, AClearColumnIsLeftAsItIs) {
    // x1 has no equation; the following ones are still solved.
    StateMatrix A = 2.0 * StateMatrix::Identity();
    A(1, 1) = 0.0;
    RowVector x = RowVector::Ones();
    solveFromRight(A, x);
    EXPECT_EQ(x[1], std::numeric_limits<double>::infinity());
    EXPECT_EQ(x.tail<4>(), RowVector::Constant(0.5).tail<4>());
}

TEST(LuSolve, NotANumberSpreadsToTheWholeInverse) {
    RandomEstimates random(105);
    for (Eigen::Index i = 0; i < 36; ++i) {
        StateMatrix A = random.covariance();
        A.data()[i] = std::numeric_limits<double>::quiet_NaN();
        EXPECT_THAT(invert(A), HasNothingFinite()) << "element " << i;
    }
}

}  // namespace
