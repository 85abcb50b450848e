// SPDX-License-Identifier: Apache-2.0
// Logs of ROS 2 as recordings.
#include "Process.h"
#include "export/McapWriter.h"
#include "import/mcap/Cdr.h"
#include "io/OutputFile.h"
#include "support/TemporaryDirectory.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using VeskarTest::Cdr;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::veskar;

namespace {

// The definitions of radar_msgs 0.2, vision_msgs 4.1 and common_interfaces 4.9, without comments.
const std::string headerDefinitions = R"(===
MSG: std_msgs/Header
builtin_interfaces/Time stamp
string frame_id
===
MSG: builtin_interfaces/Time
int32 sec
uint32 nanosec
)";
const std::string vectorDefinitions = R"(===
MSG: geometry_msgs/Point
float64 x
float64 y
float64 z
===
MSG: geometry_msgs/Vector3
float64 x
float64 y
float64 z
)";
const std::string radarTracks = R"(std_msgs/Header header
radar_msgs/RadarTrack[] tracks
===
MSG: radar_msgs/RadarTrack
uint16 NO_CLASSIFICATION=0
uint16 STATIC=1
uint16 DYNAMIC=2
unique_identifier_msgs/UUID uuid
geometry_msgs/Point position
geometry_msgs/Vector3 velocity
geometry_msgs/Vector3 acceleration
geometry_msgs/Vector3 size
uint16 classification
float32[6] position_covariance
float32[6] velocity_covariance
float32[6] acceleration_covariance
float32[6] size_covariance
===
MSG: unique_identifier_msgs/UUID
uint8[16] uuid
)" + vectorDefinitions + headerDefinitions;
const std::string radarScan = R"(std_msgs/Header header
radar_msgs/RadarReturn[] returns
===
MSG: radar_msgs/RadarReturn
float32 range
float32 azimuth
float32 elevation
float32 doppler_velocity
float32 amplitude
)" + headerDefinitions;
const std::string poseDefinitions = R"(===
MSG: geometry_msgs/PoseWithCovariance
geometry_msgs/Pose pose
float64[36] covariance
===
MSG: geometry_msgs/Pose
geometry_msgs/Point position
geometry_msgs/Quaternion orientation
===
MSG: geometry_msgs/Quaternion
float64 x
float64 y
float64 z
float64 w
)" + vectorDefinitions + headerDefinitions;
const std::string detections = R"(std_msgs/Header header
vision_msgs/Detection2D[] detections
===
MSG: vision_msgs/Detection2D
std_msgs/Header header
ObjectHypothesisWithPose[] results
BoundingBox2D bbox
string id
===
MSG: vision_msgs/ObjectHypothesisWithPose
vision_msgs/ObjectHypothesis hypothesis
geometry_msgs/PoseWithCovariance pose
===
MSG: vision_msgs/ObjectHypothesis
string class_id
float64 score
===
MSG: vision_msgs/BoundingBox2D
vision_msgs/Pose2D center
float64 size_x
float64 size_y
===
MSG: vision_msgs/Pose2D
vision_msgs/Point2D position
float64 theta
===
MSG: vision_msgs/Point2D
float64 x
float64 y
)" + poseDefinitions;

constexpr std::int32_t begin = 1'777'636'800;  // UNIX time of the logs, s

Cdr messageAt(double time) {
    const double whole = std::floor(time);
    Cdr cdr;
    cdr.add(begin + static_cast<std::int32_t>(whole));
    cdr.add(static_cast<std::uint32_t>(std::lround((time - whole) * 1e9)));
    cdr.text("sensor");
    return cdr;
}

struct RadarObject {
    std::uint8_t id;
    double x;
    double y;
    double vx;
    double vy;
    std::uint16_t classification = 0;
};

