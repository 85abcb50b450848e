// SPDX-License-Identifier: Apache-2.0
// The fused estimate of a system track.
#include <veskar/SystemTrack.h>

#include "support/Constants.h"
#include "support/EigenMatchers.h"
#include "support/ExtendedAlgebra.h"
#include "support/TrackFactory.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace {

using VeskarTest::nan;

using testing::ElementsAre;
using Veskar::Source;
using Veskar::StateMatrix;
using Veskar::StateVector;
using Veskar::SystemTrack;
using Veskar::Track;
using VeskarTest::addInformation;
using VeskarTest::Estimate;
using VeskarTest::ExtendedEstimate;
using VeskarTest::ExtendedMatrix;
using VeskarTest::HasNothingFinite;
using VeskarTest::IsApprox;
using VeskarTest::IsCovariance;
using VeskarTest::makeSystemTrack;
using VeskarTest::makeTrack;
using VeskarTest::RandomEstimates;

constexpr std::array<Source, 3> sensors = {Source::VideoObject, Source::VideoVura, Source::Radar};

Estimate estimateOf(const Track& track) {
    return {track.state, track.covariance};
}

void expectEstimate(const Track& track, const Estimate& expected, double tolerance) {
    EXPECT_THAT(track.state, IsApprox(expected.x, tolerance));
    EXPECT_THAT(track.covariance, IsApprox(expected.P, tolerance));
}

void expectEstimate(const Track& track, const ExtendedEstimate& expected, double tolerance) {
    expectEstimate(track, Estimate{expected.state(), expected.covariance()}, tolerance);
}

TEST(SystemTrackUpdate, WithAnEqualCovarianceHalvesItAndMeetsInTheMiddle) {
    RandomEstimates random(601);
    const Estimate first = random.estimate();
    const StateVector second = random.state();
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, first));
    system->updateState(makeTrack(Source::VideoObject, 1, {second, first.P}));
    expectEstimate(*system, Estimate{0.5 * (first.x + second), 0.5 * first.P}, 1e-12);
}

TEST(SystemTrackUpdate, OfANewTrackEqualsTheFormulaInExtendedPrecision) {
    RandomEstimates random(602);
    for (int i = 0; i < 300; ++i) {
        const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
        const Estimate report = random.estimate();
        const ExtendedEstimate expected =
            addInformation(ExtendedEstimate(estimateOf(*system)), 1, ExtendedEstimate(report));
        system->updateState(makeTrack(sensors[static_cast<std::size_t>(i) % 3], 2, report));
        expectEstimate(*system, expected, 1e-12);
        EXPECT_THAT(system->covariance, IsCovariance());
    }
}

TEST(SystemTrackUpdate, OfANewTrackEqualsTheCovarianceForm) {
    // K = P (P + Pn)^-1, x' = x + K (xn - x), P' = P - K P.
    RandomEstimates random(603);
    for (int i = 0; i < 300; ++i) {
        const Estimate prior = random.estimate();
        const Estimate report = random.estimate();
        const StateMatrix K = prior.P * StateMatrix(prior.P + report.P).inverse();
        const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, prior));
        system->updateState(makeTrack(Source::VideoObject, 1, report));
        expectEstimate(*system, Estimate{prior.x + K * (report.x - prior.x), prior.P - K * prior.P},
                       1e-12);
    }
}

TEST(SystemTrackUpdate, OfARepeatedTrackExchangesItsContribution) {
    RandomEstimates random(604);
    for (int i = 0; i < 300; ++i) {
        const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
        const Estimate old = random.estimate();
        const Estimate repeated = random.estimate();
        system->updateState(makeTrack(Source::VideoObject, 1, old));
        const ExtendedEstimate without =
            addInformation(ExtendedEstimate(estimateOf(*system)), -1, ExtendedEstimate(old));
        system->updateState(makeTrack(Source::VideoObject, 1, repeated));
        expectEstimate(*system, addInformation(without, 1, ExtendedEstimate(repeated)), 1e-12);
        EXPECT_THAT(system->covariance, IsCovariance());
    }
}

