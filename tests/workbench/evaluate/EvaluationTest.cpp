// SPDX-License-Identifier: Apache-2.0
// Evaluations of fused tracks, sensor tracks and truth, in scenes made by hand.
#include "Process.h"
#include "SourceDirectory.h"
#include "evaluate/Evaluation.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::ElementsAre;

/// The camera is mounted 5 m above the origin and looks along x, with a field of view of 90
/// degrees; the radar beside it sees 120 degrees and 150 m.
RecordingHeader installation() {
    const Scenario scenario = readScenario(VeskarTest::dataFile("tiny.scenario.json"));
    return Simulation(scenario, 1).header();
}

FusedTrack fusedAt(int id, double x, double y, const std::string& className = "human") {
    FusedTrack track;
    track.id = id;
    track.confirmed = true;
    track.ground = GroundPosition{
        {x, y}, Eigen::Matrix2d::Identity(), Eigen::Vector2d::Zero(), Eigen::Matrix2d::Identity()};
    track.labels.objectClass.name = className;
    track.sensors = {{Veskar::Radar, id, 0.0}};
    return track;
}

FusedFrame fusedFrame(double time, std::vector<FusedTrack> tracks) {
    FusedFrame frame;
    frame.time = time;
    frame.received = time;
    frame.tracks = std::move(tracks);
    return frame;
}

TruthObject truthAt(int id, double x, double y, const std::string& className = "human") {
    TruthObject object;
    object.id = id;
    object.className = className;
    object.position = {x, y};
    return object;
}