std::string tracksAt(double time, const std::vector<RadarObject>& objects) {
    Cdr cdr = messageAt(time);
    cdr.count(objects.size());
    for (const RadarObject& object : objects) {
        for (int i = 0; i < 16; ++i) {
            cdr.add<std::uint8_t>(object.id);
        }
        cdr.add(object.x).add(object.y).add(0.0).add(object.vx).add(object.vy).add(0.0);
        for (int i = 0; i < 6; ++i) {
            cdr.add(0.0);
        }
        cdr.add(object.classification);
        for (int i = 0; i < 24; ++i) {
            cdr.add(0.25F);
        }
    }
    return cdr.bytes();
}

struct Box {
    std::string id;
    std::array<double, 4> pixels;  ///< centre and size
    std::vector<std::pair<std::string, double>> results;
    double turn = 0.0;  ///< radians
};

std::string detectionsAt(double time, const std::vector<Box>& boxes) {
    Cdr cdr = messageAt(time);
    cdr.count(boxes.size());
    for (const Box& box : boxes) {
        cdr.add(begin).add<std::uint32_t>(0).text("");
        cdr.count(box.results.size());
        for (const auto& [word, score] : box.results) {
            cdr.text(word).add(score);
            for (int i = 0; i < 7 + 36; ++i) {
                cdr.add(0.0);
            }
        }
        cdr.add(box.pixels[0]).add(box.pixels[1]).add(box.turn);
        cdr.add(box.pixels[2]).add(box.pixels[3]);
        cdr.text(box.id);
    }
    return cdr.bytes();
}

class McapProgram : public testing::Test {
protected:
    struct Sent {
        std::string topic;
        std::string type;
        std::string definition;
        double logged;  ///< s since `begin`
        std::string data;
    };

    Outcome import(const std::vector<Sent>& messages, std::vector<std::string> words = {}) {
        {
            Workbench::OutputFile output(log);
            Workbench::McapWriter writer(output, "test");
            std::map<std::string, std::uint16_t> channels;
            for (const Sent& sent : messages) {
                auto channel = channels.find(sent.topic);
                if (channel == channels.end()) {
                    const auto schema = writer.addSchema(sent.type, "ros2msg", sent.definition);
                    channel =
                        channels.emplace(sent.topic, writer.addChannel(schema, sent.topic, "cdr"))
                            .first;
                }
                const auto time = static_cast<std::uint64_t>((begin + sent.logged) * 1e9);
                writer.addMessage(channel->second, time, time, sent.data);
            }
            writer.finish();
            output.commit();
        }
        words.insert(words.begin(), {"import", "mcap", log, "--installation", installation});
        return veskar(words);
    }

    static Sent radar(double time, const std::vector<RadarObject>& objects) {
        return {"/radar/tracks", "radar_msgs/msg/RadarTracks", radarTracks, time + 0.05,
                tracksAt(time, objects)};
    }
    static Sent video(double time, const std::vector<Box>& boxes) {
        return {"/camera/detections", "vision_msgs/msg/Detection2DArray", detections, time + 0.1,
                detectionsAt(time, boxes)};
    }

    static std::vector<json> linesOf(const std::string& text) {
        std::vector<json> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(json::parse(line));
        }
        return lines;
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string log = directory / "log.mcap";
    const std::string installation = dataFile("tiny.jsonl");  // an image of 1920 x 1080
};

