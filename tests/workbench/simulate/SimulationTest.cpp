// SPDX-License-Identifier: Apache-2.0
#include "Process.h"
#include "recording/RecordingWriter.h"
#include "simulate/Simulation.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using Workbench::RadarReport;
using Workbench::Scenario;
using Workbench::SensorFrame;
using Workbench::TruthFrame;
using Workbench::VideoReport;

namespace {

// The results of a run, sorted by kind.
struct Played {
    std::vector<SensorFrame> video;
    std::vector<SensorFrame> radar;
    std::vector<TruthFrame> truth;
    std::string text;
};

Played play(const Scenario& scenario, std::uint64_t seed = 1) {
    Played played;
    Workbench::Simulation simulation(scenario, seed);
    played.text = toJsonLine(simulation.header());
    simulation.run(
        [&](const Workbench::RecordingLine& line) {
            if (const auto* truth = std::get_if<TruthFrame>(&line)) {
                played.truth.push_back(*truth);
                played.text += toJsonLine(*truth);
                return;
            }
            const auto& frame = std::get<SensorFrame>(line);
            (frame.source == Veskar::Radar ? played.radar : played.video).push_back(frame);
            played.text += toJsonLine(frame);
        },
        [](double) {});
    return played;
}

// A walker in the view of perfect sensors: every test adds one fault.
Scenario clean() {
    Scenario scenario = Workbench::readScenario(VeskarTest::dataFile("tiny.scenario.json"));
    scenario.duration = 10.0;
    scenario.objects.resize(1);
    scenario.objects[0].path = {{25.0, -6.0}, {25.0, 9.0}};
    for (Workbench::SensorTraits* sensor :
         {static_cast<Workbench::SensorTraits*>(&scenario.video),
          static_cast<Workbench::SensorTraits*>(&scenario.radarSensor)}) {
        sensor->rate = 10.0;
        sensor->jitter = 0.0;
        sensor->detectionProbability = 1.0;
        sensor->falseAlarms = 0.0;
        sensor->outages.clear();
    }
    scenario.video.edgeStd = 1e-6;
    scenario.video.footStd = 0.0;
    scenario.radarSensor.rangeStd = 1e-3;
    scenario.radarSensor.azimuthStd = 1e-3;
    scenario.radarSensor.reflectionStd = 0.0;
    return scenario;
}

template <typename Form>
std::set<int> idsOf(const std::vector<SensorFrame>& frames) {
    std::set<int> ids;
    for (const SensorFrame& frame : frames) {
        for (const auto& report : frame.tracks) {
            ids.insert(std::get<Form>(report).id);
        }
    }
    return ids;
}

double countTracks(const std::vector<SensorFrame>& frames) {
    double count = 0.0;
    for (const SensorFrame& frame : frames) {
        count += static_cast<double>(frame.tracks.size());
    }
    return count;
}

int detectedIn(const SensorFrame& frame) {
    return static_cast<int>(std::count_if(
        frame.tracks.begin(), frame.tracks.end(),
        [](const Workbench::Report& track) { return baseOf(track).coasting == 0.0; }));
}

// The walker's ground position at a time of the clean scene.
Eigen::Vector2d walkerAt(double time) {
    return {25.0 - 0.25, -6.0 + 1.5 * time};
}

}  // namespace

TEST(Simulation, TheSameSeedGivesTheSameBytes) {
    const Scenario scenario = Workbench::readScenario(VeskarTest::dataFile("tiny.scenario.json"));
    EXPECT_EQ(play(scenario, 5).text, play(scenario, 5).text);
    EXPECT_NE(play(scenario, 5).text, play(scenario, 6).text);
}

