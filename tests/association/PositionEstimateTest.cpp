// SPDX-License-Identifier: Apache-2.0
#include "association/PositionEstimate.h"
#include "support/RandomEstimates.h"
#include "support/TrackFactory.h"

#include <cmath>

#include <gtest/gtest.h>

namespace VeskarTest {
namespace {

using Veskar::PositionEstimate;
using Veskar::Source;

TEST(PositionEstimate, HasTheDistanceOfTheTracks) {
    RandomEstimates random(3);
    for (int round = 0; round < 1000; ++round) {
        const auto a = makeTrack(Source::Radar, 1, random.estimate());
        const auto b = makeTrack(Source::VideoObject, 2, random.estimate());
        const double distance = a->positionStatisticalDistance(*b);
        EXPECT_NEAR(squaredDistance(PositionEstimate(*a), PositionEstimate(*b)),
                    distance * distance, 1e-9 * (1.0 + distance * distance));
    }
}

TEST(PositionEstimate, HasNoFiniteDistanceWithoutACovariance) {
    const auto a = makeTrack(Source::Radar, 1);
    a->covariance.setZero();
    a->state[0] = 1.0;
    const PositionEstimate position(*a);
    const PositionEstimate origin(
        *makeTrack(Source::Radar, 1, {Veskar::StateVector::Zero(), Veskar::StateMatrix::Zero()}));
    EXPECT_FALSE(std::isfinite(squaredDistance(position, origin)));
}

}  // namespace
}  // namespace VeskarTest
