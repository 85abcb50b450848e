// SPDX-License-Identifier: Apache-2.0
#include "gating/CoarseGate.h"
#include "support/Constants.h"
#include "support/RandomEstimates.h"
#include "support/TrackFactory.h"

#include <cmath>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::CoarseGate;
using Veskar::StateMatrix;
using Veskar::Track;

namespace {

using VeskarTest::infinite;
using VeskarTest::nan;

Track makeTrackAt(const Veskar::StateVector& x, const StateMatrix& P) {
    return *makeTrack(Veskar::Source::Radar, 1, {x, P});
}

bool areFar(const CoarseGate& coarseGate, const Track& a, const Track& b) {
    return CoarseGate::areFar(coarseGate.marginalsOf(a), coarseGate.marginalsOf(b));
}

/// @return a covariance with standard deviations from 10^-spread to 10^spread and correlations up
///         to nearly one
StateMatrix drawCovariance(RandomEstimates& random, double spread) {
    StateMatrix P = random.covariance();
    if (random.integer(0, 1) == 0) {
        const double correlation = 1.0 - std::pow(10.0, random.uniform(-8.0, -0.5));
        P(1, 0) = P(0, 1) = correlation * std::sqrt(P(0, 0) * P(1, 1));
    }
    for (int i = 0; i < 6; ++i) {
        const double scale = std::pow(10.0, random.uniform(-spread, spread));
        P.row(i) *= scale;
        P.col(i) *= scale;
    }
    return P;
}

/// @return a track at a distance of a few standard deviations from another one in some components
Track drawNeighbour(RandomEstimates& random, const Track& track, const StateMatrix& P,
                    double distance) {
    Track neighbour = makeTrackAt(track.state, P);
    const StateMatrix S = track.covariance + P;
    for (int i = 0; i < 6; ++i) {
        if (random.integer(0, 2) == 0) {
            neighbour.state[i] += random.uniform(-3.0, 3.0) * distance * std::sqrt(S(i, i));
        }
    }
    return neighbour;
}

class CoarseGateModes : public testing::TestWithParam<bool> {};

// The reference is the distance computed by the gate, including its rounding.
TEST_P(CoarseGateModes, NeverCallAPairFarThatIsInsideTheGate) {
    const bool positionsOnly = GetParam();
    RandomEstimates random(41);
    int far = 0;
    int inside = 0;
    for (int k = 0; k < 20000; ++k) {
        const double gate = std::pow(10.0, random.uniform(-2.0, 2.0));
        const double spread = random.uniform(0.0, 4.0);
        const CoarseGate coarseGate(positionsOnly, gate);
        const Track a = makeTrackAt(random.state(), drawCovariance(random, spread));
        const Track b = drawNeighbour(random, a, drawCovariance(random, spread), gate);
        const double distance =
            positionsOnly ? a.positionStatisticalDistance(b) : a.statisticalDistance(b);
        inside += distance < gate ? 1 : 0;
        if (areFar(coarseGate, a, b)) {
            ++far;
            ASSERT_FALSE(distance < gate) << "pair " << k;
        }
    }
    EXPECT_GT(far, 2000);
    EXPECT_GT(inside, 1000);
}

// Covariances for which the bound does not hold, or may be violated by rounding.
TEST_P(CoarseGateModes, DoNotTrustCovariancesThatAreNotClearlyPositiveDefinite) {
    const CoarseGate coarseGate(GetParam(), 1.0);
    const StateMatrix identity = StateMatrix::Identity();
    Veskar::StateVector x = Veskar::StateVector::Zero();
    const Track origin = makeTrackAt(x, identity);
    x[2] = 1e6;
    const auto isFar = [&](const StateMatrix& P) {
        return areFar(coarseGate, origin, makeTrackAt(x, P));
    };
    EXPECT_TRUE(isFar(identity));
    EXPECT_FALSE(isFar(-identity));
    EXPECT_FALSE(isFar(StateMatrix::Zero()));
    EXPECT_FALSE(isFar(StateMatrix::Ones()));
    EXPECT_FALSE(isFar(1e60 * identity));
    EXPECT_FALSE(isFar(1e-60 * identity));
    const auto with = [&](int i, int j, double value) {
        StateMatrix P = identity;
        P(i, j) = value;
        return P;
    };
    for (const double value : {0.0, -1.0, nan, infinite, 1e11, 1e-11}) {
        EXPECT_FALSE(isFar(with(4, 4, value))) << value;
    }
    for (const double value : {1e-6, 0.5, nan, infinite}) {
        EXPECT_FALSE(isFar(with(0, 4, value))) << value;  // not symmetric
        EXPECT_FALSE(isFar(with(4, 2, value))) << value;
    }
    StateMatrix correlated = identity;
    correlated(0, 4) = correlated(4, 0) = 0.99999;
    EXPECT_TRUE(isFar(correlated));
    correlated(0, 4) = correlated(4, 0) = 0.999999;
    EXPECT_FALSE(isFar(correlated));
    correlated(0, 4) = correlated(4, 0) = 1.5;
    EXPECT_FALSE(isFar(correlated));
}

TEST_P(CoarseGateModes, TrustRoundingAsymmetry) {
    const CoarseGate coarseGate(GetParam(), 1.0);
    StateMatrix P = StateMatrix::Identity();
    P(0, 2) = 0.5;
    P(2, 0) = 0.5 + 1e-15;
    Veskar::StateVector x = Veskar::StateVector::Zero();
    const Track origin = makeTrackAt(x, P);
    x[0] = 100.0;
    EXPECT_TRUE(areFar(coarseGate, origin, makeTrackAt(x, P)));
}

TEST_P(CoarseGateModes, IgnoreStatesWithoutValue) {
    const CoarseGate coarseGate(GetParam(), 1.0);
    const StateMatrix identity = StateMatrix::Identity();
    const Track origin = makeTrackAt(Veskar::StateVector::Zero(), identity);
    for (const double value : {nan, infinite, -infinite, 1e200}) {
        Veskar::StateVector x = Veskar::StateVector::Zero();
        x[0] = value;
        EXPECT_FALSE(areFar(coarseGate, origin, makeTrackAt(x, identity))) << value;
        x[4] = 100.0;
        EXPECT_TRUE(areFar(coarseGate, origin, makeTrackAt(x, identity))) << value;
    }
}

TEST_P(CoarseGateModes, LeaveGatesOutsideTheRangeOfNumbersAlone) {
    const StateMatrix identity = StateMatrix::Identity();
    const Track origin = makeTrackAt(Veskar::StateVector::Zero(), identity);
    const Track other = makeTrackAt(Veskar::StateVector::Constant(1e3), identity);
    for (const double gate : {nan, infinite, 0.0, 1e-30, 1e200}) {
        EXPECT_FALSE(areFar(CoarseGate(GetParam(), gate), origin, other)) << gate;
    }
    EXPECT_TRUE(areFar(CoarseGate(GetParam(), 5.0), origin, other));
}

TEST_P(CoarseGateModes, AskForTwiceTheSquaredGate) {
    const CoarseGate coarseGate(GetParam(), 3.0);
    const StateMatrix identity = StateMatrix::Identity();
    const Track origin = makeTrackAt(Veskar::StateVector::Zero(), identity);
    Veskar::StateVector x = Veskar::StateVector::Zero();
    x[2] = 5.99;  // 2 * 3^2 * (1 + 1) = 6^2
    EXPECT_FALSE(areFar(coarseGate, origin, makeTrackAt(x, identity)));
    x[2] = 6.01;
    EXPECT_TRUE(areFar(coarseGate, origin, makeTrackAt(x, identity)));
}

INSTANTIATE_TEST_SUITE_P(WholeStatesAndPositions, CoarseGateModes, testing::Bool());

TEST(CoarseGate, ComparesRatesOnlyInWholeStates) {
    const StateMatrix identity = StateMatrix::Identity();
    const Track origin = makeTrackAt(Veskar::StateVector::Zero(), identity);
    for (const int rate : {1, 3, 5}) {
        Veskar::StateVector x = Veskar::StateVector::Zero();
        x[rate] = 100.0;
        EXPECT_TRUE(areFar(CoarseGate(false, 1.0), origin, makeTrackAt(x, identity)));
        EXPECT_FALSE(areFar(CoarseGate(true, 1.0), origin, makeTrackAt(x, identity)));
    }
}

TEST(CoarseGate, JudgesPositionsByTheirOwnCovariance) {
    StateMatrix P = StateMatrix::Identity();
    P(1, 1) = -1.0;
    Veskar::StateVector x = Veskar::StateVector::Zero();
    const Track origin = makeTrackAt(x, P);
    x[0] = 100.0;
    EXPECT_TRUE(areFar(CoarseGate(true, 1.0), origin, makeTrackAt(x, P)));
    EXPECT_FALSE(areFar(CoarseGate(false, 1.0), origin, makeTrackAt(x, P)));
}

}  // namespace