TEST_F(McapProgram, TracksAndDetectionsBecomeFrames) {
    const Outcome outcome = import({
        radar(0.25, {{4, 20.0, 0.0, -2.0, 0.0, 32001}, {9, 0.0, 10.0, 0.0, 0.0}}),
        video(0.25, {{"person-7", {1440.0, 810.0, 192.0, 270.0}, {{"person", 0.7}, {"car", 0.2}}}}),
        radar(0.5, {{9, 3.0, 4.0, 3.0, 4.0}}),
    });
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.errors, IsEmpty());
    const std::vector<json> lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0]["epoch"], begin);
    const json& first = lines[1];
    EXPECT_EQ(first["source"], "radar");
    EXPECT_EQ(first["time"], 0.25);
    EXPECT_NEAR(first["received"].get<double>(), 0.3, 1e-6);
    EXPECT_EQ(first["tracks"][0]["id"], 1);
    EXPECT_EQ(first["tracks"][0]["range"], 20.0);
    EXPECT_NEAR(first["tracks"][0]["azimuth"].get<double>(), 0.0, 1e-9);
    EXPECT_EQ(first["tracks"][0]["radialSpeed"], -2.0);
    EXPECT_EQ(first["tracks"][0]["class"], "car");
    EXPECT_NEAR(first["tracks"][1]["azimuth"].get<double>(), -90.0, 1e-6) << "y is to the left";
    const json& image = lines[2];
    EXPECT_EQ(image["source"], "video");
    EXPECT_NEAR(image["received"].get<double>(), 0.35, 1e-6);
    const json& box = image["tracks"][0]["box"];
    EXPECT_NEAR(box["left"].get<double>(), 0.4, 1e-6);
    EXPECT_NEAR(box["right"].get<double>(), 0.6, 1e-6);
    EXPECT_NEAR(box["bottom"].get<double>(), -0.75, 1e-6);
    EXPECT_NEAR(box["top"].get<double>(), -0.25, 1e-6);
    EXPECT_EQ(image["tracks"][0]["class"], "human");
    const json& last = lines[3]["tracks"][0];
    EXPECT_EQ(last["id"], 2) << "the same UUID";
    EXPECT_EQ(last["range"], 5.0);
    EXPECT_EQ(last["radialSpeed"], 5.0);
    EXPECT_EQ(last["speed"], 5.0);
}

TEST_F(McapProgram, ABoxThatIsTurnedBecomesTheUprightOneAroundIt) {
    const double turn = -M_PI / 6.0;
    const Outcome outcome =
        import({video(0.25, {{"seven", {960.0, 540.0, 192.0, 108.0}, {}, turn}})});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const json box = linesOf(outcome.output)[1]["tracks"][0]["box"];
    // Of 960 and 540 pixels to the border of the image.
    const double halfWidth = (96.0 * std::sqrt(0.75) + 54.0 * 0.5) / 960.0;
    const double halfHeight = (96.0 * 0.5 + 54.0 * std::sqrt(0.75)) / 540.0;
    EXPECT_NEAR(box["left"].get<double>(), -halfWidth, 1e-6);
    EXPECT_NEAR(box["right"].get<double>(), halfWidth, 1e-6);
    EXPECT_NEAR(box["bottom"].get<double>(), -halfHeight, 1e-6);
    EXPECT_NEAR(box["top"].get<double>(), halfHeight, 1e-6);
}

TEST_F(McapProgram, WhatHasNoIdsIsTracked) {
    std::vector<Sent> messages;
    for (int i = 0; i < 20; ++i) {
        const double time = 0.1 * i;
        Cdr scan = messageAt(time);
        scan.count(1).add(static_cast<float>(20.0 - time)).add(0.1F).add(0.0F).add(-1.0F).add(9.0F);
        messages.push_back({"/scan", "radar_msgs/msg/RadarScan", radarScan, time, scan.bytes()});
        messages.push_back(video(time, {{"", {960.0 + 5.0 * i, 700.0, 60.0, 150.0}, {}}}));
    }
    const Outcome outcome = import(messages);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const std::vector<json> lines = linesOf(outcome.output);
    EXPECT_EQ(lines[0]["origin"],
              "ROS 2 messages; the tracks of the radar are those of veskar's own tracker; the "
              "tracks of the camera are those of veskar's own tracker");
    int radarLines = 0;
    for (const json& line : lines) {
        if (line.value("source", "") == "radar" && line["time"] > 1.0) {
            ASSERT_EQ(line["tracks"].size(), 1U);
            EXPECT_NEAR(line["tracks"][0]["azimuth"].get<double>(), -5.73, 0.1);
            EXPECT_NEAR(line["tracks"][0]["range"].get<double>(), 20.0 - line["time"].get<double>(),
                        0.3);
            ++radarLines;
        }
    }
    EXPECT_EQ(radarLines, 9);
}

