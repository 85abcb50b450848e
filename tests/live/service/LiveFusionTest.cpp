// SPDX-License-Identifier: Apache-2.0
// What is fused live is what a replay of the recording gives.
#include <veskar-host/InputError.h>

#include "host/TestInstallation.h"
#include "host/pipeline/ReplayOptions.h"
#include "live/onvif/UtcTime.h"
#include "live/service/LiveFusion.h"
#include "live/service/SensorFeed.h"
#include "live/support/Received.h"
#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAreArray;
using testing::Gt;
using testing::IsEmpty;
using testing::SizeIs;
using Lines = std::vector<std::string>;
using Steady = std::chrono::steady_clock::time_point;
using Utc = std::chrono::system_clock::time_point;

/// A time of the steady clock long after the start of the system, with a fraction that rounds.
Steady atSecond(double seconds) {
    return Steady(std::chrono::nanoseconds(std::llround((71'234.123456789 + seconds) * 1e9)));
}
Utc utcAt(double seconds) {
    return Utc(std::chrono::nanoseconds(1'777'636'800'123'456'789 + std::llround(seconds * 1e9)));
}

FusionSettings shipped() {
    return {VeskarTest::configuration(), Host::HostParameters::fromConfig(Config::defaultsText())};
}

/// @return what a replay of the recording fuses, without the program's own lines
Lines replayed(const std::string& recording, bool withTags) {
    Lines fused;
    Host::FusionPipeline::Options options = Host::Internal::replayOptions();
    options.withTags = withTags;
    const FusionSettings settings = shipped();
    Host::FusionPipeline pipeline(
        Host::Installation::parse(recording), settings.config,
        [&](const Host::FusedFrame& frame) { fused.push_back(toJsonLine(frame)); },
        settings.parameters, options);
    std::ifstream file(recording);
    std::string line;
    std::getline(file, line);  // the header
    const std::string end = R"({"end":)";
    while (std::getline(file, line)) {
        if (line.compare(0, end.size(), end) == 0) {
            pipeline.advance(std::stod(line.substr(end.size())));
        } else {
            pipeline.push(Host::parseSensorFrame(line));
        }
    }
    return fused;
}

/// A camera that describes scenes as JSON, a radar that writes JSON Lines, and who walks there.
class LiveFusionTest : public testing::Test {
protected:
    static SensorSettings settingsOf(Source source, SensorFormat format) {
        SensorSettings settings;
        settings.name = Host::sourceName(source);
        settings.source = source;
        settings.format = format;
        return settings;
    }

    std::string scene(double seconds) const {
        std::string objects;
        for (int id = 1; id <= 3; ++id) {
            const double x = -0.7 + 0.4 * id + 0.031 * seconds;
            objects += (id == 1 ? "" : ",") + std::string(R"({"@ObjectId":")") +
                       std::to_string(9'000'000'000 + id) +
                       R"(","Appearance":{"Shape":{"BoundingBox":{"@left":)" + std::to_string(x) +
                       R"(,"@right":)" + std::to_string(x + 0.0712345) +
                       R"(,"@bottom":-0.2123456,"@top":0.1},"CenterOfGravity":{"@x":0,"@y":0}},)" +
                       R"("Class":{"Type":[{"#text":"Human","@Likelihood":0.81}]}}})";
        }
        const auto time = utcAt(seconds).time_since_epoch();
        return R"({"Frame":[{"@UtcTime":")" + utcText(time) + R"(","Object":[)" + objects + "]}]}";
    }

    static std::string line(double seconds) {
        const double time =
            std::chrono::duration<double>(utcAt(seconds).time_since_epoch()).count();
        std::string tracks;
        for (int id = 1; id <= 3; ++id) {
            tracks += (id == 1 ? "" : ",") + std::string(R"({"id":)") + std::to_string(id) +
                      R"(,"range":)" + std::to_string(17.0 + 3.0 * id + 0.31234567 * seconds) +
                      R"(,"azimuth":)" + std::to_string(-12.0 + 8.7 * id + seconds / 7.0) +
                      R"(,"speed":1.2345678,"direction":34.56789})";
        }
        char text[32];
        std::snprintf(text, sizeof text, "%.6f", time);
        return std::string(R"({"source":"radar","time":)") + text + R"(,"tracks":[)" + tracks +
               "]}";
    }

    void cameraSends(double seconds, double arrives) {
        const std::string text = scene(seconds);
        now_ = arrives;
        camera_.receive({topic_, text, atSecond(arrives)}, utcAt(arrives));
    }
    void radarSends(double seconds, double arrives) {
        const std::string text = line(seconds);
        now_ = arrives;
        radar_.receive({topic_, text, atSecond(arrives)}, utcAt(arrives));
    }

    /// Runs for some seconds: video at 20 Hz, radar at about 10 Hz, the pipeline's clock at 10 Hz.
    /// @param sees whether a sensor sends at a time
    void run(double duration, const std::function<bool(Source, double)>& sees) {
        std::mt19937 random(5);
        std::uniform_real_distribution<double> delay(0.02, 0.05);
        const int ticks = static_cast<int>(duration * 20.0);
        for (int tick = 0; tick < ticks; ++tick) {
            const double time = tick * 0.05;
            if (sees(VideoObject, time)) {
                cameraSends(time, time + delay(random));
            }
            if (tick % 2 == 1 && sees(Radar, time)) {
                radarSends(time + 0.003, std::max(now_, time + 0.003 + delay(random)));
            }
            now_ = std::max(now_, time + 0.0501234567);
            if (tick % 2 == 0) {
                fusion_.advance(atSecond(now_));
            }
        }
    }

    void expectReplayIsAlike(bool withTags = true) {
        now_ += 0.2501234567;
        fusion_.end(atSecond(now_)).reset();
        ASSERT_THAT(fused_.size(), Gt(20U));
        EXPECT_THAT(replayed(recording_, withTags), ElementsAreArray(fused_));
    }

    const std::string topic_ = "sensor";
    VeskarTest::TemporaryDirectory directory_;
    std::string recording_ = directory_.file("run.jsonl");
    VeskarTest::ToldFaults told_;
    Host::Installation installation_ = VeskarTest::testInstallation();
    double now_ = 0.0;
    Lines fused_;
    std::size_t withTracks_ = 0;
    LiveFusion fusion_{installation_, true,
                       [this](const Host::FusedFrame& frame) {
                           withTracks_ += frame.tracks.empty() ? 0 : 1;
                           fused_.push_back(toJsonLine(frame));
                       },
                       told_.faults};
    SensorFeed camera_{settingsOf(VideoObject, SensorFormat::OnvifJson), installation_,
                       told_.faults, [this](Host::SensorFrame frame) {
                           fusion_.push(std::move(frame), atSecond(now_ + 0.0001234567));
                       }};
    SensorFeed radar_{settingsOf(Radar, SensorFormat::JsonLines), installation_, told_.faults,
                      [this](Host::SensorFrame frame) {
                          fusion_.push(std::move(frame), atSecond(now_ + 0.0001234567));
                      }};

    void begin() {
        fusion_.fuse(shipped());
        fusion_.record(std::make_unique<Host::FrameRecorder>(recording_, installation_));
    }
};

TEST_F(LiveFusionTest, ReplaysToTheSameBytes) {
    begin();
    run(6.0, [](Source, double) { return true; });
    EXPECT_THAT(told_.told(), IsEmpty());
    EXPECT_THAT(withTracks_, Gt(100U));
    EXPECT_EQ(fusion_.taken().taken, 180U);
    expectReplayIsAlike();
}

TEST_F(LiveFusionTest, ReplaysToTheSameBytesWhileSensorsAreSilent) {
    begin();
    run(9.0, [](Source source, double time) {
        return source == VideoObject ? time < 2.0 || time > 4.0
                                     : time < 5.0 || (time > 7.0 && time < 7.5);
    });
    ASSERT_TRUE(fusion_.fused());
    EXPECT_THAT(fusion_.fused()->addedFrames, Gt(4U));
    expectReplayIsAlike();
}

TEST_F(LiveFusionTest, ReplaysToTheSameBytesWithASlowCamera) {
    begin();
    run(9.0, [](Source source, double time) {
        return source == Radar || std::fmod(time + 1e-9, 0.7) < 0.049;
    });
    EXPECT_THAT(fusion_.fused()->addedFrames, Gt(20U));
    expectReplayIsAlike();
}

TEST_F(LiveFusionTest, ReplaysToTheSameBytesBehindTheLastFrame) {
    begin();
    run(3.0, [](Source source, double time) { return source == Radar || time < 2.0; });
    const std::size_t atLastFrame = fused_.size();
    for (int i = 1; i <= 8; ++i) {
        now_ += 0.1;
        fusion_.advance(atSecond(now_));
    }
    EXPECT_THAT(fused_.size(), Gt(atLastFrame));
    expectReplayIsAlike();
}

TEST_F(LiveFusionTest, RecordsWithoutFusing) {
    fusion_.record(std::make_unique<Host::FrameRecorder>(recording_, installation_));
    run(2.0, [](Source, double) { return true; });
    EXPECT_THAT(fused_, IsEmpty());
    EXPECT_FALSE(fusion_.fused());
    fusion_.end(atSecond(now_)).reset();
    EXPECT_THAT(replayed(recording_, true).size(), Gt(20U));
}

TEST_F(LiveFusionTest, FusesWithoutRecording) {
    fusion_.fuse(shipped());
    run(2.0, [](Source, double) { return true; });
    EXPECT_THAT(fused_.size(), Gt(20U));
    EXPECT_FALSE(fusion_.recorded());
}

TEST_F(LiveFusionTest, BeginsAnewWithOtherSettings) {
    begin();
    run(2.0, [](Source, double) { return true; });
    FusionSettings settings = shipped();
    settings.parameters.radarGain = 1.5;
    fusion_.fuse(settings);
    EXPECT_EQ(fusion_.fused()->videoFrames, 0U);
}

TEST_F(LiveFusionTest, RefusesMessagesWithTheirReasonAndGoesOn) {
    begin();
    const std::string bad = "{\"Frame\":[{\"@UtcTime\":1}]}";
    camera_.receive({topic_, bad, atSecond(0.0)}, utcAt(0.0));
    const std::string other = "{\"source\":\"video\",\"time\":1,\"tracks\":[]}";
    radar_.receive({topic_, other, atSecond(0.0)}, utcAt(0.0));
    const std::string header = "{\"format\":\"veskar-recording\",\"version\":1}";
    radar_.receive({topic_, header, atSecond(0.0)}, utcAt(0.0));
    EXPECT_EQ(camera_.refused(), 1U);
    EXPECT_EQ(radar_.refused(), 1U);
    EXPECT_THAT(told_.told(), SizeIs(2));
    run(1.0, [](Source, double) { return true; });
    EXPECT_EQ(camera_.frames(), 20U);
    EXPECT_THAT(withTracks_, Gt(5U));
}

}  // namespace
}  // namespace Veskar::Live
