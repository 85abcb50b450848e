// SPDX-License-Identifier: Apache-2.0
#include "support/Constants.h"
#include "support/EigenMatchers.h"
#include "support/ExtendedAlgebra.h"
#include "support/TrackFactory.h"
#include "track/EstimateChange.h"

#include <memory>

#include <gtest/gtest.h>

namespace {

using Veskar::estimateAfter;
using Veskar::EstimateChange;
using Veskar::estimatesAfter;
using Veskar::FusedEstimate;
using Veskar::StateMatrix;
using Veskar::StateVector;
using Veskar::Track;
using VeskarTest::addInformation;
using VeskarTest::ExtendedEstimate;
using VeskarTest::HasNothingFinite;
using VeskarTest::IsApprox;
using VeskarTest::RandomEstimates;
using TrackPointer = std::shared_ptr<Track>;

TrackPointer trackOf(const StateVector& x, const StateMatrix& P) {
    VeskarTest::Report report;
    report.state = x;
    report.covariance = P;
    return VeskarTest::makeTrack(report);
}

TrackPointer randomTrack(RandomEstimates& random) {
    return trackOf(random.state(), random.covariance());
}

ExtendedEstimate exact(const Track& track) {
    return ExtendedEstimate(VeskarTest::Estimate{track.state, track.covariance});
}

TEST(EstimateChange, IsTheFormulaInExtendedPrecision) {
    RandomEstimates random(501);
    for (int i = 0; i < 500; ++i) {
        const TrackPointer track = randomTrack(random);
        const TrackPointer added = randomTrack(random);
        const FusedEstimate with = estimateAfter({track.get(), added.get(), nullptr});
        const ExtendedEstimate expected = addInformation(exact(*track), 1, exact(*added));
        EXPECT_THAT(with.x, IsApprox(expected.state(), 1e-12));
        EXPECT_THAT(with.P, IsApprox(expected.covariance(), 1e-12));
    }
}

TEST(EstimateChange, TakesOutWhatWasAdded) {
    RandomEstimates random(502);
    for (int i = 0; i < 100; ++i) {
        const TrackPointer track = randomTrack(random);
        const TrackPointer added = randomTrack(random);
        const TrackPointer next = randomTrack(random);
        const FusedEstimate with = estimateAfter({track.get(), added.get(), nullptr});
        const TrackPointer fused = trackOf(with.x, with.P);
        const FusedEstimate without = estimateAfter({fused.get(), nullptr, added.get()});
        EXPECT_THAT(without.x, IsApprox(track->state, 1e-10));
        EXPECT_THAT(without.P, IsApprox(track->covariance, 1e-10));
        const FusedEstimate replaced = estimateAfter({fused.get(), next.get(), added.get()});
        const ExtendedEstimate expected = addInformation(exact(*track), 1, exact(*next));
        EXPECT_THAT(replaced.x, IsApprox(expected.state(), 1e-10));
        EXPECT_THAT(replaced.P, IsApprox(expected.covariance(), 1e-10));
    }
}

TEST(EstimateChange, GivesTheSameBitsAloneAndBesideAnother) {
    RandomEstimates random(503);
    const TrackPointer track = randomTrack(random);
    const TrackPointer added = randomTrack(random);
    const EstimateChange change{track.get(), added.get(), nullptr};
    const TrackPointer otherTrack = randomTrack(random);
    const TrackPointer singular = trackOf(random.state(), StateMatrix::Zero());
    for (const TrackPointer& otherAdded : {randomTrack(random), singular}) {
        const EstimateChange other{otherTrack.get(), otherAdded.get(), nullptr};
        const FusedEstimate alone = estimateAfter(change);
        EXPECT_EQ(estimatesAfter({change, other})[0].x, alone.x);
        EXPECT_EQ(estimatesAfter({change, other})[0].P, alone.P);
        EXPECT_EQ(estimatesAfter({other, change})[1].x, alone.x);
        EXPECT_EQ(estimatesAfter({other, change})[1].P, alone.P);
    }
}

TEST(EstimateChange, NothingNewLeavesTheStateAsItIsToTheLastBit) {
    RandomEstimates random(504);
    for (int i = 0; i < 100; ++i) {
        const TrackPointer track = randomTrack(random);
        const TrackPointer report = randomTrack(random);
        EXPECT_EQ(estimateAfter({track.get(), report.get(), report.get()}).x, track->state);
        const TrackPointer same = trackOf(track->state, random.covariance());
        EXPECT_EQ(estimateAfter({track.get(), same.get(), nullptr}).x, track->state);
    }
}

TEST(EstimateChange, ThatMovesAStandingObjectGivesItNoVelocity) {
    StateVector x = StateVector::Zero();
    x[0] = 0.3;
    x[4] = 20.0;
    const StateMatrix P =
        StateVector{1e-4, 0.09, 2e-4, 0.07, 4.1, 2.3}.asDiagonal().toDenseMatrix();
    const TrackPointer track = trackOf(x, P);
    const TrackPointer previous = trackOf(x, P);
    track->predict(track->time + 0.1);
    previous->predict(previous->time + 0.1);
    x[0] = 0.31;
    x[4] = 19.7;
    const TrackPointer next = trackOf(x, P);
    const FusedEstimate after = estimateAfter({track.get(), next.get(), previous.get()});
    for (const int rate : {1, 3, 5}) {
        EXPECT_EQ(after.x[rate], 0.0);
    }
}

TEST(EstimateChange, CopesWithCovariancesThatAreNotSymmetric) {
    RandomEstimates random(505);
    const TrackPointer track = randomTrack(random);
    const TrackPointer added = randomTrack(random);
    added->covariance(0, 3) += 1e-3;
    const FusedEstimate with = estimateAfter({track.get(), added.get(), nullptr});
    const ExtendedEstimate expected = addInformation(exact(*track), 1, exact(*added));
    EXPECT_THAT(with.x, IsApprox(expected.state(), 1e-12));
    EXPECT_THAT(with.P, IsApprox(expected.covariance(), 1e-12));
}

TEST(EstimateChange, CopesWithInformationThatIsNotPositive) {
    RandomEstimates random(506);
    const TrackPointer track = randomTrack(random);
    const TrackPointer removed = trackOf(random.state(), 0.1 * track->covariance);
    const FusedEstimate without = estimateAfter({track.get(), nullptr, removed.get()});
    const ExtendedEstimate expected = addInformation(exact(*track), -1, exact(*removed));
    EXPECT_THAT(without.x, IsApprox(expected.state(), 1e-12));
    EXPECT_THAT(without.P, IsApprox(expected.covariance(), 1e-12));
}

TEST(EstimateChange, OfASingularCovarianceIsNotFinite) {
    RandomEstimates random(507);
    const TrackPointer track = randomTrack(random);
    const TrackPointer added = trackOf(random.state(), StateMatrix::Zero());
    const FusedEstimate with = estimateAfter({track.get(), added.get(), nullptr});
    EXPECT_THAT(with.x, HasNothingFinite());
    EXPECT_THAT(with.P, HasNothingFinite());
}

}  // namespace