TEST_F(McapProgram, OlderVersionsOfDetectionsAreRead) {
    // As in vision_msgs 2.0: the class in the result itself, a flat centre, another name of the id.
    const std::string older = R"(std_msgs/Header header
Detection2D[] detections
===
MSG: vision_msgs/Detection2D
ObjectHypothesisWithPose[] results
BoundingBox2D bbox
string tracking_id
===
MSG: vision_msgs/ObjectHypothesisWithPose
string id
float64 score
===
MSG: vision_msgs/BoundingBox2D
geometry_msgs/Pose2D center
float64 size_x
float64 size_y
===
MSG: geometry_msgs/Pose2D
float64 x
float64 y
float64 theta
)" + headerDefinitions;
    Cdr cdr = messageAt(0.25);
    cdr.count(1).count(1).text("truck").add(0.8);
    cdr.add(1440.0).add(810.0).add(0.0).add(192.0).add(270.0).text("seven");
    const Outcome outcome =
        import({{"/boxes", "vision_msgs/msg/Detection2DArray", older, 0.3, cdr.bytes()}});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const std::vector<json> lines = linesOf(outcome.output);
    ASSERT_EQ(lines.size(), 2U);
    const json& track = lines[1]["tracks"][0];
    EXPECT_EQ(track["id"], 1);
    EXPECT_EQ(track["class"], "truck");
    EXPECT_EQ(track["classProbability"], 0.8);
    EXPECT_NEAR(track["box"]["left"].get<double>(), 0.4, 1e-6);
    EXPECT_NEAR(track["box"]["top"].get<double>(), -0.25, 1e-6);
    EXPECT_THAT(lines[0]["origin"].get<std::string>(), Not(HasSubstr("own tracker")));
}

TEST_F(McapProgram, OneTopicOfSeveralIsNamed) {
    Sent other = radar(0.25, {{1, 30.0, 0.0, 0.0, 0.0}});
    other.topic = "/rear";
    const std::vector<Sent> messages{radar(0.25, {{1, 20.0, 0.0, 0.0, 0.0}}), other};
    EXPECT_EQ(import(messages).errors, "veskar: " + log +
                                           ": /radar/tracks and /rear: say with --radar which is "
                                           "meant\n");
    const Outcome chosen = import(messages, {"--radar", "/rear"});
    ASSERT_EQ(chosen.status, 0) << chosen.errors;
    EXPECT_EQ(linesOf(chosen.output)[1]["tracks"][0]["range"], 30.0);
    EXPECT_THAT(import(messages, {"--radar", "/front"}).errors,
                HasSubstr("no topic /front of a radar"));
    EXPECT_THAT(import({{"/clock", "rosgraph_msgs/msg/Clock", "", 0.0, ""}}).errors,
                HasSubstr("no topic with radar_msgs/msg/RadarTracks"));
}

TEST_F(McapProgram, WhatCannotBeUsedIsTold) {
    const Outcome outcome = import({radar(0.25, {{1, 0.0, 0.0, 0.0, 0.0}, {2, 9.0, 0.0, 0.0, 0.0}}),
                                    radar(0.25, {{1, 5.0, 0.0, 0.0, 0.0}})});
    ASSERT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("1 message left out: the sensor had one at that time"));
    EXPECT_THAT(outcome.errors, HasSubstr("left out: a radar's track without a place"));
    EXPECT_EQ(linesOf(outcome.output)[1]["tracks"].size(), 1U);
    Sent cut = radar(0.25, {{1, 5.0, 0.0, 0.0, 0.0}});
    cut.data.resize(cut.data.size() - 8);
    EXPECT_EQ(import({cut}).errors,
              "veskar: " + log + ": /radar/tracks: the message is too short\n");
    EXPECT_THAT(import({radar(-begin - 5.0, {})}).errors,
                HasSubstr("/radar/tracks: a stamp of -5 s and 0 ns"));
}

}  // namespace