TEST(Simulation, PerfectSensorsReportTheWalker) {
    const Played played = play(clean());
    EXPECT_EQ(idsOf<VideoReport>(played.video), std::set<int>{1});
    EXPECT_EQ(idsOf<RadarReport>(played.radar), std::set<int>{1});
    const auto& last = std::get<RadarReport>(played.radar.back().tracks.at(0));
    // The nearest corner of the footprint is 0.25 m nearer in both directions.
    const double y = walkerAt(played.radar.back().time)[1] - 0.25;
    EXPECT_NEAR(last.range, std::sqrt(24.75 * 24.75 + y * y + 4.6 * 4.6), 0.01);
    EXPECT_NEAR(last.azimuth, -std::atan2(y, 24.75) * 180.0 / M_PI, 0.02);
    EXPECT_NEAR(*last.speed, 1.5, 0.1);
    EXPECT_NEAR(*last.direction, -90.0, 3.0);
    const auto& video = std::get<VideoReport>(played.video.back().tracks.at(0));
    EXPECT_EQ(video.labels.objectClass.name, "human");
    EXPECT_EQ(video.labels.upperClothingColor.name, "red");
}

TEST(Simulation, TruthIsThePointOfTheFootprintNearestToTheDevice) {
    const Played played = play(clean());
    ASSERT_EQ(played.truth.size(), 101u);
    const Workbench::TruthObject& object = played.truth[40].objects.at(0);
    EXPECT_NEAR(object.position[0], 24.75, 1e-9);
    EXPECT_NEAR((*object.centre)[1], 0.0, 1e-9);
    EXPECT_NEAR(object.velocity[1], 1.5, 1e-9);
    EXPECT_TRUE(object.inVideo);
    EXPECT_TRUE(object.inRadar);
}

TEST(Simulation, FramesArriveInOrderAfterTheirLatency) {
    Scenario scenario = clean();
    scenario.video.latency = 0.3;
    scenario.video.jitter = 0.1;
    const Played played = play(scenario);
    double sum = 0.0;
    double before = 0.0;
    for (const SensorFrame& frame : played.video) {
        EXPECT_GE(frame.received, before);
        EXPECT_GE(frame.received, frame.time);
        before = frame.received;
        sum += frame.received - frame.time;
    }
    EXPECT_NEAR(sum / static_cast<double>(played.video.size()), 0.32, 0.05);
}

TEST(Simulation, TimestampErrorShiftsTheStampsOnly) {
    Scenario scenario = clean();
    const Played right = play(scenario);
    scenario.radarSensor.timestampError = 0.15;
    const Played late = play(scenario);
    ASSERT_EQ(right.radar.size(), late.radar.size());
    EXPECT_NEAR(late.radar[10].time, right.radar[10].time + 0.15, 1e-12);
    EXPECT_EQ(std::get<RadarReport>(late.radar[10].tracks.at(0)).azimuth,
              std::get<RadarReport>(right.radar[10].tracks.at(0)).azimuth);
}

TEST(Simulation, MissedDetectionsCoast) {
    Scenario scenario = clean();
    scenario.radarSensor.detectionProbability = 0.6;
    const Played played = play(scenario);
    const auto coasting =
        std::count_if(played.radar.begin(), played.radar.end(), [](const SensorFrame& frame) {
            return !frame.tracks.empty() && baseOf(frame.tracks[0]).coasting > 0.0;
        });
    EXPECT_GT(coasting, 20);
    EXPECT_LT(coasting, 60);
}

TEST(Simulation, FalseAlarmsAndBurstsStartTracksOfTheirOwn) {
    Scenario scenario = clean();
    const double clear = countTracks(play(scenario).radar);
    scenario.radarSensor.falseAlarms = 0.5;
    EXPECT_GT(countTracks(play(scenario).radar), clear + 30.0);
    scenario.radarSensor.falseAlarms = 0.0;
    scenario.radarSensor.bursts = 30.0;
    EXPECT_GT(countTracks(play(scenario).radar), clear + 10.0);
}

TEST(Simulation, APersistentFalseObjectBecomesAConfirmedTrackWhileItLasts) {
    Scenario scenario = clean();
    Workbench::PersistentFalse ghost;
    ghost.position = {15.0, 3.0};
    ghost.probability = 0.9;
    ghost.wander = 0.05;
    ghost.to = 5.0;
    scenario.radarSensor.persistent = {ghost};
    const Played played = play(scenario);
    int early = 0;
    int late = 0;
    for (const SensorFrame& frame : played.radar) {
        for (const auto& track : frame.tracks) {
            const auto& report = std::get<RadarReport>(track);
            const bool isGhost = report.confirmed && report.range < 20.0;
            (frame.time < 5.0 ? early : late) += isGhost ? 1 : 0;
        }
    }
    EXPECT_GT(early, 35);
    EXPECT_LT(late, 15);
}

