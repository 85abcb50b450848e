// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>

#include "Installation.h"
#include "Process.h"
#include "import/Results.h"
#include "replay/FusedReader.h"
#include "support/TemporaryDirectory.h"

#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using Workbench::FusedFrame;
using Workbench::ResultRow;

namespace {

std::vector<ResultRow> rows;  // NOLINT: read through a plain function

class Results : public testing::Test {
protected:
    void SetUp() override {
        rows.clear();
        header.truth = Workbench::TruthKind::Complete;
        const auto truthAt = [](const std::string& time) {
            return R"({"source":"truth","time":)" + time + R"(,"objects":[]})" + "\n";
        };
        VeskarTest::spill(options.recording, toJsonLine(header) + truthAt("0.5") + truthAt("1.5"));
    }

    static void addRow(int frame, std::int32_t id, const Eigen::Vector2d& position) {
        ResultRow row;
        row.frame = frame;
        row.id = id;
        row.position = position;
        rows.push_back(row);
    }

    std::vector<FusedFrame> imported(bool isAtCamera = false) {
        {
            Workbench::OutputFile output(directory / "out");
            words = Workbench::importResults(
                options, {[](const std::string&) { return rows; }, isAtCamera}, output);
            output.commit();
        }
        Workbench::FusedReader reader(directory / "out");
        std::vector<FusedFrame> frames;
        while (auto frame = reader.next()) {
            frames.push_back(std::move(*frame));
        }
        EXPECT_TRUE(reader.digests());
        return frames;
    }

    VeskarTest::TemporaryDirectory directory;
    Workbench::RecordingHeader header = VeskarTest::installation();
    Workbench::ResultsOptions options{"results.txt", directory / "recording.jsonl", std::nullopt};
    std::vector<std::string> words;
};

TEST_F(Results, AreKnownAtTheMomentsOfTruth) {
    addRow(0, 7, {20.0, 1.0});
    rows.back().confidence = -1.0;
    addRow(1, 7, {22.0, 2.0});
    rows.back().confidence = 0.75;
    const auto frames = imported();
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(frames[0].time, 0.5);
    EXPECT_LT(frames[0].received, 0.5);
    EXPECT_EQ(frames[1].time, 1.5);
    EXPECT_TRUE(frames[0].tracks.at(0).confirmed);
    EXPECT_EQ(frames[0].tracks.at(0).ground->velocity, Eigen::Vector2d(0.0, 0.0));
    EXPECT_EQ(frames[1].tracks.at(0).ground->velocity, Eigen::Vector2d(2.0, 1.0));
    EXPECT_EQ(frames[1].tracks.at(0).age, 1.0);
    EXPECT_TRUE(std::isnan(frames[0].tracks.at(0).probability));
    EXPECT_EQ(frames[1].tracks.at(0).probability, 0.75);
}

TEST_F(Results, HaveTheirRateWhenItIsStated) {
    options.frameRate = 4.0;
    addRow(2, 7, {20.0, 1.0});
    const auto frames = imported();
    ASSERT_EQ(frames.size(), 3);
    EXPECT_TRUE(frames[1].tracks.empty());
    EXPECT_EQ(frames[2].time, 0.5);
    EXPECT_EQ(frames[2].tracks.size(), 1);
}

TEST_F(Results, AreMovedFromTheCameraToTheDevice) {
    header.camera.mounting.position = {1.0, 0.5, 5.0};
    SetUp();
    addRow(0, 7, {20.0, 1.0});
    EXPECT_EQ(imported(true)[0].tracks.at(0).ground->position, Eigen::Vector2d(21.0, 1.5));
}

TEST_F(Results, BoxesStandOnTheGround) {
    const Workbench::Projection camera(header.camera.build());
    const Eigen::Vector2d foot = camera.position({25.0, 3.0, 0.0});
    const auto& [width, height] = header.camera.resolution;
    const double x = 0.5 * (foot[0] + 1.0) * width;
    const double y = 0.5 * (1.0 - foot[1]) * height;
    ResultRow row;
    row.box = {x - 20.0, y - 50.0, x + 20.0, y};
    rows.push_back(row);
    row.id = 1;
    row.box = {x - 20.0, -5000.0, x + 20.0, -4000.0};  // far above the horizon
    rows.push_back(row);
    const auto tracks = imported()[0].tracks;
    EXPECT_NEAR(tracks.at(0).ground->position[0], 25.0, 2e-3);
    EXPECT_NEAR(tracks.at(0).ground->position[1], 3.0, 2e-3);
    EXPECT_NEAR(tracks.at(0).box.bottom, foot[1], 1e-5);
    EXPECT_FALSE(tracks.at(1).ground);
}

TEST_F(Results, HaveClassesInTheWordsOfTheVocabulary) {
    addRow(0, 1, {20.0, 1.0});
    rows.back().className = "Pedestrian";
    addRow(0, 2, {20.0, 2.0});
    rows.back().className = "Zeppelin";
    const auto tracks = imported()[0].tracks;
    EXPECT_EQ(tracks.at(0).labels.objectClass.name, "human");
    EXPECT_EQ(tracks.at(1).labels.objectClass.name, "unknown");
    EXPECT_THAT(words, ElementsAre("Zeppelin"));
}

}  // namespace
