// SPDX-License-Identifier: Apache-2.0
// Runs `veskar simulate --publish` beside `veskar run`, over a real broker.
#include "Process.h"
#include "SourceDirectory.h"
#include "live/support/Broker.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using testing::AllOf;
using testing::ElementsAreArray;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using VeskarTest::Outcome;
using VeskarTest::RunningProgram;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

namespace {

using Frames = std::vector<nlohmann::json>;

const std::string perimeter = VESKAR_SOURCE_DIR "/config/scenarios/perimeter.json";

/// @return the lines of a text that have tracks
Frames framesIn(const std::string& text) {
    Frames frames;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        nlohmann::json frame = nlohmann::json::parse(line);
        if (frame.contains("tracks")) {
            frames.push_back(std::move(frame));
        }
    }
    return frames;
}

/// @return the frames of one sensor
Frames of(const std::string& source, const Frames& frames) {
    Frames own;
    for (const nlohmann::json& frame : frames) {
        if (frame["source"] == source) {
            own.push_back(frame);
        }
    }
    return own;
}

/// The shipped configuration, with a broker at another port.
class PublishProgram : public testing::Test {
protected:
    PublishProgram() {
        run_["brokers"][0]["port"] = broker_.port();
        run_["outputs"] = nlohmann::json::array();
        run_["outputs"].push_back({{"format", "json-lines"}, {"to", {{"type", "stdout"}}}});
        run_.erase("status");
    }

    std::string configuration() const {
        std::string path = directory_ / "run.json";
        spill(path, run_.dump(2));
        return path;
    }

    const VeskarTest::TemporaryDirectory directory_;
    VeskarTest::Broker broker_;
    nlohmann::json run_ = nlohmann::json::parse(slurp(VESKAR_SOURCE_DIR "/config/run-demo.json"));
};

}  // namespace

TEST_F(PublishProgram, StandsInForTheSensorsOfALiveFusion) {
    run_["sensors"][1]["format"] = "json-lines";
    const std::string run = configuration();
    const std::string recording = directory_ / "run.jsonl";
    RunningProgram program({"run", run, "--record", recording}, {});
    program.awaitIdle();
    const std::string simulated = directory_ / "simulated.jsonl";
    const Outcome simulate =
        veskar({"simulate", perimeter, "--duration", "3", "--publish", run, "-o", simulated});
    EXPECT_EQ(simulate.status, 0) << simulate.errors;
    EXPECT_THAT(simulate.output, IsEmpty());
    const Frames sent = framesIn(slurp(simulated));
    // The recorder writes on a thread of its own.
    const auto isRecorded = [&] { return framesIn(slurp(recording)).size() >= sent.size() - 2; };
    program.await(isRecorded);
    program.send(SIGTERM);
    const Outcome fused = program.finish();
    EXPECT_EQ(fused.status, 0) << fused.errors;

    // What was simulated is what came in.
    const Frames recorded = framesIn(slurp(recording));
    for (const char* source : {"video", "radar"}) {
        const Frames out = of(source, sent);
        const Frames in = of(source, recorded);
        ASSERT_THAT(in.size(), AllOf(Gt(25U), Gt(out.size() - 2)));
        std::size_t tracks = 0;
        for (std::size_t i = 0; i < in.size(); ++i) {
            EXPECT_NEAR(in[i]["time"].get<double>() - in[0]["time"].get<double>(),
                        out[i]["time"].get<double>() - out[0]["time"].get<double>(), 0.5);
            tracks += in[i]["tracks"].size();
        }
        EXPECT_THAT(tracks, Gt(25U));
    }
    EXPECT_EQ(of("radar", recorded)[20]["tracks"], of("radar", sent)[20]["tracks"]);
    const Frames sentVideo = of("video", sent);
    std::vector<nlohmann::json> seen;
    for (const nlohmann::json& track : sentVideo[20]["tracks"]) {
        if (track.value("confirmed", true) && track.value("coasting", 0.0) == 0.0) {
            seen.push_back(track["box"]);
        }
    }
    const Frames recordedVideo = of("video", recorded);
    std::vector<nlohmann::json> received;
    for (const nlohmann::json& track : recordedVideo[20]["tracks"]) {
        received.push_back(track["box"]);
    }
    EXPECT_THAT(received, IsSupersetOf(seen));
    EXPECT_THAT(seen.size(), Gt(0U));

    const Frames tracks = framesIn(fused.output);
    EXPECT_THAT(tracks.size(), Gt(50U));
    EXPECT_THAT(tracks.back()["tracks"].size(), Gt(0U));
    const Outcome replay = veskar({"replay", recording});
    EXPECT_EQ(replay.status, 0) << replay.errors;
    EXPECT_THAT(tracks, ElementsAreArray(framesIn(replay.output)));
}

TEST_F(PublishProgram, PublishesAtThePaceOfTheSensors) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(
        veskar({"simulate", perimeter, "--duration", "1.5", "--publish", configuration()}).status,
        0);
    EXPECT_THAT(std::chrono::steady_clock::now() - begin, Gt(std::chrono::milliseconds(1200)));
}

TEST_F(PublishProgram, SaysToWhichInputsItCannotPublish) {
    run_["sensors"][0]["input"] = {{"type", "stdin"}};
    const std::string path = configuration();
    const Outcome outcome = veskar({"simulate", perimeter, "--publish", path});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors, "veskar: " + path +
                                  ": the input of sensor camera is no topic of a broker, to which "
                                  "frames can be published\n");
    run_["sensors"] = 1;
    EXPECT_THAT(veskar({"simulate", perimeter, "--publish", configuration()}).errors,
                HasSubstr(path + ": sensors: "));
}

TEST_F(PublishProgram, ShippedConfigurationIsThatOfItsScene) {
    const std::string simulated = veskar({"simulate", perimeter, "--duration", "0.001"}).output;
    const auto header = nlohmann::json::parse(simulated.substr(0, simulated.find('\n')));
    for (const char* part : {"camera", "radar", "site"}) {
        EXPECT_EQ(run_["installation"][part], header[part]);
    }
    EXPECT_EQ(veskar({"check", VESKAR_SOURCE_DIR "/config/run-demo.json"}).status, 0);
}
