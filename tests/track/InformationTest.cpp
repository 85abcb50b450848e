// SPDX-License-Identifier: Apache-2.0
#include "support/EigenMatchers.h"
#include "support/ExtendedAlgebra.h"
#include "track/Information.h"

#include <gtest/gtest.h>

namespace {

using Veskar::Information;
using Veskar::StateMatrix;
using Veskar::StateVector;
using VeskarTest::addInformation;
using VeskarTest::Estimate;
using VeskarTest::ExtendedEstimate;
using VeskarTest::IsApprox;
using VeskarTest::RandomEstimates;

Information information(const Estimate& estimate) {
    return Information::fromEstimate(estimate.x, estimate.P);
}

Estimate estimate(const Information& information) {
    Estimate result;
    information.toEstimate(result.x, result.P);
    return result;
}

TEST(Information, OfAnEstimateTurnsBackIntoIt) {
    RandomEstimates random(301);
    for (int i = 0; i < 200; ++i) {
        const Estimate a = random.estimate();
        const Estimate back = estimate(information(a));
        EXPECT_THAT(back.x, IsApprox(a.x, 1e-12));
        EXPECT_THAT(back.P, IsApprox(a.P, 1e-12));
    }
}

TEST(Information, AddsAsTheFormulaInExtendedPrecision) {
    RandomEstimates random(302);
    for (int i = 0; i < 500; ++i) {
        const Estimate a = random.estimate();
        const Estimate b = random.estimate();
        Information sum = information(a);
        sum += information(b);
        const Estimate fused = estimate(sum);
        const ExtendedEstimate expected =
            addInformation(ExtendedEstimate(a), 1, ExtendedEstimate(b));
        EXPECT_THAT(fused.x, IsApprox(expected.state(), 1e-12));
        EXPECT_THAT(fused.P, IsApprox(expected.covariance(), 1e-12));
    }
}

TEST(Information, WhatWasAddedCanBeTakenOut) {
    RandomEstimates random(303);
    const Estimate a = random.estimate();
    Information sum = information(a);
    sum += information(random.estimate());
    const Estimate b = random.estimate();
    Information with = sum;
    with += information(b);
    with -= information(b);
    EXPECT_THAT(estimate(with).x, IsApprox(estimate(sum).x, 1e-12));
    EXPECT_THAT(estimate(with).P, IsApprox(estimate(sum).P, 1e-12));
}

TEST(Information, OfTwoScalarsWeighsByTheirPrecision) {
    // Variances 1 and 3: the mean is at a quarter of the distance, with variance 3/4.
    Information sum = Information::fromEstimate(StateVector::Zero(), StateMatrix::Identity());
    sum += Information::fromEstimate(StateVector::Constant(4.0), 3.0 * StateMatrix::Identity());
    const Estimate fused = estimate(sum);
    EXPECT_THAT(fused.x, IsApprox(StateVector::Constant(1.0).eval(), 1e-15));
    EXPECT_THAT(fused.P, IsApprox(StateMatrix(0.75 * StateMatrix::Identity()), 1e-15));
}

}  // namespace
