// SPDX-License-Identifier: Apache-2.0
#include "FusedText.h"
#include "Process.h"
#include "evaluate/FusedFeed.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FusedFeedTest : public testing::Test {
protected:
    /// A file of empty frames.
    void begin(const std::vector<double>& arrivals) {
        const Scenario scenario = readScenario(VeskarTest::dataFile("tiny.scenario.json"));
        std::string text = fusedHeaderLine(Simulation(scenario, 1).header(), "{}", "{}");
        for (const double received : arrivals) {
            FusedFrame frame;
            frame.time = received;
            frame.received = received;
            text += VeskarTest::fusedLine(frame);
        }
        VeskarTest::spill(directory / "fused", text);
        file.emplace(directory / "fused");
        feed.emplace(*file, [this](const FusedFrame& frame) { handed.push_back(frame.received); });
    }

    /// @return arrival times of the frames passed on at a line
    std::vector<double> with(const RecordingLine& line) {
        handed.clear();
        feed->follow(line);
        return handed;
    }
    static RecordingLine sensorAt(double received) {
        return SensorFrame{Veskar::Radar, received, received, {}};
    }
    static RecordingLine truthAt(double time) { return TruthFrame{time, {}}; }

    VeskarTest::TemporaryDirectory directory;
    std::optional<FusedReader> file;
    std::optional<FusedFeed> feed;
    std::vector<double> handed;
};

TEST_F(FusedFeedTest, HandsOutWithASensorsFrameWhatWasMadeOfIt) {
    begin({1.0, 1.0, 1.25, 1.5});
    EXPECT_THAT(with(sensorAt(0.75)), IsEmpty());
    EXPECT_THAT(with(sensorAt(1.0)), ElementsAre(1.0, 1.0));
    EXPECT_THAT(with(sensorAt(1.5)), ElementsAre(1.25, 1.5));
    EXPECT_THAT(with(sensorAt(9.0)), IsEmpty());
}

TEST_F(FusedFeedTest, HandsOutBeforeATruthWhatArrivedEarlier) {
    begin({1.0, 1.25, 1.5});
    EXPECT_THAT(with(truthAt(1.0)), IsEmpty()) << "what arrives at that moment is not yet there";
    EXPECT_THAT(with(truthAt(1.375)), ElementsAre(1.0, 1.25));
    EXPECT_THAT(with(truthAt(2.0)), ElementsAre(1.5));
}

TEST_F(FusedFeedTest, HandsOutTheRestOneByOne) {
    begin({1.0, 1.25});
    EXPECT_TRUE(feed->handOne());
    EXPECT_TRUE(feed->handOne());
    EXPECT_FALSE(feed->handOne());
    EXPECT_THAT(handed, ElementsAre(1.0, 1.25));
}

TEST_F(FusedFeedTest, AnEmptyFileHasNothingToHandOut) {
    begin({});
    EXPECT_THAT(with(sensorAt(9.0)), IsEmpty());
}

}  // namespace
}  // namespace Workbench