TEST(SystemTrackUpdate, OfTheOnlyTrackFollowsItsReports) {
    RandomEstimates random(605);
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
    for (int i = 0; i < 20; ++i) {
        const Estimate report = random.estimate();
        system->updateState(makeTrack(Source::Radar, 1, report));
        expectEstimate(*system, report, 1e-11);
    }
}

TEST(SystemTrackUpdate, OfAnIdenticalReportChangesNothing) {
    RandomEstimates random(606);
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
    const Estimate report = random.estimate();
    system->updateState(makeTrack(Source::VideoObject, 1, report));
    const Estimate before = estimateOf(*system);
    system->updateState(makeTrack(Source::VideoObject, 1, report));
    expectEstimate(*system, before, 1e-12);
}

TEST(SystemTrackUpdate, WithTheVeryTrackItHoldsChangesNothing) {
    RandomEstimates random(607);
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
    const auto video = makeTrack(Source::VideoObject, 1, random.estimate());
    video->startTime = 3.0;
    system->updateState(video);
    const Estimate before = estimateOf(*system);
    system->updateState(system->sensorTracks[Source::VideoObject][1]);
    expectEstimate(*system, before, 1e-12);
    EXPECT_EQ(video->startTime, 3.0);
    EXPECT_EQ(video.use_count(), 2);
}

TEST(SystemTrackUpdate, DoesNotDependOnTheOrderOfFirstReports) {
    RandomEstimates random(608);
    const Estimate prior = random.estimate();
    std::array<Estimate, 3> reports = {random.estimate(), random.estimate(), random.estimate()};
    std::array<int, 3> order = {0, 1, 2};
    std::vector<Estimate> results;
    do {
        const auto system = makeSystemTrack(makeTrack(Source::Radar, 100, prior));
        for (const int i : order) {
            const auto index = static_cast<std::size_t>(i);
            system->updateState(makeTrack(sensors[index], i, reports[index]));
        }
        expectEstimate(*system, results.empty() ? estimateOf(*system) : results.front(), 1e-12);
        results.push_back(estimateOf(*system));
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(results.size(), 6U);
}

TEST(SystemTrackUpdate, StoresTheReportUnderItsSourceAndId) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    const auto vura = makeTrack(Source::VideoVura, 7);
    system->updateState(vura);
    EXPECT_EQ(system->getSensorTracks(Source::VideoVura).at(7), vura);
    const auto repeated = makeTrack(Source::VideoVura, 7);
    system->updateState(repeated);
    EXPECT_EQ(system->getSensorTracks(Source::VideoVura).size(), 1U);
    EXPECT_EQ(system->getSensorTracks(Source::VideoVura).at(7), repeated);
    EXPECT_EQ(vura.use_count(), 1);
}

TEST(SystemTrackUpdate, HandsTheStartTimeOfTheFirstReportOn) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    for (const double time : {10.0, 11.0, 12.0}) {
        VeskarTest::Report report;
        report.id = 7;
        report.time = time;
        system->updateState(makeTrack(report));
    }
    const Track& video = *system->getSensorTracks(Source::VideoObject).at(7);
    EXPECT_EQ(video.time, 12.0);
    EXPECT_EQ(video.startTime, 10.0);
    EXPECT_EQ(system->getAge(), 2.0);
}

TEST(SystemTrackUpdate, OfANewTrackKeepsItsStartTime) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    VeskarTest::Report report;
    report.id = 2;
    report.time = 13.0;
    const auto other = makeTrack(report);
    system->updateState(other);
    EXPECT_EQ(other->startTime, 13.0);
}