TEST(Simulation, ACarHidesWhatIsBehindItFromVideo) {
    Scenario scenario = clean();
    Workbench::ObjectTraits truck;
    truck.className = "truck";
    truck.size = {9.0, 2.5, 3.5};
    truck.mode = Workbench::PathMode::Once;
    truck.path = {{21.0, 0.0}, {21.0, 0.001}};
    truck.minimumSpeed = truck.maximumSpeed = 1e-4;
    scenario.objects.push_back(truck);
    const Played played = play(scenario);
    int hidden = 0;
    for (const SensorFrame& frame : played.video) {
        // In the middle of the walk the truck occludes the walker.
        if (std::abs(walkerAt(frame.time)[1]) < 1.5) {
            const bool isSeen = std::any_of(
                frame.tracks.begin(), frame.tracks.end(), [](const Workbench::Report& track) {
                    const auto& report = std::get<VideoReport>(track);
                    return report.coasting == 0.0 && report.labels.objectClass.name == "human";
                });
            hidden += isSeen ? 0 : 1;
        }
    }
    EXPECT_GT(hidden, 15);
}

TEST(Simulation, AWallHidesWhatIsBehindItFromBothSensors) {
    Scenario scenario = clean();
    scenario.walls = {{{20.0, -1.0}, {20.0, 1.0}}};
    const Played played = play(scenario);
    for (const auto* frames : {&played.video, &played.radar}) {
        int seen = 0;
        for (const SensorFrame& frame : *frames) {
            const bool isBehind = std::abs(walkerAt(frame.time)[1]) < 1.0;
            const int detected = detectedIn(frame);
            EXPECT_TRUE(!isBehind || detected == 0) << frame.time;
            seen += detected;
        }
        EXPECT_GT(seen, 50);
    }
    for (const TruthFrame& frame : played.truth) {
        const double y = walkerAt(frame.time)[1];
        if (std::abs(y) < 1.0 || std::abs(y) > 2.0) {
            EXPECT_EQ(frame.objects.at(0).inVideo, std::abs(y) > 2.0) << frame.time;
            EXPECT_EQ(frame.objects.at(0).inRadar, std::abs(y) > 2.0) << frame.time;
        }
    }
}

TEST(Simulation, RadarDoesNotDetectWhatHardlyMovesTowardsIt) {
    Scenario scenario = clean();
    scenario.radarSensor.minimumRadialSpeed = 0.2;
    int seen = 0;
    for (const SensorFrame& frame : play(scenario).radar) {
        // The radial speed of the walker, who passes at 25 m, grows with the way from the middle.
        const double way = std::abs(walkerAt(frame.time)[1]);
        const int detected = detectedIn(frame);
        EXPECT_TRUE(way > 2.0 || detected == 0) << frame.time;
        seen += detected;
    }
    EXPECT_GT(seen, 10);
}

TEST(Simulation, NothingIsSeenOutsideTheFieldOfView) {
    Scenario scenario = clean();
    scenario.objects[0].path = {{5.0, 30.0}, {6.0, 45.0}};
    const Played played = play(scenario);
    EXPECT_EQ(countTracks(played.video), 0.0);
    EXPECT_EQ(countTracks(played.radar), 0.0);
    EXPECT_FALSE(played.truth[10].objects.at(0).inVideo);
    EXPECT_FALSE(played.truth[10].objects.at(0).inRadar);
}

TEST(Simulation, VideoSeesNoFurtherThanTheFogLetsIt) {
    Scenario scenario = clean();
    scenario.video.maximumRange = 20.0;
    EXPECT_EQ(countTracks(play(scenario).video), 0.0);
    scenario.video.emptyFrames = false;
    EXPECT_TRUE(play(scenario).video.empty());
}

