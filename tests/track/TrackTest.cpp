// SPDX-License-Identifier: Apache-2.0
#include <veskar/Track.h>
#include <veskar/Vocabulary.h>

#include "support/Constants.h"
#include "support/EigenMatchers.h"
#include "support/ExtendedAlgebra.h"
#include "support/TrackFactory.h"

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include <Eigen/LU>
#include <gtest/gtest.h>

namespace {

using VeskarTest::nan;

using Veskar::CoordinateSystem;
using Veskar::Source;
using Veskar::StateMatrix;
using Veskar::StateVector;
using Veskar::Track;
using VeskarTest::Estimate;
using VeskarTest::IsApprox;
using VeskarTest::IsCovariance;
using VeskarTest::IsNearRelative;
using VeskarTest::makeTrack;
using VeskarTest::RandomEstimates;

// The layout that separately compiled hosts rely on.
static_assert(alignof(Track) == 16);
static_assert(alignof(Veskar::StateVector) == 16 && sizeof(Veskar::StateVector) == 48);
static_assert(alignof(Veskar::StateMatrix) == 16 && sizeof(Veskar::StateMatrix) == 288);
static_assert(!StateMatrix::IsRowMajor);
static_assert(std::has_virtual_destructor_v<Track> && std::is_polymorphic_v<Track>);
static_assert(std::is_same_v<std::underlying_type_t<Source>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<CoordinateSystem>, std::int32_t>);
static_assert(std::is_convertible_v<Source, int>, "sources are a plain enumeration");
static_assert(Source::VideoObject == 0 && Source::VideoVura == 1 && Source::Radar == 2 &&
              Source::System == 3);
static_assert(CoordinateSystem::ImagePlaneRange == 2);
static_assert(std::is_same_v<decltype(Track::id), std::int32_t>);
static_assert(sizeof(SphericalCoordinate) == 3 * sizeof(double));

std::shared_ptr<Track> trackAt(double u, double v) {
    VeskarTest::Report report;
    report.state[0] = u;
    report.state[2] = v;
    return makeTrack(report);
}

std::shared_ptr<Track> trackMoving(double uRate, double vRate) {
    VeskarTest::Report report;
    report.state << 0.1, uRate, 0.2, vRate, 30.0, 5.0;
    return makeTrack(report);
}

/// A sensor track with a different value in every argument.
Track distinctTrack() {
    StateVector x;
    x << 1.0, 2.0, 3.0, 4.0, 5.0, 6.0;
    StateMatrix P = 7.0 * StateMatrix::Identity();
    P(0, 5) = 8.0;
    return {x,       P,    10.0,  21,    Source::Radar, CoordinateSystem::GroundPlane,
            "car",   0.25, "red", 0.375, "blue",        0.5,
            "green", 0.625};
}

TEST(Track, LiesInMemoryInTheOrderOfItsDeclaration) {
    const Track t(1);
    const std::vector<const void*> members = {&t.state,
                                              &t.covariance,
                                              &t.time,
                                              &t.startTime,
                                              &t.id,
                                              &t.source,
                                              &t.coordinateSystem,
                                              &t.className,
                                              &t.classProbability,
                                              &t.colorName,
                                              &t.colorProbability,
                                              &t.upperClothingColorName,
                                              &t.upperClothingColorProbability,
                                              &t.lowerClothingColorName,
                                              &t.lowerClothingColorProbability,
                                              &t.boundingBox,
                                              &t.coastingTime,
                                              &t.probability,
                                              &t.speed,
                                              &t.direction,
                                              &t.location,
                                              &t.geoLocation,
                                              &t.startPosition,
                                              &t.isConfident};
    EXPECT_THAT(members, testing::ElementsAreArray([&] {
                    auto sorted = members;
                    std::sort(sorted.begin(), sorted.end());
                    return sorted;
                }()));
}

TEST(Track, OfAnIdAloneIsEmpty) {
    const Track track(17);
    EXPECT_EQ(track.id, 17);
    EXPECT_EQ(track.state, StateVector::Zero());
    EXPECT_EQ(track.covariance, StateMatrix::Zero());
    EXPECT_EQ(track.time, 0.0);
    EXPECT_EQ(track.startTime, 0.0);
    EXPECT_EQ(track.source, Source::System);
    EXPECT_EQ(track.coordinateSystem, CoordinateSystem::ImagePlaneRange);
    for (const std::string* label :
         {&track.className, &track.colorName, &track.upperClothingColorName,
          &track.lowerClothingColorName}) {
        EXPECT_EQ(*label, "unknown");
    }
    for (const double probability :
         {track.classProbability, track.colorProbability, track.upperClothingColorProbability,
          track.lowerClothingColorProbability, track.probability, track.coastingTime}) {
        EXPECT_EQ(probability, 0.0);
    }
    EXPECT_EQ(track.boundingBox, Eigen::Vector4d::Zero());
    EXPECT_EQ(track.startPosition, Eigen::Vector2d::Zero());
    EXPECT_FALSE(track.speed.has_value());
    EXPECT_FALSE(track.direction.has_value());
    EXPECT_FALSE(track.location.has_value());
    EXPECT_FALSE(track.geoLocation.has_value());
    EXPECT_TRUE(track.isConfident);
}

TEST(Track, OfASensorTakesOverEveryArgument) {
    const Track track = distinctTrack();
    EXPECT_EQ(track.state[0], 1.0);
    EXPECT_EQ(track.state[5], 6.0);
    EXPECT_EQ(track.covariance(0, 0), 7.0);
    EXPECT_EQ(track.covariance(0, 5), 8.0);
    EXPECT_EQ(track.covariance(5, 0), 0.0);
    EXPECT_EQ(track.time, 10.0);
    EXPECT_EQ(track.startTime, 10.0);
    EXPECT_EQ(track.id, 21);
    EXPECT_EQ(track.source, Source::Radar);
    EXPECT_EQ(track.coordinateSystem, CoordinateSystem::GroundPlane);
    EXPECT_EQ(track.className, "car");
    EXPECT_EQ(track.classProbability, 0.25);
    EXPECT_EQ(track.colorName, "red");
    EXPECT_EQ(track.colorProbability, 0.375);
    EXPECT_EQ(track.upperClothingColorName, "blue");
    EXPECT_EQ(track.upperClothingColorProbability, 0.5);
    EXPECT_EQ(track.lowerClothingColorName, "green");
    EXPECT_EQ(track.lowerClothingColorProbability, 0.625);
    EXPECT_EQ(track.boundingBox, Eigen::Vector4d::Zero());
    EXPECT_EQ(track.coastingTime, 0.0);
    EXPECT_EQ(track.probability, 0.0);
    EXPECT_FALSE(track.speed.has_value());
    EXPECT_FALSE(track.direction.has_value());
    EXPECT_FALSE(track.location.has_value());
    EXPECT_FALSE(track.geoLocation.has_value());
    EXPECT_EQ(track.startPosition, Eigen::Vector2d(1.0, 3.0));
    EXPECT_TRUE(track.isConfident);
}

TEST(Track, AnswersItsMembers) {
    Track track = distinctTrack();
    EXPECT_EQ(track.getClassName(), "car");
    EXPECT_EQ(track.getClassProbability(), 0.25);
    EXPECT_EQ(track.getColorName(), "red");
    EXPECT_EQ(track.getColorProbability(), 0.375);
    EXPECT_EQ(track.getUpperClothingColorName(), "blue");
    EXPECT_EQ(track.getUpperClothingColorProbability(), 0.5);
    EXPECT_EQ(track.getLowerClothingColorName(), "green");
    EXPECT_EQ(track.getLowerClothingColorProbability(), 0.625);
    EXPECT_FALSE(track.getSpeed().has_value());
    EXPECT_FALSE(track.getDirection().has_value());
    EXPECT_FALSE(track.getLocation().has_value());
    EXPECT_FALSE(track.getGeoLocation().has_value());

    track.speed = 4.0;
    track.direction = Eigen::Vector2d(0.6, 0.8);
    track.location = SphericalCoordinate{50.0, 10.0, 1.0};
    track.geoLocation = Dbus::GeoLocation::Position{13.0, 55.0, 0.0, true};
    EXPECT_EQ(track.getSpeed(), 4.0);
    EXPECT_EQ(track.getDirection(), Eigen::Vector2d(0.6, 0.8));
    EXPECT_EQ(track.getLocation()->range, 50.0);
    EXPECT_EQ(track.getGeoLocation()->latitude, 55.0);
}

TEST(Track, OnlyVideoObjectsHaveAnAge) {
    for (const Source source : {Source::VideoVura, Source::Radar, Source::System}) {
        const auto track = makeTrack(source, 1);
        track->predict(12.0);
        EXPECT_EQ(track->getAge(), -1.0) << source;
    }
    const auto video = makeTrack(Source::VideoObject, 1);
    EXPECT_EQ(video->getAge(), 0.0);
    video->predict(12.0);
    EXPECT_EQ(video->getAge(), 2.0);
}

TEST(TrackPrediction, KeepsASymmetricCovarianceSymmetricToTheLastBit) {
    RandomEstimates random(211);
    for (int i = 0; i < 100; ++i) {
        const auto track = makeTrack(Source::Radar, 1, random.estimate());
        track->predict(track->time + random.uniform(-1.0, 1.0));
        EXPECT_EQ(track->covariance, track->covariance.transpose().eval());
    }
}

TEST(TrackPrediction, TakesACovarianceAsItIs) {
    RandomEstimates random(212);
    const auto track = makeTrack(Source::Radar, 1, random.estimate());
    for (Eigen::Index i = 0; i < track->covariance.size(); ++i) {
        track->covariance.data()[i] = random.uniform(-1.0, 1.0);
    }
    const StateMatrix F = Veskar::constantVelocity(0.3);
    const StateMatrix expected = F * track->covariance * F.transpose();
    track->predict(track->time + 0.3);
    EXPECT_THAT(track->covariance, IsApprox(expected, 1e-14));
}

TEST(TrackPrediction, IsTheConstantVelocityModel) {
    RandomEstimates random(401);
    for (int i = 0; i < 500; ++i) {
        const Estimate before = random.estimate();
        const auto track = makeTrack(Source::Radar, 1, before);
        const double dt = random.uniform(-2.0, 2.0);
        track->predict(track->time + dt);
        const double exactDt = track->time - track->startTime;
        const StateMatrix F = Veskar::constantVelocity(exactDt);
        EXPECT_THAT(track->state, IsApprox(StateVector(F * before.x), 1e-15));
        EXPECT_THAT(track->covariance, IsApprox(StateMatrix(F * before.P * F.transpose()), 1e-15));
        EXPECT_THAT(track->covariance, IsCovariance());
    }
}

TEST(TrackPrediction, OverNoTimeChangesNothing) {
    RandomEstimates random(402);
    const Estimate before = random.estimate();
    const auto track = makeTrack(Source::Radar, 1, before);
    track->boundingBox << 0.1, 0.2, 0.3, 0.4;
    track->predict(track->time);
    EXPECT_EQ(track->state, before.x);
    EXPECT_EQ(track->covariance, before.P);
    EXPECT_EQ(track->boundingBox, Eigen::Vector4d(0.1, 0.2, 0.3, 0.4));
    EXPECT_EQ(track->time, 10.0);
}

TEST(TrackPrediction, SpreadsWhatIsNotFiniteAsTheProductDoes) {
    RandomEstimates random(312);
    for (const double odd : {nan, std::numeric_limits<double>::infinity()}) {
        for (Eigen::Index i = 0; i < 42; ++i) {
            Estimate broken = random.estimate();
            (i < 6 ? broken.x[i] : broken.P.data()[i - 6]) = odd;
            const auto track = makeTrack(Source::Radar, 1, broken);
            track->predict(track->time + 0.5);
            const StateMatrix F = Veskar::constantVelocity(0.5);
            const StateVector x = F * broken.x;
            const StateMatrix P = F * broken.P * F.transpose();
            for (Eigen::Index k = 0; k < 6; ++k) {
                EXPECT_EQ(std::isfinite(track->state[k]), std::isfinite(x[k])) << i << ", " << k;
            }
            for (Eigen::Index k = 0; k < 36; ++k) {
                EXPECT_EQ(std::isfinite(track->covariance.data()[k]), std::isfinite(P.data()[k]))
                    << i << ", " << k;
            }
        }
    }
}

TEST(TrackPrediction, InTwoStepsEqualsOne) {
    RandomEstimates random(403);
    for (int i = 0; i < 200; ++i) {
        const Estimate before = random.estimate();
        const auto once = makeTrack(Source::Radar, 1, before);
        const auto twice = makeTrack(Source::Radar, 1, before);
        once->predict(12.0);
        twice->predict(random.uniform(8.0, 14.0));
        twice->predict(12.0);
        EXPECT_THAT(twice->state, IsApprox(once->state, 1e-13));
        EXPECT_THAT(twice->covariance, IsApprox(once->covariance, 1e-13));
        EXPECT_THAT(twice->boundingBox, IsApprox(once->boundingBox, 1e-13));
    }
}

TEST(TrackPrediction, BackInTimeMovesBackAndSetsTheTime) {
    VeskarTest::Report report;
    report.state << 0.5, 0.25, -0.5, 0.5, 20.0, 3.0;
    const auto track = makeTrack(report);
    track->predict(9.0);
    StateVector expected;
    expected << 0.25, 0.25, -1.0, 0.5, 20.0, 3.0;
    EXPECT_EQ(track->state, expected);
    EXPECT_EQ(track->time, 9.0);
    EXPECT_EQ(track->startTime, 10.0);
}

TEST(TrackPrediction, ShiftsTheBoxAndKeepsItsSize) {
    VeskarTest::Report report;
    report.state << 0.5, 0.25, -0.5, -0.125, 20.0, 3.0;
    const auto track = makeTrack(report);
    track->boundingBox << 0.375, 0.25, -0.5, 0.75;
    track->predict(12.0);
    EXPECT_EQ(track->boundingBox, Eigen::Vector4d(0.875, 0.25, -0.75, 0.75));
    EXPECT_EQ(track->startPosition, Eigen::Vector2d(0.5, -0.5));
}

TEST(VelocitySimilarity, IsTheCosineOfTheVelocities) {
    EXPECT_DOUBLE_EQ(trackMoving(1.0, 0.0)->velocitySimilarity(*trackMoving(3.0, 0.0), 0.0).second,
                     1.0);
    EXPECT_DOUBLE_EQ(trackMoving(1.0, 0.0)->velocitySimilarity(*trackMoving(-2.0, 0.0), 0.0).second,
                     -1.0);
    EXPECT_EQ(trackMoving(1.0, 0.0)->velocitySimilarity(*trackMoving(0.0, 2.0), 0.0).second, 0.0);
    EXPECT_DOUBLE_EQ(trackMoving(3.0, 4.0)->velocitySimilarity(*trackMoving(5.0, 0.0), 0.0).second,
                     0.6);
}

TEST(VelocitySimilarity, AddsTheRoundingUnitToTheProductOfTheSpeeds) {
    const double epsilon = 2.220446049250313e-16;
    const auto slow = trackMoving(epsilon, 0.0);
    EXPECT_EQ(slow->velocitySimilarity(*trackMoving(1.0, 0.0), 0.0).second, 0.5);
}

TEST(VelocitySimilarity, OfNoVelocitiesIsZeroAndDoesNotCount) {
    const auto still = trackMoving(0.0, 0.0);
    EXPECT_EQ(still->velocitySimilarity(*still, 0.0), std::make_pair(false, 0.0));
    EXPECT_EQ(still->velocitySimilarity(*still, 1.0), std::make_pair(false, 0.0));
    EXPECT_EQ(still->velocitySimilarity(*still, -1.0), std::make_pair(true, 0.0));
}

TEST(VelocitySimilarity, CountsAboveTheMinimumSpeedSumOnly) {
    const auto a = trackMoving(3.0, 4.0);
    const auto b = trackMoving(0.0, 2.0);
    EXPECT_FALSE(a->velocitySimilarity(*b, 7.0).first);
    EXPECT_TRUE(a->velocitySimilarity(*b, std::nextafter(7.0, 0.0)).first);
}

TEST(VelocitySimilarity, OfNotANumberDoesNotCount) {
    const auto broken = trackMoving(nan, 1.0);
    const auto [counts, similarity] = broken->velocitySimilarity(*trackMoving(1.0, 1.0), 0.0);
    EXPECT_FALSE(counts);
    EXPECT_TRUE(std::isnan(similarity));
}

TEST(TravelledDistance, IsMeasuredFromTheStartInTheImagePlane) {
    const auto track = trackAt(-0.5, 0.25);
    EXPECT_EQ(track->getTravelledDistanceInImagePlane(), 0.0);
    track->state << -0.2, 9.0, 0.65, 9.0, 9.0, 9.0;
    EXPECT_DOUBLE_EQ(track->getTravelledDistanceInImagePlane(), 0.5);
}

TEST(TravelledDistance, OfATrackFromOutsideTheImageIsZero) {
    for (const auto& start : {std::make_pair(1.0000001, 0.0), std::make_pair(0.0, -1.0000001),
                              std::make_pair(nan, 0.0)}) {
        const auto track = trackAt(start.first, start.second);
        track->state[0] = 0.5;
        EXPECT_EQ(track->getTravelledDistanceInImagePlane(), 0.0) << start.first;
    }
    const auto track = trackAt(1.0, -1.0);
    track->state[0] = 0.5;
    EXPECT_EQ(track->getTravelledDistanceInImagePlane(), 0.5);
}

TEST(PositionStatisticalDistance, EqualsTheFormulaInExtendedPrecision) {
    using Matrix3 = Eigen::Matrix<long double, 3, 3>;
    using Vector3 = Eigen::Matrix<long double, 3, 1>;
    RandomEstimates random(404);
    for (int i = 0; i < 1000; ++i) {
        const auto a = makeTrack(Source::Radar, 1, random.estimate());
        const auto b = makeTrack(Source::VideoObject, 1, random.estimate());
        Vector3 d;
        Matrix3 S;
        for (Eigen::Index row = 0; row < 3; ++row) {
            d[row] = static_cast<long double>(a->state[2 * row]) - b->state[2 * row];
            for (Eigen::Index col = 0; col < 3; ++col) {
                S(row, col) = static_cast<long double>(a->covariance(2 * row, 2 * col)) +
                              b->covariance(2 * row, 2 * col);
            }
        }
        const auto expected =
            static_cast<double>(std::sqrt(d.dot(VeskarTest::exactInverse(S) * d)));
        EXPECT_THAT(a->positionStatisticalDistance(*b), IsNearRelative(expected, 1e-12));
    }
}

TEST(PositionStatisticalDistance, DoesNotLookAtTheRates) {
    RandomEstimates random(405);
    const auto a = makeTrack(Source::Radar, 1, random.estimate());
    const auto b = makeTrack(Source::Radar, 2, random.estimate());
    const double before = a->positionStatisticalDistance(*b);
    for (const int rate : {1, 3, 5}) {
        a->state[rate] = nan;
        a->covariance.row(rate).setConstant(nan);
        a->covariance.col(rate).setConstant(nan);
    }
    EXPECT_EQ(a->positionStatisticalDistance(*b), before);
}

TEST(PositionStatisticalDistance, OfASingularSumFailsEveryGate) {
    const auto a = trackAt(0.5, 0.5);
    const auto b = trackAt(0.0, 0.0);
    a->covariance(4, 4) = 0.0;
    b->covariance(4, 4) = 0.0;
    EXPECT_FALSE(a->positionStatisticalDistance(*b) < std::numeric_limits<double>::max());
}

TEST(PositionStatisticalDistance, CarriesNotANumberOn) {
    for (const int i : {0, 2, 4}) {
        const auto broken = trackAt(0.5, 0.5);
        broken->state[i] = nan;
        EXPECT_TRUE(std::isnan(broken->positionStatisticalDistance(*trackAt(0.0, 0.0))));
        for (const int j : {0, 2, 4}) {
            const auto spread = trackAt(0.5, 0.5);
            spread->covariance(i, j) = nan;
            EXPECT_TRUE(std::isnan(spread->positionStatisticalDistance(*trackAt(0.0, 0.0))));
        }
    }
}

TEST(Track, ComparesEstimatesAsTheFreeFunctions) {
    RandomEstimates random(406);
    const Estimate a = random.estimate();
    const Estimate b = random.estimate();
    const auto trackA = makeTrack(Source::Radar, 1, a);
    const auto trackB = makeTrack(Source::VideoObject, 1, b);
    EXPECT_EQ(trackA->statisticalDistance(*trackB),
              Veskar::statisticalDistance(a.x, a.P, b.x, b.P));
    EXPECT_EQ(trackA->logPdf(*trackB), Veskar::logPDF(a.x, a.P, b.x, b.P));
}

}  // namespace
