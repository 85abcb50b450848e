// SPDX-License-Identifier: Apache-2.0
// A corrected copy of a recording.
#include "KnownErrors.h"
#include "Process.h"
#include "calibrate/Correction.h"
#include "recording/RecordingReader.h"

#include <gtest/gtest.h>

using namespace Workbench;

namespace {

class CorrectionTest : public testing::Test {
protected:
    /// A video frame at 1.0 s and a radar frame at 1.1 s, which arrives at once, up to 1.5 s.
    std::vector<SensorFrame> copied(const Placement& correction) {
        const RecordingHeader header =
            VeskarTest::simulated("perimeter", 1.0, [](Scenario&) {}).header;
        RadarReport heard;
        heard.range = 20.0;
        heard.azimuth = 10.0;
        heard.radialSpeed = 0.0;
        const SensorFrame radar{Veskar::Radar, 1.1, 1.1, {heard}};
        const SensorFrame video{Veskar::VideoObject, 1.0, 1.05, {VideoReport()}};
        VeskarTest::spill(directory / "recording.jsonl", toJsonLine(header) + toJsonLine(video) +
                                                             toJsonLine(radar) + "{\"end\":1.5}\n");
        std::string text;
        applyCorrection(directory / "recording.jsonl", correction, 0.1,
                        [&](const std::string& line) { text += line; });
        VeskarTest::spill(directory / "copy.jsonl", text);
        RecordingReader reader(directory / "copy.jsonl");
        std::vector<SensorFrame> frames;
        while (const auto line = reader.next()) {
            frames.push_back(std::get<SensorFrame>(*line));
        }
        end = reader.end().value_or(0.0);
        return frames;
    }

    VeskarTest::TemporaryDirectory directory;
    double end = 0.0;
};

TEST_F(CorrectionTest, MovesTheStampsOfTheRadarOnly) {
    Placement correction = Placement::Zero();
    correction[indexOf(MountingParameter::Lag)] = 0.3;
    correction[indexOf(MountingParameter::Drift)] = 0.01;
    const std::vector<SensorFrame> frames = copied(correction);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_NEAR(frames[0].time, 1.0, 1e-9);
    // Late by 0.3 s in the middle, at 0.1 s, and by 0.01 s more a second later.
    EXPECT_NEAR(frames[1].time, 1.1 - 0.31, 1e-6);
    EXPECT_NEAR(frames[1].received, 1.1, 1e-6);
    EXPECT_NEAR(end, 1.5, 1e-6);
}

TEST_F(CorrectionTest, LetsNoFrameArriveBeforeItIsMeasured) {
    Placement correction = Placement::Zero();
    correction[indexOf(MountingParameter::Lag)] = -0.7;
    const std::vector<SensorFrame> frames = copied(correction);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_NEAR(frames[1].time, 1.8, 1e-6);
    EXPECT_GE(frames[1].received, frames[1].time);
    EXPECT_GE(end, frames[1].received);
}

TEST_F(CorrectionTest, ScalesTheAzimuths) {
    Placement correction = Placement::Zero();
    correction[indexOf(MountingParameter::AzimuthScale)] = 0.05;
    const std::vector<SensorFrame> frames = copied(correction);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_NEAR(std::get<RadarReport>(frames[1].tracks.at(0)).azimuth, 10.5, 1e-6);
}

}  // namespace