class EvaluationTest : public testing::Test {
protected:
    Evaluation& begin() {
        evaluation.emplace(
            installation(),
            Veskar::Config::parse(std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json"), options);
        return *evaluation;
    }

    /// One instant: fused tracks and truth.
    void judge(std::vector<FusedTrack> tracks, std::vector<TruthObject> objects,
               double time = 1.0) {
        evaluation->add(fusedFrame(time, std::move(tracks)));
        evaluation->add(TruthFrame{time, std::move(objects)});
    }

    double figure(const std::string& part, const std::string& key,
                  const std::string& tracker = "fusion") {
        for (const PartFigures& figures : evaluation->figures()) {
            for (const TrackerFigures& ofTracker : figures.trackers) {
                for (const Figure& one : ofTracker.figures) {
                    if (figures.part == part && ofTracker.tracker == tracker && one.key == key) {
                        return one.value;
                    }
                }
            }
        }
        ADD_FAILURE() << part << " " << tracker << " " << key;
        return 0.0;
    }

    std::vector<std::string> parts() {
        std::vector<std::string> names;
        for (const PartFigures& figures : evaluation->figures()) {
            names.push_back(figures.part);
        }
        return names;
    }

    EvaluationOptions options;
    std::optional<Evaluation> evaluation;
};

TEST_F(EvaluationTest, ChargesTheTimeThatHasPassedSinceTheReport) {
    begin();
    FusedTrack track = fusedAt(1, 20.0, 0.0);
    track.ground->velocity = {4.0, 0.0};
    evaluation->add(fusedFrame(1.0, {track}));
    // A quarter of a second later the track is predicted 1 m farther away; the object is 3 m
    // farther.
    evaluation->add(TruthFrame{1.25, {truthAt(1, 23.0, 0.0)}});
    EXPECT_DOUBLE_EQ(figure("all", "position_rmse"), 2.0);
    EXPECT_DOUBLE_EQ(figure("all", "radial_bias"), -2.0);
    EXPECT_EQ(evaluation->instants(), 1);
}

TEST_F(EvaluationTest, CountsConfirmedTracksWithAPlaceOnTheGroundOnly) {
    begin();
    FusedTrack tentative = fusedAt(1, 20.0, 0.0);
    tentative.confirmed = false;
    FusedTrack airborne = fusedAt(2, 20.0, 0.0);
    airborne.ground.reset();
    FusedTrack lost = fusedAt(3, 20.0, 0.0);
    lost.ground->position[0] = std::numeric_limits<double>::quiet_NaN();
    judge({tentative, airborne, lost}, {truthAt(1, 20.0, 0.0)});
    EXPECT_EQ(figure("all", "missed_per_instant"), 1.0);
    EXPECT_EQ(figure("all", "false_per_instant"), 0.0);
}

TEST_F(EvaluationTest, ShowsATrackAsLongAsOneOfItsSensorsHasSeenTheObject) {
    begin();
    FusedTrack track = fusedAt(1, 20.0, 0.0);
    track.sensors = {{Veskar::VideoObject, 1, 0.75}, {Veskar::Radar, 1, 0.25}};
    judge({track}, {truthAt(1, 20.0, 0.0)});
    EXPECT_EQ(figure("all", "missed_per_instant"), 0.0);
    track.sensors.pop_back();
    judge({track}, {truthAt(1, 20.0, 0.0)}, 2.0);
    EXPECT_EQ(figure("all", "missed_per_instant"), 0.5);
}

TEST_F(EvaluationTest, PartsTheSceneByClassAndRange) {
    options.bands = {0.0, 20.0, 40.0};
    begin();
    // The walker is found 1 m off, the car is missed, and a track of a car has no object.
    judge({fusedAt(1, 15.0, 1.0), fusedAt(2, 60.0, 0.0, "car")},
          {truthAt(1, 15.0, 0.0), truthAt(2, 30.0, 0.0, "car")});
    EXPECT_THAT(parts(),
                ElementsAre("all", "human", "car", "0 to 20 m", "20 to 40 m", "40 m and more"));
    EXPECT_DOUBLE_EQ(figure("all", "GOSPA"), std::sqrt(1.0 + 12.5 + 12.5));
    EXPECT_DOUBLE_EQ(figure("human", "GOSPA"), 1.0);
    EXPECT_DOUBLE_EQ(figure("car", "GOSPA"), std::sqrt(12.5 + 12.5));
    EXPECT_DOUBLE_EQ(figure("0 to 20 m", "GOSPA"), 1.0);
    EXPECT_DOUBLE_EQ(figure("20 to 40 m", "GOSPA_missed"), std::sqrt(12.5));
    EXPECT_EQ(figure("20 to 40 m", "GOSPA_false"), 0.0);
    EXPECT_EQ(figure("40 m and more", "GOSPA_missed"), 0.0);
    EXPECT_DOUBLE_EQ(figure("40 m and more", "GOSPA_false"), std::sqrt(12.5));
}

TEST_F(EvaluationTest, AClassNamedAsTheWholeSceneDoesNotCountTwice) {
    begin();
    judge({fusedAt(1, 15.0, 1.0, "all")}, {truthAt(1, 15.0, 0.0, "all")});
    EXPECT_EQ(figure("all", "MT"), 1.0);
    EXPECT_EQ(figure("all", "missed_per_instant"), 0.0);
    judge({}, {truthAt(1, 15.0, 0.0, "all")}, 2.0);
    EXPECT_EQ(figure("all", "missed_per_instant"), 0.5);
    EXPECT_EQ(parts()[1], "0 to 20 m");
}

TEST_F(EvaluationTest, CountsAClassFromItsFirstObjectInALongRecording) {
    begin();
    // A walker with one track for 100 s, and a car that nobody finds for the last 60.
    for (int i = 0; i < 100; ++i) {
        std::vector<TruthObject> objects{truthAt(1, 15.0, 0.0)};
        if (i >= 40) {
            objects.push_back(truthAt(2, 30.0, 0.0, "car"));
        }
        judge({fusedAt(1, 15.0, 1.0)}, objects, i);
        if (i == 69) {
            // Figures in between change nothing.
            EXPECT_EQ(figure("all", "missed_per_instant"), 30.0 / 70.0);
            EXPECT_NEAR(figure("human", "HOTA"), 16.0 / 19.0, 1e-12);
        }
    }
    EXPECT_EQ(evaluation->instants(), 100);
    EXPECT_EQ(figure("car", "missed_per_instant"), 1.0);
    EXPECT_EQ(figure("all", "missed_per_instant"), 0.6);
    EXPECT_EQ(figure("all", "position_median"), 1.0);
    // Similarity 0.8 reaches 16 of 19 thresholds. DetA 100 / 160, the walker's overlap is 1.
    EXPECT_NEAR(figure("human", "HOTA"), 16.0 / 19.0, 1e-12);
    EXPECT_NEAR(figure("all", "HOTA"), 16.0 / 19.0 * std::sqrt(0.625), 1e-12);
}

TEST_F(EvaluationTest, KnowsNoErrorsByTheBordersOfItsParts) {
    options.bands = {0.0, 20.0};
    begin();
    // One object, one track: the border of the range bands is between them, and their classes
    // differ.
    judge({fusedAt(1, 20.5, 0.0, "car")}, {truthAt(1, 19.5, 0.0, "human")});
    EXPECT_DOUBLE_EQ(figure("0 to 20 m", "GOSPA"), 1.0);
    EXPECT_EQ(figure("20 m and more", "GOSPA"), 0.0);
    EXPECT_DOUBLE_EQ(figure("human", "GOSPA"), 1.0);
    EXPECT_EQ(figure("human", "class_agreement"), 0.0);
}

TEST_F(EvaluationTest, JudgesWhereBothSensorsCanSeeUnlessToldOtherwise) {
    TruthObject unseen = truthAt(1, 20.0, 0.0);
    unseen.inRadar = false;
    // A track of an object that one sensor cannot see, and two outside the common field of view: 50
    // degrees to the side, and beyond the radar's range.
    const std::vector<FusedTrack> tracks{fusedAt(1, 20.0, 0.5), fusedAt(2, 20.0, 24.0),
                                         fusedAt(3, 160.0, 0.0)};
    begin();
    judge(tracks, {unseen});
    EXPECT_EQ(figure("all", "GOSPA"), 0.0);
    options.commonFieldOfView = false;
    begin();
    judge(tracks, {unseen});
    EXPECT_DOUBLE_EQ(figure("all", "GOSPA"), std::sqrt(0.25 + 2.0 * 12.5));
    EXPECT_EQ(figure("all", "false_per_instant"), 2.0);
}

TEST_F(EvaluationTest, GivesGospaOfEveryMoment) {
    options.confirmationHits = {3};
    options.keepsMoments = true;
    begin();
    judge({fusedAt(1, 20.0, 3.0)}, {truthAt(1, 20.0, 0.0)}, 1.0);
    judge({fusedAt(1, 20.0, 3.0)}, {truthAt(1, 20.0, 0.0), truthAt(2, 30.0, 0.0)}, 2.0);
    judge({fusedAt(1, 20.0, 3.0)}, {}, 3.0);
    const std::vector<GospaSeries> series = evaluation->gospaOverTime();
    ASSERT_EQ(series.size(), 3U);
    EXPECT_EQ(series[0].tracker, "fusion");
    EXPECT_EQ(series[1].tracker, "radar 3");
    EXPECT_EQ(series[2].tracker, "video 3");
    const std::vector<GospaMoment>& moments = series[0].moments;
    ASSERT_EQ(moments.size(), 3U);
    EXPECT_EQ(moments[0].time, 1.0);
    EXPECT_DOUBLE_EQ(moments[0].gospa.distance, 3.0);
    EXPECT_EQ(moments[1].time, 2.0);
    EXPECT_DOUBLE_EQ(moments[1].gospa.distance, std::sqrt(9.0 + 12.5));
    EXPECT_EQ(moments[1].gospa.missed, 1);
    EXPECT_EQ(moments[2].time, 3.0);
    EXPECT_DOUBLE_EQ(moments[2].gospa.distance, std::sqrt(12.5));
    EXPECT_EQ(moments[2].gospa.falseTracks, 1);
    // The metric is their mean.
    EXPECT_DOUBLE_EQ(figure("all", "GOSPA"), (3.0 + std::sqrt(9.0 + 12.5) + std::sqrt(12.5)) / 3.0);
    // The radar alone misses one, two and none.
    EXPECT_DOUBLE_EQ(series[1].moments[1].gospa.distance, 5.0);
    EXPECT_EQ(series[1].moments[2].gospa.distance, 0.0);
}

TEST_F(EvaluationTest, ASensorsTrackCountsOnceItHasBeenSeenOftenEnough) {
    options.confirmationHits = {1, 3};
    options.keepsMoments = true;
    begin();
    RadarReport report;
    report.id = 4;
    report.range = std::hypot(20.0, 4.6);
    report.speed = 0.0;
    report.direction = 0.0;
    const auto radarSees = [&](double time, double coasting) {
        report.coasting = coasting;
        evaluation->add(RecordingLine(SensorFrame{Veskar::Radar, time, time, {report}}));
        evaluation->add(RecordingLine(TruthFrame{time, {truthAt(1, 20.0, 0.0)}}));
    };
    radarSees(1.0, 0.0);
    radarSees(1.1, 0.0);
    radarSees(1.2, 0.1);  // coasting
    radarSees(1.3, 0.0);
    const std::vector<GospaSeries> series = evaluation->gospaOverTime();
    const auto missed = [&](std::size_t tracker) {
        std::vector<int> result;
        for (const GospaMoment& moment : series[tracker].moments) {
            result.push_back(moment.gospa.missed);
        }
        return result;
    };
    EXPECT_EQ(series[1].tracker, "radar 1");
    EXPECT_THAT(missed(1), ElementsAre(0, 0, 0, 0));
    EXPECT_EQ(series[2].tracker, "radar 3");
    EXPECT_THAT(missed(2), ElementsAre(1, 1, 1, 0));
    EXPECT_EQ(series[3].tracker, "video 1");
    EXPECT_THAT(missed(3), ElementsAre(1, 1, 1, 1));
    EXPECT_LT(figure("all", "position_rmse", "radar 1"), 0.1);
    EXPECT_TRUE(std::isnan(figure("all", "position_rmse", "video 1")));
}

TEST_F(EvaluationTest, ShowsASlowSensorsTracksPredictedInBetween) {
    options.confirmationHits = {1};
    begin();
    RadarReport report;
    report.id = 4;
    report.speed = 2.0;
    report.direction = 0.0;
    // A radar that rotates once in a second, and an object that walks away from it at 2 m/s.
    for (const double time : {1.0, 2.0, 3.0}) {
        report.range = std::hypot(20.0 + 2.0 * time, 4.6);
        evaluation->add(RecordingLine(SensorFrame{Veskar::Radar, time, time, {report}}));
    }
    evaluation->add(RecordingLine(TruthFrame{3.75, {truthAt(1, 27.5, 0.0)}}));
    EXPECT_EQ(figure("all", "missed_per_instant", "radar 1"), 0.0);
    EXPECT_LT(figure("all", "position_rmse", "radar 1"), 0.1);
}

}  // namespace
}  // namespace Workbench