TEST(SystemTrackUpdate, KeepsItsOwnTimesAndTheReportsCoastingTime) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->setCoastingTimeTracks(0.4);
    VeskarTest::Report report;
    report.source = Source::Radar;
    report.time = 13.0;
    system->updateState(makeTrack(report));
    EXPECT_EQ(system->time, 10.0);
    EXPECT_EQ(system->startTime, 10.0);
    EXPECT_EQ(system->systemStartTime, 10.0);
    EXPECT_FALSE(system->hasCoastingTracks(Source::Radar));

    const auto coasting = makeTrack(report);
    coasting->coastingTime = 0.25;
    system->updateState(coasting);
    EXPECT_EQ(coasting->coastingTime, 0.25);
}

TEST(SystemTrackUpdate, TakesTheBoxOfVideoBeforeThatOfRadar) {
    const auto report = [](Source source, int id, double box) {
        auto track = makeTrack(source, id);
        track->boundingBox.setConstant(box);
        return track;
    };
    const auto box = [](const SystemTrack& system) { return system.boundingBox[0]; };

    const auto system = makeSystemTrack(report(Source::Radar, 1, 0.1));
    EXPECT_EQ(box(*system), 0.1);
    system->updateState(report(Source::Radar, 1, 0.2));
    EXPECT_EQ(box(*system), 0.2);
    system->updateState(report(Source::Radar, 2, 0.3));
    EXPECT_EQ(box(*system), 0.3);
    system->updateState(report(Source::VideoVura, 1, 0.4));
    EXPECT_EQ(box(*system), 0.3);
    system->updateState(report(Source::VideoObject, 1, 0.5));
    EXPECT_EQ(box(*system), 0.5);
    system->updateState(report(Source::Radar, 1, 0.6));
    EXPECT_EQ(box(*system), 0.5);
    system->updateState(report(Source::VideoObject, 1, 0.7));
    EXPECT_EQ(box(*system), 0.7);
}

TEST(SystemTrackUpdate, WithASingularCovarianceLeavesNothingFinite) {
    RandomEstimates random(609);
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
    system->updateState(makeTrack(Source::VideoObject, 1, {random.state(), StateMatrix::Zero()}));
    EXPECT_THAT(system->state, HasNothingFinite());
    EXPECT_THAT(system->covariance, HasNothingFinite());
    const auto sound = makeTrack(Source::Radar, 2, random.estimate());
    EXPECT_TRUE(std::isnan(system->statisticalDistance(*sound)));
    EXPECT_TRUE(std::isnan(system->positionStatisticalDistance(*sound)));
}

TEST(SystemTrackUpdate, WithNotANumberAnywhereLeavesDistancesThatFail) {
    RandomEstimates random(610);
    for (Eigen::Index i = 0; i < 42; ++i) {
        Estimate broken = random.estimate();
        (i < 6 ? broken.x[i] : broken.P.data()[i - 6]) = nan;
        const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
        system->updateState(makeTrack(Source::VideoObject, 1, broken));
        system->predict(11.0);
        system->updateState(makeTrack(Source::VideoObject, 1, random.estimate()));
        system->pruneSensorTracksByIdx(Source::Radar, 1);
        const auto sound = makeTrack(Source::Radar, 2, random.estimate());
        EXPECT_TRUE(std::isnan(system->statisticalDistance(*sound))) << i;
        EXPECT_TRUE(std::isnan(system->positionStatisticalDistance(*sound))) << i;
    }
}

TEST(SystemTrackDefusion, TakesAContributionOut) {
    RandomEstimates random(611);
    for (int i = 0; i < 300; ++i) {
        const Estimate prior = random.estimate();
        const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, prior));
        const auto video = makeTrack(Source::VideoObject, 1, random.estimate());
        system->updateState(video);
        const ExtendedEstimate expected = addInformation(ExtendedEstimate(estimateOf(*system)), -1,
                                                         ExtendedEstimate(estimateOf(*video)));
        system->applyDefusion(*video);
        expectEstimate(*system, expected, 1e-12);
        expectEstimate(*system, prior, 1e-12);
        EXPECT_TRUE(system->hasTracks(Source::VideoObject));
    }
}

