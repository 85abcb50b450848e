// SPDX-License-Identifier: Apache-2.0
#include "support/Constants.h"
#include "support/EigenMatchers.h"
#include "support/ExtendedAlgebra.h"
#include "track/SymmetricLanes.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace {

using Veskar::areSymmetric;
using Veskar::IntLanes;
using Veskar::Lanes;
using Veskar::StateMatrix;
using Veskar::SymmetricLanes;
using VeskarTest::exactInverse;
using VeskarTest::ExtendedMatrix;
using VeskarTest::IsApprox;
using VeskarTest::nan;
using VeskarTest::RandomEstimates;

struct Swept {
    StateMatrix first;
    StateMatrix second;
    bool firstIsDefinite;
    bool secondIsDefinite;
};

Swept sweep(const StateMatrix& first, const StateMatrix& second, double sign = 1.0) {
    SymmetricLanes lanes(first, second);
    const IntLanes definite = lanes.sweep(sign);
    Swept result{{}, {}, definite[0] != 0, definite[1] != 0};
    lanes.copyTo(result.first, result.second);
    return result;
}

StateMatrix negatedInverse(const StateMatrix& P) {
    return -exactInverse<ExtendedMatrix>(P.cast<long double>()).cast<double>();
}

StateMatrix indefinite() {
    StateMatrix A = StateMatrix::Identity();
    A(4, 5) = A(5, 4) = 2.0;
    return A;
}

TEST(SymmetricLanes, SweepingGivesTheNegatedInverses) {
    RandomEstimates random(401);
    for (int i = 0; i < 500; ++i) {
        const StateMatrix first = random.covariance();
        const StateMatrix second = random.covariance();
        const Swept swept = sweep(first, second);
        EXPECT_TRUE(swept.firstIsDefinite && swept.secondIsDefinite);
        EXPECT_THAT(swept.first, IsApprox(negatedInverse(first), 1e-12));
        EXPECT_THAT(swept.second, IsApprox(negatedInverse(second), 1e-12));
    }
}

TEST(SymmetricLanes, SweepingAgainGivesTheMatricesBack) {
    RandomEstimates random(402);
    const StateMatrix first = random.covariance();
    const StateMatrix second = random.covariance();
    const Swept once = sweep(first, second);
    const Swept twice = sweep(once.first, once.second, -1.0);
    EXPECT_TRUE(twice.firstIsDefinite && twice.secondIsDefinite);
    EXPECT_THAT(twice.first, IsApprox(first, 1e-12));
    EXPECT_THAT(twice.second, IsApprox(second, 1e-12));
}

TEST(SymmetricLanes, ALaneDoesNotDependOnTheOtherOne) {
    RandomEstimates random(403);
    const StateMatrix a = random.covariance();
    const StateMatrix b = random.covariance();
    EXPECT_EQ(sweep(a, b).first, sweep(a, a).first);
    EXPECT_EQ(sweep(b, a).second, sweep(a, a).second);
    EXPECT_EQ(sweep(a, StateMatrix::Constant(nan)).first, sweep(a, a).first);
}

TEST(SymmetricLanes, SweepingTellsWhichLaneIsDefinite) {
    const StateMatrix I = StateMatrix::Identity();
    EXPECT_FALSE(sweep(indefinite(), I).firstIsDefinite);
    EXPECT_TRUE(sweep(indefinite(), I).secondIsDefinite);
    EXPECT_FALSE(sweep(I, StateMatrix::Zero()).secondIsDefinite);
    EXPECT_FALSE(sweep(I, StateMatrix::Constant(nan)).secondIsDefinite);
    EXPECT_FALSE(sweep(-I, I, 1.0).firstIsDefinite);
    EXPECT_TRUE(sweep(-I, I, -1.0).firstIsDefinite);
    EXPECT_FALSE(sweep(-I, I, -1.0).secondIsDefinite);
}

TEST(SymmetricLanes, WhatIsNotConnectedStaysExactlyZero) {
    RandomEstimates random(404);
    StateMatrix P = random.covariance();
    for (const int i : {0, 2, 4}) {
        for (const int j : {1, 3, 5}) {
            P(i, j) = P(j, i) = 0.0;
        }
    }
    const StateMatrix swept = sweep(P, P).first;
    for (const int i : {0, 2, 4}) {
        for (const int j : {1, 3, 5}) {
            EXPECT_EQ(swept(i, j), 0.0);
            EXPECT_EQ(swept(j, i), 0.0);
        }
    }
}

TEST(SymmetricLanes, MultipliesFromTheFirstColumnToTheLast) {
    // Each 1 is lost beside the large numbers unless these cancel first.
    StateMatrix A = StateMatrix::Zero();
    A.row(5) << 1.0, 1e17, -1e17, 1.0, 1.0, 0.0;
    SymmetricLanes::Vector ones;
    ones.fill(Lanes{1.0, 2.0});
    const Lanes product = (SymmetricLanes(A, -A) * ones)[5];
    EXPECT_EQ(product[0], 2.0);
    EXPECT_EQ(product[1], -4.0);
}

TEST(SymmetricLanes, AddAndSubtractElementByElement) {
    RandomEstimates random(405);
    const StateMatrix a = random.covariance();
    const StateMatrix b = random.covariance();
    SymmetricLanes sum(a, b);
    sum += SymmetricLanes(b, b);
    sum -= SymmetricLanes(a, a);
    StateMatrix first;
    StateMatrix second;
    sum.copyTo(first, second);
    EXPECT_EQ(first, StateMatrix(a + b - a));
    EXPECT_EQ(second, StateMatrix(b + b - a));
}

TEST(AreSymmetric, AllowsForRoundingMeasuredByTheDiagonal) {
    StateMatrix P = StateMatrix::Identity();
    P(1, 1) = 1e-6;
    const auto shifted = [&P](double difference) {
        StateMatrix A = P;
        A(0, 1) += difference;
        return A;
    };
    const IntLanes lanes = areSymmetric(shifted(0.9e-17), shifted(1.1e-17));
    EXPECT_NE(lanes[0], 0);
    EXPECT_EQ(lanes[1], 0);
    EXPECT_NE(areSymmetric(P, P)[0], 0);
    EXPECT_EQ(areSymmetric(shifted(nan), P)[0], 0);
    EXPECT_NE(areSymmetric(shifted(nan), P)[1], 0);
}

}  // namespace