TEST(Simulation, IdChurnRenamesTracks) {
    Scenario scenario = clean();
    scenario.video.idChurn = 60.0;
    EXPECT_GT(idsOf<VideoReport>(play(scenario).video).size(), 4u);
}

TEST(Simulation, AnOutageIsAGapInTheFrames) {
    Scenario scenario = clean();
    scenario.video.outages = {{3.0, 6.0}};
    for (const SensorFrame& frame : play(scenario).video) {
        EXPECT_TRUE(frame.time < 3.0 || frame.time >= 6.0);
    }
}

TEST(Simulation, RadarMergesWhatItCannotResolve) {
    Scenario scenario = clean();
    scenario.objects.push_back(scenario.objects[0]);
    scenario.objects[1].path = {{25.5, -6.5}, {25.5, 8.5}};
    const auto reports = [](const Played& played) { return played.radar[50].tracks.size(); };
    EXPECT_EQ(reports(play(scenario)), 1u);
    scenario.radarSensor.rangeResolution = 0.1;
    EXPECT_EQ(reports(play(scenario)), 2u);
}

TEST(Simulation, TheReflectionWandersOverTheObjectAndSlowly) {
    Scenario scenario = clean();
    scenario.objects[0].size = {10.0, 2.5, 3.0};
    scenario.objects[0].path = {{40.0, 0.0}, {40.0, 0.001}};
    scenario.objects[0].minimumSpeed = scenario.objects[0].maximumSpeed = 1e-4;
    scenario.radarSensor.reflectionStd = 0.5;
    scenario.radarSensor.reflectionTime = 5.0;
    scenario.radarSensor.azimuthStd = 0.2;
    const Played played = play(scenario);
    // A tracker may overshoot the end when the reflection turns round there.
    const double end = std::atan(5.0 / 38.0) * 180.0 / M_PI;
    double least = 1e9;
    double most = -1e9;
    int beyond = 0;
    for (const SensorFrame& frame : played.radar) {
        const double azimuth = std::get<RadarReport>(frame.tracks.at(0)).azimuth;
        least = std::min(least, azimuth);
        most = std::max(most, azimuth);
        beyond += std::abs(azimuth) > end + 0.5 ? 1 : 0;
    }
    EXPECT_GT(most - least, 1.0);
    EXPECT_LT(beyond, 10);
}

TEST(Simulation, TheFootPointWanders) {
    Scenario scenario = clean();
    scenario.objects[0].path = {{15.0, 0.0}, {15.0, 0.001}};
    scenario.objects[0].minimumSpeed = scenario.objects[0].maximumSpeed = 1e-4;
    const auto spread = [](const Played& played) {
        double least = 1e9;
        double most = -1e9;
        for (const SensorFrame& frame : played.video) {
            const double foot = std::get<VideoReport>(frame.tracks.at(0)).box.bottom;
            least = std::min(least, foot);
            most = std::max(most, foot);
        }
        return most - least;
    };
    EXPECT_LT(spread(play(scenario)), 1e-4);
    scenario.video.footStd = 0.1;
    EXPECT_GT(spread(play(scenario)), 0.03);
}

TEST(Simulation, MountingErrorsTurnWhatTheSensorsSee) {
    Scenario scenario = clean();
    const Played right = play(scenario);
    scenario.radarSensor.mountingError.yaw = 2.0;
    scenario.video.mountingError.position[2] = 0.5;
    const Played wrong = play(scenario);
    // A radar turned two degrees too far to the left sees everything farther to the right.
    EXPECT_NEAR(std::get<RadarReport>(wrong.radar[50].tracks.at(0)).azimuth -
                    std::get<RadarReport>(right.radar[50].tracks.at(0)).azimuth,
                2.0, 0.05);
    // A camera that is mounted higher sees the foot point lower in the image.
    EXPECT_LT(std::get<VideoReport>(wrong.video[50].tracks.at(0)).box.bottom,
              std::get<VideoReport>(right.video[50].tracks.at(0)).box.bottom - 0.01);
    // The recording states the nominal installation.
    EXPECT_EQ(wrong.text.substr(0, wrong.text.find('\n')),
              right.text.substr(0, right.text.find('\n')));
}