TEST(SystemTrackDefusion, NeedsTwoRadarOrVideoObjectTracks) {
    RandomEstimates random(612);
    const auto radar = makeTrack(Source::Radar, 1, random.estimate());
    const auto system = makeSystemTrack(radar);
    for (const int id : {1, 2, 3}) {
        system->updateState(makeTrack(Source::VideoVura, id, random.estimate()));
    }
    const Estimate before = estimateOf(*system);
    system->applyDefusion(*radar);
    system->applyDefusion(*system->getSensorTracks(Source::VideoVura).at(2));
    expectEstimate(*system, before, 0.0);

    const auto second = makeTrack(Source::Radar, 2, random.estimate());
    system->updateState(second);
    const Estimate fused = estimateOf(*system);
    system->applyDefusion(*second);
    EXPECT_NE(system->state, fused.x);
    expectEstimate(*system, before, 1e-12);
}

TEST(SystemTrackDefusion, MakesTheMapsThatItCounts) {
    const auto radar = makeTrack(Source::Radar, 1);
    const auto system = makeSystemTrack(radar);
    system->sensorTracks.clear();
    system->applyDefusion(*radar);
    EXPECT_TRUE(system->hasSource(Source::VideoObject));
    EXPECT_TRUE(system->hasSource(Source::Radar));
}

/// Records its predictions and their order.
class Witness : public Track {
public:
    Witness(const Track& track, std::vector<std::pair<int, double>>& calls)
        : Track(track), log_(calls) {}
    void predict(double t) override { log_.emplace_back(id, t); }

private:
    std::vector<std::pair<int, double>>& log_;
};

TEST(SystemTrackPrediction, MovesRadarThenVideoObjectsInOrderOfTheirIds) {
    std::vector<std::pair<int, double>> log;
    const auto witness = [&log](Source source, int id) {
        return std::make_shared<Witness>(*makeTrack(source, id), log);
    };
    const auto system = makeSystemTrack(witness(Source::VideoObject, 12));
    system->updateState(witness(Source::VideoObject, 11));
    system->updateState(witness(Source::VideoVura, 1));
    system->updateState(witness(Source::Radar, 22));
    system->updateState(witness(Source::Radar, 21));
    system->predict(10.5);
    EXPECT_THAT(log, ElementsAre(std::make_pair(21, 10.5), std::make_pair(22, 10.5),
                                 std::make_pair(11, 10.5), std::make_pair(12, 10.5)));
}

TEST(SystemTrackPrediction, MovesItsOwnEstimateAndItsBox) {
    RandomEstimates random(613);
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
    system->boundingBox << 0.1, 0.2, 0.3, 0.4;
    Track alone(*system);
    system->predict(11.5);
    alone.predict(11.5);
    EXPECT_EQ(system->state, alone.state);
    EXPECT_EQ(system->covariance, alone.covariance);
    EXPECT_EQ(system->boundingBox, alone.boundingBox);
    EXPECT_EQ(system->time, 11.5);
    EXPECT_EQ(system->getSensorTracks(Source::Radar).at(1)->time, 11.5);
}

TEST(SystemTrackPrediction, LetsEverySensorTrackCoastByTheInterval) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateState(makeTrack(Source::VideoObject, 1));
    system->updateState(makeTrack(Source::VideoVura, 1));
    system->getSensorTracks(Source::Radar).at(1)->time = 5.0;  // not the start of the interval
    system->predict(10.25);
    for (const Source source : sensors) {
        EXPECT_EQ(system->getSensorTracks(source).at(1)->coastingTime, 0.25) << source;
    }
    system->predict(10.0);
    for (const Source source : sensors) {
        EXPECT_EQ(system->getSensorTracks(source).at(1)->coastingTime, 0.0) << source;
    }
}

TEST(SystemTrackPrediction, DoesNotMoveMotionBasedVideoTracks) {
    RandomEstimates random(614);
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1, random.estimate()));
    const auto vura = makeTrack(Source::VideoVura, 1, random.estimate());
    system->updateState(vura);
    const Estimate before = estimateOf(*vura);
    system->predict(12.0);
    expectEstimate(*vura, before, 0.0);
    EXPECT_EQ(vura->time, 10.0);
    EXPECT_EQ(vura->coastingTime, 2.0);
}

