// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "import/Autoferry.h"

#include <cmath>

#include <gtest/gtest.h>

using Workbench::importAutoferry;

namespace {

Workbench::ImportedRecording boats(double forward = 0.0) {
    return importAutoferry({VeskarTest::dataFile("boats.detections.json"),
                            VeskarTest::dataFile("boats.groundTruth.json"), forward});
}

std::string faultOf(const std::string& detections) {
    const VeskarTest::TemporaryDirectory directory;
    VeskarTest::spill(directory / "d", detections);
    try {
        importAutoferry({directory / "d", VeskarTest::dataFile("boats.groundTruth.json"), 0.0});
    } catch (const Veskar::Host::InputError& error) {
        const std::string text = error.what();
        const std::size_t file = (directory / "d").size();
        return text.compare(0, file, directory / "d") == 0 ? text.substr(file) : text;
    }
    return "no fault";
}

}  // namespace

TEST(Autoferry, SortsByTimeAndTakesRadarAndCamera) {
    const auto recording = boats();
    ASSERT_EQ(recording.frames.size(), 5u);
    EXPECT_EQ(recording.frames[0].source, Veskar::VideoObject);
    EXPECT_EQ(recording.frames[0].time, 0.0);
    EXPECT_NEAR(recording.frames[2].time, 0.5, 1e-9);
    EXPECT_EQ(recording.frames[2].source, Veskar::Radar);
    EXPECT_EQ(recording.header.epoch, 1000.0);
    EXPECT_EQ(recording.header.truth, Workbench::TruthKind::Incomplete);
    EXPECT_EQ(recording.header.licence, "CC0-1.0");
}

TEST(Autoferry, RadarPairsAreNorthsAndEastsAndASingleOneIsFlat) {
    const auto recording = boats();
    const auto& both = recording.frames[2].tracks;
    ASSERT_EQ(both.size(), 2u);
    const auto& first = std::get<Workbench::RadarReport>(both[0]);
    EXPECT_NEAR(first.range, std::hypot(50.0, 1.0), 1e-6);
    EXPECT_NEAR(first.azimuth, std::atan2(40.0, 30.0) * 180.0 / M_PI, 1e-6);
    const auto& second = std::get<Workbench::RadarReport>(both[1]);
    EXPECT_NEAR(second.azimuth, std::atan2(10.0, -20.0) * 180.0 / M_PI, 1e-6);
    // The single detection of the next scan continues the first track.
    const auto& next = recording.frames[3].tracks;
    EXPECT_EQ(baseOf(next.at(0)).id, first.id);
    EXPECT_EQ(baseOf(next.at(0)).coasting, 0.0);
    EXPECT_GT(baseOf(next.at(1)).coasting, 1.0);
}

TEST(Autoferry, BearingsBecomeColumnsOfAnAllRoundCamera) {
    const auto recording = boats(-90.0);
    const auto& report = std::get<Workbench::ReadyEstimate>(recording.frames[0].tracks.at(0));
    const double bearing = 0.9273 * 180.0 / M_PI;
    EXPECT_NEAR(report.state[0], (bearing + 90.0) / 180.0, 1e-9);
    EXPECT_GE(std::sqrt(report.covariance(4, 4)), 50.0);
    EXPECT_EQ(recording.frames[1].tracks.size(), 2u);
    // A bearing of 153 degrees from north is 117 degrees to the left of the forward direction -90
    // degrees, not 243 to the right.
    const auto& behind = std::get<Workbench::ReadyEstimate>(recording.frames[1].tracks.at(1));
    EXPECT_NEAR(behind.state[0], (2.6779 * 180.0 / M_PI + 90.0 - 360.0) / 180.0, 1e-9);
}

TEST(Autoferry, TruthIsRelativeToThePlatformInItsOwnAxes) {
    const auto recording = boats(90.0);
    const Workbench::TruthFrame& truth = recording.truth.at(1);
    EXPECT_NEAR(truth.time, 0.2, 1e-9);
    const Workbench::TruthObject& boat = truth.objects.at(0);
    // 30.2 m north and 40 m east; forward is east, and north is to the left.
    EXPECT_NEAR(boat.position[0], 40.0, 1e-6);
    EXPECT_NEAR(boat.position[1], 30.2, 1e-6);
    EXPECT_NEAR(boat.velocity[1], 1.0, 1e-6);
}

TEST(Autoferry, SaysWhatIsWrong) {
    EXPECT_EQ(faultOf("{}"), ": expected a list of detections or targets");
    EXPECT_EQ(faultOf(R"([{"sensorID":2,"time":1,"measurement":[]}])"),
              ": [0].ownshipPosition: missing");
    EXPECT_EQ(
        faultOf(
            R"([{"sensorID":2,"time":1000,"ownshipPosition":[0,0],"measurement":[[1,2],[3]]}])"),
        ": measurement at 1000.000000 s: as many norths as easts are needed");
    EXPECT_EQ(
        faultOf(R"([{"sensorID":4,"time":1000,"ownshipPosition":[0,0],"measurement":["north"]}])"),
        ": measurement at 1000.000000 s: expected numbers");
    EXPECT_EQ(faultOf("[\n1,\n]").rfind(":3: column ", 0), 0u);
}
