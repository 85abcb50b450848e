// SPDX-License-Identifier: Apache-2.0
#include <veskar/Estimation.h>

#include "support/Constants.h"
#include "support/EigenMatchers.h"
#include "support/ExtendedAlgebra.h"

#include <cmath>
#include <limits>

#include <Eigen/LU>
#include <gtest/gtest.h>

namespace {

using VeskarTest::nan;

using Veskar::constantVelocity;
using Veskar::logPDF;
using Veskar::StateMatrix;
using Veskar::StateVector;
using Veskar::statisticalDistance;
using VeskarTest::Estimate;
using VeskarTest::exactDistance;
using VeskarTest::ExtendedEstimate;
using VeskarTest::ExtendedMatrix;
using VeskarTest::IsNearRelative;
using VeskarTest::RandomEstimates;

constexpr double twoPiToTheSixth = 61528.90838881947;

double distance(const Estimate& a, const Estimate& b) {
    return statisticalDistance(a.x, a.P, b.x, b.P);
}

double score(const Estimate& a, const Estimate& b) {
    return logPDF(a.x, a.P, b.x, b.P);
}

TEST(ConstantVelocity, IsTheIdentityOverNoTime) {
    EXPECT_EQ(constantVelocity(0.0), StateMatrix::Identity());
}

TEST(ConstantVelocity, MovesTheFirstTwoPositionsOnly) {
    for (const double dt : {0.04, 2.5, -1.0}) {
        StateMatrix expected = StateMatrix::Identity();
        expected(0, 1) = dt;
        expected(2, 3) = dt;
        EXPECT_EQ(constantVelocity(dt), expected);
    }
}

TEST(StatisticalDistance, IsTheDistanceAndNotItsSquare) {
    // The variances add up to 4 each: a difference of (6, 8) is (3, 4) standard deviations.
    StateVector x = StateVector::Zero();
    x[0] = 6.0;
    x[4] = -8.0;
    const StateMatrix P1 = StateMatrix::Identity();
    const StateMatrix P2 = 3.0 * StateMatrix::Identity();
    EXPECT_DOUBLE_EQ(statisticalDistance(x, P1, StateVector::Zero(), P2), 5.0);
}

TEST(StatisticalDistance, WeighsEveryComponent) {
    for (int i = 0; i < 6; ++i) {
        StateVector x = StateVector::Zero();
        x[i] = 3.0;
        StateMatrix P = StateMatrix::Identity();
        P(i, i) = 8.0;
        EXPECT_DOUBLE_EQ(statisticalDistance(x, P, StateVector::Zero(), StateMatrix::Identity()),
                         1.0);
    }
}

TEST(StatisticalDistance, EqualsTheFormulaInExtendedPrecision) {
    RandomEstimates random(201);
    for (int i = 0; i < 1000; ++i) {
        const Estimate a = random.estimate();
        const Estimate b = random.estimate();
        EXPECT_THAT(distance(a, b),
                    IsNearRelative(exactDistance(ExtendedEstimate(a), ExtendedEstimate(b)), 1e-12));
    }
}

TEST(StatisticalDistance, AgreesWithTheGeneralDecomposition) {
    RandomEstimates random(202);
    for (int i = 0; i < 1000; ++i) {
        const Estimate a = random.estimate();
        const Estimate b = random.estimate();
        const StateVector d = a.x - b.x;
        const StateMatrix S = a.P + b.P;
        EXPECT_THAT(distance(a, b),
                    IsNearRelative(std::sqrt(d.dot(S.partialPivLu().solve(d))), 1e-12));
    }
}

TEST(StatisticalDistance, IsTheSameBothWays) {
    RandomEstimates random(203);
    for (int i = 0; i < 100; ++i) {
        const Estimate a = random.estimate();
        const Estimate b = random.estimate();
        EXPECT_EQ(distance(a, b), distance(b, a));
    }
}

TEST(StatisticalDistance, DoesNotDependOnTheUnits) {
    RandomEstimates random(204);
    for (int i = 0; i < 100; ++i) {
        const Estimate a = random.estimate();
        const Estimate b = random.estimate();
        StateVector units;
        for (Eigen::Index j = 0; j < 6; ++j) {
            units[j] = std::pow(10.0, random.uniform(-2.0, 2.0));
        }
        const StateMatrix U = units.asDiagonal();
        EXPECT_THAT(distance({U * a.x, U * a.P * U}, {U * b.x, U * b.P * U}),
                    IsNearRelative(distance(a, b), 1e-12));
    }
}

TEST(StatisticalDistance, OfEqualStatesIsZero) {
    RandomEstimates random(205);
    const Estimate a = random.estimate();
    EXPECT_EQ(distance(a, {a.x, random.covariance()}), 0.0);
}

TEST(StatisticalDistance, OfANegativeQuadraticFormIsNotANumber) {
    EXPECT_TRUE(std::isnan(statisticalDistance(StateVector::Ones(), -StateMatrix::Identity(),
                                               StateVector::Zero(), StateMatrix::Zero())));
}

TEST(StatisticalDistance, OfASingularSumFailsEveryGate) {
    RandomEstimates random(206);
    const StateVector x = random.state();
    for (int i = 0; i < 6; ++i) {
        StateMatrix P = StateMatrix::Identity();
        P(i, i) = 0.0;
        const double singular = statisticalDistance(x, P, StateVector::Zero(), P);
        EXPECT_FALSE(singular < std::numeric_limits<double>::max()) << "component " << i;
    }
    const StateMatrix none = StateMatrix::Zero();
    EXPECT_TRUE(std::isnan(statisticalDistance(x, none, x, none)));
}

TEST(StatisticalDistance, CarriesNotANumberOn) {
    RandomEstimates random(207);
    const Estimate sound = random.estimate();
    for (Eigen::Index i = 0; i < 6; ++i) {
        Estimate broken = random.estimate();
        broken.x[i] = nan;
        EXPECT_TRUE(std::isnan(distance(broken, sound))) << "state " << i;
        EXPECT_TRUE(std::isnan(distance(sound, broken))) << "state " << i;
    }
    for (Eigen::Index i = 0; i < 36; ++i) {
        Estimate broken = random.estimate();
        broken.P.data()[i] = nan;
        EXPECT_TRUE(std::isnan(distance(broken, sound))) << "covariance " << i;
        EXPECT_TRUE(std::isnan(score(broken, sound))) << "covariance " << i;
    }
}

TEST(LogPDF, SubtractsTheDistanceAndNotHalfItsSquare) {
    StateVector x = StateVector::Zero();
    x[1] = 3.0;
    const StateMatrix half = 0.5 * StateMatrix::Identity();
    EXPECT_DOUBLE_EQ(logPDF(x, half, StateVector::Zero(), half),
                     -0.5 * std::log(twoPiToTheSixth) - 3.0);
}

TEST(LogPDF, OfEqualStatesIsTheNormalisation) {
    RandomEstimates random(208);
    const Estimate a = random.estimate();
    const StateMatrix P = random.covariance();
    const double det = StateMatrix(a.P + P).fullPivLu().determinant();
    EXPECT_THAT(score(a, {a.x, P}), IsNearRelative(-0.5 * std::log(twoPiToTheSixth * det), 1e-12));
}

TEST(LogPDF, EqualsTheFormulaInExtendedPrecision) {
    RandomEstimates random(209);
    const long double twoPi = 2.0L * std::acos(-1.0L);
    for (int i = 0; i < 1000; ++i) {
        const Estimate a = random.estimate();
        const Estimate b = random.estimate();
        const ExtendedMatrix S = (a.P + b.P).cast<long double>();
        const long double det = S.fullPivLu().determinant();
        const auto normalisation =
            static_cast<double>(-0.5L * std::log(std::pow(twoPi, 6.0L) * det));
        const double expected =
            normalisation - exactDistance(ExtendedEstimate(a), ExtendedEstimate(b));
        EXPECT_NEAR(score(a, b), expected, 1e-12 * (std::abs(normalisation) + 1.0));
    }
}

TEST(LogPDF, OfANegativeDeterminantIsNotANumber) {
    StateMatrix P = StateMatrix::Identity();
    P(5, 5) = -1.0;
    const StateVector x = StateVector::Zero();
    EXPECT_EQ(statisticalDistance(x, P, x, StateMatrix::Zero()), 0.0);
    EXPECT_TRUE(std::isnan(logPDF(x, P, x, StateMatrix::Zero())));
}

TEST(LogPDF, OfASingularSumIsNotFinite) {
    StateMatrix P = StateMatrix::Identity();
    P(5, 5) = 0.0;
    EXPECT_FALSE(std::isfinite(logPDF(StateVector::Ones(), P, StateVector::Zero(), P)));
}

}  // namespace