TEST(SystemTrackPrediction, MakesTheMapsThatItWalks) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->sensorTracks.clear();
    system->predict(11.0);
    EXPECT_TRUE(system->hasSource(Source::Radar));
    EXPECT_TRUE(system->hasSource(Source::VideoObject));
    EXPECT_FALSE(system->hasSource(Source::VideoVura));
}

TEST(SystemTrackPrediction, KeepsTheBookkeepingWhole) {
    // What was fused before a prediction can be removed after it.
    RandomEstimates random(615);
    const auto radar = makeTrack(Source::Radar, 1, random.estimate());
    const auto system = makeSystemTrack(radar);
    system->updateState(makeTrack(Source::VideoObject, 1, random.estimate()));
    system->predict(10.4);
    system->pruneSensorTracksByIdx(Source::VideoObject, 1);
    expectEstimate(*system, estimateOf(*radar), 1e-11);
}

/// A system track at (u, v) that started at (u0, v0), both in the image plane.
std::shared_ptr<SystemTrack> startedAt(double u0, double v0, double u, double v) {
    auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->startPosition << u0, v0;
    system->state << u, 0.0, v, 0.0, 0.0, 0.0;
    system->time = 12.0;
    return system;
}

TEST(SystemTrackOrigin, InsideTheImageStays) {
    for (const double start : {-1.0, 0.25, 1.0}) {
        for (const double now : {0.5, 2.0}) {
            const auto system = startedAt(start, -start, now, 0.0);
            system->updateOriginAndStartTime();
            EXPECT_EQ(system->startPosition, Eigen::Vector2d(start, -start));
            EXPECT_EQ(system->systemStartTime, 10.0);
        }
    }
}

TEST(SystemTrackOrigin, OutsideTheImageFollowsTheTrack) {
    const auto system = startedAt(-2.0, 0.0, -1.5, 0.25);
    system->updateOriginAndStartTime();
    EXPECT_EQ(system->startPosition, Eigen::Vector2d(-1.5, 0.25));
    EXPECT_EQ(system->systemStartTime, 12.0);
    EXPECT_EQ(system->startTime, 10.0);
}

TEST(SystemTrackOrigin, IsTheCrossingOfTheBorderAsTheIntersectionReturnsIt) {
    // From (-2, 0) to (0, 0.5) the left border is crossed at (-1, 0.25), returned as (v, u).
    const auto system = startedAt(-2.0, 0.0, 0.0, 0.5);
    system->updateOriginAndStartTime();
    EXPECT_EQ(system->startPosition, Eigen::Vector2d(0.25, -1.0));
    EXPECT_EQ(system->systemStartTime, 12.0);
    system->time = 13.0;
    system->state[0] = 5.0;
    system->updateOriginAndStartTime();
    EXPECT_EQ(system->startPosition, Eigen::Vector2d(0.25, -1.0));
    EXPECT_EQ(system->systemStartTime, 12.0);
}

TEST(SystemTrackOrigin, IsSetByTheUpdateThatEntersTheImage) {
    VeskarTest::Report report;
    report.source = Source::Radar;
    report.state << -1.5, 0.5, 0.0, 0.0, 20.0, 0.0;
    const auto system = makeSystemTrack(makeTrack(report));
    EXPECT_EQ(system->systemStartTime, 10.0);
    system->predict(11.0);
    report.time = 11.0;
    report.state[0] = -1.25;
    system->updateState(makeTrack(report));
    EXPECT_THAT(system->startPosition, IsApprox(Eigen::Vector2d(-1.25, 0.0), 1e-12));
    EXPECT_EQ(system->systemStartTime, 11.0);
    EXPECT_EQ(system->getTravelledDistanceInImagePlane(), 0.0);

    system->predict(12.0);
    report.time = 12.0;
    report.state[0] = -0.75;
    system->updateState(makeTrack(report));
    EXPECT_THAT(system->startPosition, IsApprox(Eigen::Vector2d(0.0, -1.0), 1e-12));
    EXPECT_EQ(system->systemStartTime, 12.0);
}

