// SPDX-License-Identifier: Apache-2.0
#include <veskar/SystemTrack.h>

#include "support/EigenMatchers.h"
#include "support/TrackFactory.h"

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::Source;

TEST(SystemTrackState, FusingAnEqualCovarianceHalvesItAndMeetsInTheMiddle) {
    RandomEstimates random(1);
    const Estimate first = random.estimate();
    const Estimate second = {random.state(), first.P};
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, first));
    system->updateState(makeTrack(Source::VideoObject, 1, second));
    EXPECT_THAT(system->covariance, IsApprox(Veskar::StateMatrix(0.5 * first.P), 1e-12));
    EXPECT_THAT(system->state, IsApprox(Veskar::StateVector(0.5 * (first.x + second.x)), 1e-12));
    system->pruneSensorTracksByIdx(Source::VideoObject, 1);
    EXPECT_THAT(system->covariance, IsApprox(first.P, 1e-12));
    EXPECT_THAT(system->state, IsApprox(first.x, 1e-12));
}
