// SPDX-License-Identifier: Apache-2.0
#include "Installation.h"
#include "Process.h"
#include "recording/RecordingReader.h"
#include "recording/RecordingWriter.h"

#include <gtest/gtest.h>

namespace {

// Writes lines and reads them back.
std::vector<Workbench::RecordingLine> roundTrip(const std::string& lines) {
    const VeskarTest::TemporaryDirectory directory;
    VeskarTest::spill(directory / "r", toJsonLine(VeskarTest::installation()) + lines);
    Workbench::RecordingReader reader(directory / "r");
    std::vector<Workbench::RecordingLine> found;
    while (auto line = reader.next()) {
        found.push_back(std::move(*line));
    }
    return found;
}

}  // namespace

TEST(RecordingWriter, WritesVideoSoThatItReadsBack) {
    Workbench::VideoReport report;
    report.id = -5;
    report.coasting = 0.25;
    report.confirmed = false;
    report.box = {-0.5, -0.25, 0.125, 0.75};
    report.velocity = Eigen::Vector2d(0.0625, -0.5);
    report.age = 3.5;
    report.labels.objectClass = {"human", 0.75};
    report.labels.upperClothingColor = {"odd \"colour\" \n", 0.5};
    const std::string line =
        toJsonLine(Workbench::SensorFrame{Veskar::VideoObject, 1.0, 1.5, {report}});
    EXPECT_EQ(
        line,
        R"({"source":"video","time":1,"received":1.5,"tracks":[{"id":-5,"coasting":0.25,"confirmed":false,"box":{"left":-0.5,"bottom":-0.25,"right":0.125,"top":0.75},"velocity":[0.0625,-0.5],"age":3.5,"class":"human","classProbability":0.75,"upperClothingColor":"odd \"colour\" \n","upperClothingColorProbability":0.5}]})"
        "\n");
    const auto frame = std::get<Workbench::SensorFrame>(roundTrip(line).at(0));
    const auto& back = std::get<Workbench::VideoReport>(frame.tracks.at(0));
    EXPECT_EQ(back.id, -5);
    EXPECT_EQ(back.labels.upperClothingColor.name, "odd \"colour\" \n");
    EXPECT_EQ(back.velocity, report.velocity);
}

TEST(RecordingWriter, WritesRadarWithoutWhatIsNotKnown) {
    Workbench::RadarReport report;
    report.id = 1;
    report.range = 12.3456;
    report.azimuth = -7.5;
    report.radialSpeed = 0.5;
    EXPECT_EQ(
        toJsonLine(Workbench::SensorFrame{Veskar::Radar, 2.0, 2.0, {report}}),
        R"({"source":"radar","time":2,"tracks":[{"id":1,"range":12.346,"azimuth":-7.5,"radialSpeed":0.5}]})"
        "\n");
}

TEST(RecordingWriter, WritesReadyEstimatesSoThatTheyReadBack) {
    Workbench::ReadyEstimate report;
    report.id = 9;
    report.state << 0.5, -0.25, 0.125, 1.5, 20.0, -3.0;
    report.covariance = Eigen::Matrix<double, 6, 6>::Identity();
    report.covariance(0, 4) = report.covariance(4, 0) = 0.375;
    report.box = Workbench::ImageBox{-1.0, -1.0, 1.0, 1.0};
    const std::string line =
        toJsonLine(Workbench::SensorFrame{Veskar::VideoObject, 1.0, 1.0, {report}});
    const auto frame = std::get<Workbench::SensorFrame>(roundTrip(line).at(0));
    const auto& back = std::get<Workbench::ReadyEstimate>(frame.tracks.at(0));
    EXPECT_EQ(back.state, report.state);
    EXPECT_EQ(back.covariance, report.covariance);
    EXPECT_TRUE(back.box);
}

TEST(RecordingWriter, WritesTruthSoThatItReadsBack) {
    Workbench::TruthObject object;
    object.id = 2;
    object.className = "car";
    object.position = {10.5, -3.25};
    object.velocity = {-1.5, 0.0};
    object.size = Eigen::Vector3d(4.5, 1.75, 1.5);
    object.centre = Eigen::Vector2d(12.0, -3.0);
    object.inRadar = false;
    const auto frame = std::get<Workbench::TruthFrame>(
        roundTrip(toJsonLine(Workbench::TruthFrame{4.0, {object}})).at(0));
    const Workbench::TruthObject& back = frame.objects.at(0);
    EXPECT_EQ(back.position, object.position);
    EXPECT_EQ(back.size, object.size);
    EXPECT_EQ(back.centre, object.centre);
    EXPECT_TRUE(back.inVideo);
    EXPECT_FALSE(back.inRadar);
}