TEST(SystemTrackOrigin, OfNotANumberIsOutside) {
    const auto system = startedAt(nan, 0.0, -3.0, 0.0);
    system->updateOriginAndStartTime();
    EXPECT_EQ(system->startPosition, Eigen::Vector2d(-3.0, 0.0));
    const auto lost = startedAt(-2.0, 0.0, nan, 0.5);
    lost->updateOriginAndStartTime();
    EXPECT_TRUE(std::isnan(lost->startPosition[0]));
    EXPECT_EQ(lost->startPosition[1], 0.5);
}

/// Reference: the bookkeeping of a system track as described, unoptimised and in extended
/// precision.
class SlowSystemTrack {
public:
    explicit SlowSystemTrack(const Track& first) : fused_(estimateOf(first)) {
        tracks_.emplace(Key{first.source, first.id}, estimateOf(first));
    }

    void update(const Track& report) {
        const Key key = {report.source, report.id};
        const auto old = tracks_.find(key);
        if (old != tracks_.end()) {
            fused_ = addInformation(fused_, -1, old->second);
            tracks_.erase(old);
        }
        tracks_.emplace(key, estimateOf(report));
        fused_ = addInformation(fused_, 1, tracks_.at(key));
    }

    void prune(Source source, int id) {
        const auto leaving = tracks_.find({source, id});
        if (leaving == tracks_.end()) {
            return;
        }
        const auto supports = std::count_if(tracks_.begin(), tracks_.end(), [](const auto& entry) {
            return entry.first.first == Source::VideoObject || entry.first.first == Source::Radar;
        });
        if (supports >= 2) {
            fused_ = addInformation(fused_, -1, leaving->second);
        }
        tracks_.erase(leaving);
    }

    void predict(double dt) {
        const ExtendedMatrix F = Veskar::constantVelocity(dt).cast<long double>();
        move(fused_, F);
        for (auto& [key, estimate] : tracks_) {
            if (key.first != Source::VideoVura) {
                move(estimate, F);
            }
        }
    }

    const ExtendedEstimate& estimate() const { return fused_; }

private:
    using Key = std::pair<Source, int>;

    static void move(ExtendedEstimate& estimate, const ExtendedMatrix& F) {
        estimate = {F * estimate.x, F * estimate.P * F.transpose()};
    }

    ExtendedEstimate fused_;
    std::map<Key, ExtendedEstimate> tracks_;
};

TEST(SystemTrackState, FollowsTheSlowModelThroughRandomLives) {
    RandomEstimates random(616);
    for (int life = 0; life < 100; ++life) {
        const auto first = makeTrack(Source::Radar, 1, random.estimate());
        const auto system = makeSystemTrack(first);
        SlowSystemTrack slow(*first);
        for (int step = 0; step < 40; ++step) {
            const Source source = sensors[static_cast<std::size_t>(random.integer(0, 2))];
            const int id = random.integer(1, 3);
            const int action = random.integer(0, 9);
            if (action < 2) {
                slow.prune(source, id);
                system->pruneSensorTracksByIdx(source, id);
            } else if (action < 4) {
                // Short, because VideoVura tracks are not predicted and are removed unchanged.
                const double t = system->time + 0.01;
                slow.predict(t - system->time);
                system->predict(t);
            } else {
                const auto report = makeTrack(source, id, random.estimate());
                report->covariance *= source == Source::VideoVura ? 100.0 : 1.0;
                report->time = system->time;
                slow.update(*report);
                system->updateState(report);
            }
            SCOPED_TRACE(testing::Message() << "life " << life << " step " << step);
            expectEstimate(*system, slow.estimate(), 1e-9);
            ASSERT_FALSE(HasFailure());
        }
    }
}

}  // namespace
