// SPDX-License-Identifier: Apache-2.0
// Sensors that send what they should not.
#include "cli/live/LiveSite.h"
#include "support/Pipe.h"

#include <cstddef>
#include <string>

#include <gmock/gmock.h>

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace VeskarTest {
namespace {

constexpr const char* refusal = "veskar: warning: input camera: refused a message: ";

/// A program whose fused frames somebody gets.
class InputFault : public LiveSite {
protected:
    InputFault() {
        addOutput("lines", "json-lines", {{"type", "mqtt"}, {"topic", "lines"}, {"qos", 1}});
    }

    /// Lets camera and radar go on, and the frames of both be fused.
    void expectThatItGoesOn() {
        const nlohmann::json before = status();
        EXPECT_TRUE(publishUntil([&](const auto& status) {
            const auto more = [&](const char* sensor) {
                return status["sensor"][sensor]["framesTaken"].template get<int>() -
                       before["sensor"][sensor]["framesTaken"].template get<int>();
            };
            return more("camera") >= 3 && more("radar") >= 3 &&
                   status["framesOut"] >= before["framesOut"].template get<int>() + 3;
        }));
    }
};

std::string nested(const std::string& begin, const std::string& end, std::size_t depth) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) {
        text += begin;
    }
    for (std::size_t i = 0; i < depth; ++i) {
        text += end;
    }
    return text;
}

/// @return a description in JSON whose only object has these members
std::string jsonObject(const std::string& members) {
    return R"({"Frame":[{"@UtcTime":"2026-05-01T12:00:00Z","Object":[{"@ObjectId":1,)" + members +
           "}]}]}";
}

/// @return a description in XML with this in its frame
std::string xmlFrame(const std::string& content, const std::string& prologue = "") {
    return prologue +
           R"(<tt:MetadataStream xmlns:tt="http://www.onvif.org/ver10/schema"><tt:VideoAnalytics>)"
           R"(<tt:Frame UtcTime="2026-05-01T12:00:00Z">)" +
           content + "</tt:Frame></tt:VideoAnalytics></tt:MetadataStream>";
}

}  // namespace

TEST_F(InputFault, DescriptionsInJson) {
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    expectThatItGoesOn();
    const Lines faulty{
        "",
        "nonsense",
        "[]",
        "{\"Frame\":1}",
        "{\"Frame\":[{\"Object\":[]}]}",
        "{\"Frame\":[{\"@UtcTime\":12}]}",
        "{\"Frame\":[{\"@UtcTime\":\"tomorrow\"}]}",
        "{\"Frame\":[{\"@UtcTime\":\"2026-05-01T12:00:00Z\",\"Object\":[{\"@ObjectId\":[1]}]}]}",
        jsonObject(R"("Behaviour":{"Speed":"fast","Direction":{"@yaw":0}})"),
        jsonObject(R"("Behaviour":{"Speed":NaN,"Direction":{"@yaw":0}})"),
        jsonObject(R"("Behaviour":{"Speed":"NaN","Direction":{"@yaw":0}})"),
        jsonObject(R"("Behaviour":{"Speed":1e999,"Direction":{"@yaw":0}})"),
        jsonObject(R"("Appearance":{"Shape":{"BoundingBox":[0,0,1,1]}})"),
        jsonObject("\"Appearance\":\"\xff\xfe\""),
        "{\"Frame\":" + nested("[", "]", 1'000'000) + "}",
        megabytes(10, '['),
        megabytes(10, 'x'),
    };
    const auto before = status()["sensor"]["camera"]["messages"].get<std::size_t>();
    for (const std::string& text : faulty) {
        peer_.publish(cameraTopic, text);
    }
    ASSERT_TRUE(until([&](const auto& status) {
        return status["sensor"]["camera"]["messages"] == before + faulty.size();
    }));
    EXPECT_EQ(status()["sensor"]["camera"]["refused"], faulty.size());
    EXPECT_EQ(status()["faults"], faulty.size());
    expectThatItGoesOn();
    EXPECT_THAT(warnings(program), ElementsAre(StartsWith(refusal)));
}

TEST_F(InputFault, DescriptionsInXml) {
    run_["sensors"][0]["format"] = "onvif-xml";
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const std::string laughs =
        "<!DOCTYPE a [<!ENTITY a \"ha\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\">]>";
    const auto withSpeed = [](const std::string& speed) {
        return xmlFrame("<tt:Object ObjectId=\"1\"><tt:Behaviour><tt:Speed>" + speed +
                        "</tt:Speed></tt:Behaviour></tt:Object>");
    };
    const Lines faulty{
        "nonsense",
        "<tt:MetadataStream>",
        "<a/>",
        xmlFrame("<tt:Object ObjectId=\"1\">"),
        xmlFrame("&d;", laughs),
        xmlFrame("&d;"),
        xmlFrame("", "<!DOCTYPE a SYSTEM \"file:///etc/passwd\">"),
        xmlFrame(nested("<tt:Object>", "</tt:Object>", 100'000)),
        withSpeed("fast"),
        withSpeed("NaN"),
        withSpeed("INF"),
        withSpeed("1e999"),
        withSpeed("&#0;"),
        xmlFrame("\xff\xfe"),
        megabytes(10, '<'),
        xmlFrame(megabytes(10, '<')),
    };
    ASSERT_TRUE(publishUntil([](const auto& status) {  // its descriptions in JSON are refused
        return status["sensor"]["camera"]["refused"] > 0;
    }));
    const auto before = status()["sensor"]["camera"]["messages"].get<std::size_t>();
    for (const std::string& text : faulty) {
        peer_.publish(cameraTopic, text);
    }
    ASSERT_TRUE(until([&](const auto& status) {
        return status["sensor"]["camera"]["messages"] == before + faulty.size();
    }));
    EXPECT_EQ(status()["sensor"]["camera"]["refused"], before + faulty.size());
    EXPECT_EQ(status()["faults"], before + faulty.size());
    peer_.publish(cameraTopic, xmlFrame("<tt:Object ObjectId=\"1\"/>"));
    EXPECT_TRUE(
        until([](const auto& status) { return status["sensor"]["camera"]["framesTaken"] == 1; }));
    EXPECT_THAT(warnings(program), ElementsAre(StartsWith(refusal)));
}

TEST_F(InputFault, LinesAtASocket) {
    letCameraConnect();
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    const Lines faulty{
        "nonsense",
        R"({"source":"video","time":"now","tracks":[]})",
        R"({"source":"video","time":1e300,"tracks":[]})",
        R"({"source":"video","time":NaN,"tracks":[]})",
        R"({"source":"radar","time":1777636800,"tracks":[]})",
        R"({"source":"video","time":1777636800,"tracks":[{"id":1,"box":{"left":NaN}}]})",
        R"({"source":"video","time":1777636800,"tracks":)" + nested("[", "]", 100'000) + "}",
        megabytes(10, 'x'),
    };
    for (const std::string& text : faulty) {
        writeAll(camera.get(), text + "\n");
    }
    // One that leaves within a line, and one that writes without an end.
    writeAll(connectTo(socketOf("camera")).get(), "{\"source\":");
    writeAll(camera.get(), megabytes(17, ' ') + "\n");
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        const nlohmann::json& sensor = status["sensor"]["camera"];
        return sensor["framesTaken"] > 3 && sensor["dropped"] == 2;
    }));
    const nlohmann::json last = status();
    EXPECT_EQ(last["sensor"]["camera"]["refused"], faulty.size());
    EXPECT_EQ(last["sensor"]["camera"]["publishers"], 1);
    EXPECT_EQ(last["faults"], faulty.size() + 2);
    EXPECT_THAT(warnings(program),
                UnorderedElementsAre(StartsWith(refusal), HasSubstr("its publisher broke it off"),
                                     HasSubstr("longer than 16777216 bytes")));
}

// Spaces make a description long, not wrong.
TEST_F(InputFault, MessagesOfTenMegabytes) {
    run_["sensors"][0]["lateAfter"] = 60;  // a busy machine takes its time for them
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    expectThatItGoesOn();
    const nlohmann::json before = status();
    peer_.publish(cameraTopic, onvifJson(sensorFrame("video")) + megabytes(10, ' '));
    peer_.publish(cameraTopic, onvifJson(sensorFrame("video")) + megabytes(17, ' '));
    EXPECT_TRUE(until([&](const auto& status) {
        return status["sensor"]["camera"]["framesTaken"] ==
                   before["sensor"]["camera"]["framesTaken"].template get<int>() + 1 &&
               status["sensor"]["camera"]["dropped"] == 1;
    }));
    expectThatItGoesOn();
    EXPECT_EQ(status()["broker"]["site"]["lost"], 0);
    EXPECT_THAT(warnings(program), ElementsAre(HasSubstr("longer than 16777216 bytes")));
}

TEST_F(InputFault, AClockJumpsByAnHour) {
    letCameraConnect();
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    ASSERT_TRUE(writeUntil(
        camera, [](const auto& status) { return status["sensor"]["camera"]["framesTaken"] > 5; }));
    int steps = 0;
    for (const double jump : {3600.0, 0.0, -3600.0}) {
        ++steps;
        const int before = status()["sensor"]["camera"]["framesTaken"];
        EXPECT_TRUE(meanwhile(
            [&] {
                nlohmann::json frame = sensorFrame("video");
                frame["time"] = frame["time"].get<double>() + jump;
                writeAll(camera.get(), frame.dump() + "\n");
            },
            [&](const auto& status) {
                const nlohmann::json& sensor = status["sensor"]["camera"];
                return sensor["clockSteps"] == steps && sensor["framesTaken"] > before + 5;
            }));
        EXPECT_NEAR(status()["sensor"]["camera"]["clockOffset"], jump, 1.0);
    }
    const nlohmann::json last = status();
    EXPECT_EQ(last["framesFailed"], 0);
    EXPECT_EQ(last["framesRefused"], 0);
    EXPECT_EQ(framesJudged(last["sensor"]["camera"]), last["sensor"]["camera"]["frames"]);
    const Lines told = warnings(program);
    EXPECT_THAT(told, Each(StartsWith("veskar: warning: camera: ")));
    EXPECT_THAT(told, testing::Contains(HasSubstr("its clock has been set: ")).Times(1));
    EXPECT_THAT(told, testing::Contains(HasSubstr("left out a frame with a wrong time")).Times(1));
}

// Both know an object 1, and their clocks differ: the one that came first is believed.
TEST_F(InputFault, TwoPublishersWithOneId) {
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    expectThatItGoesOn();
    const nlohmann::json before = status();
    int sent = 0;
    const auto grown = [&](const nlohmann::json& status, const char* counter) {
        return status["sensor"]["camera"][counter].get<int>() -
               before["sensor"]["camera"][counter].get<int>();
    };
    EXPECT_TRUE(meanwhile(
        [&] {
            nlohmann::json frame = sensorFrame("video");
            const std::string text = onvifJson(frame);
            peer_.publish(cameraTopic, text);
            peer_.publish(cameraTopic, text);
            frame["time"] = frame["time"].get<double>() - 10.0;
            peer_.publish(cameraTopic, onvifJson(frame));
            ++sent;
        },
        [&](const auto& status) { return sent >= 10 && grown(status, "messages") == 3 * sent; }));
    const nlohmann::json last = status();
    EXPECT_EQ(grown(last, "framesTaken"), sent);
    EXPECT_EQ(last["sensor"]["camera"]["framesRepeated"].get<int>() +
                  last["sensor"]["camera"]["framesStray"].get<int>() +
                  last["sensor"]["camera"]["framesLate"].get<int>() +
                  last["sensor"]["camera"]["framesReordered"].get<int>(),
              2 * sent)
        << last;
    expectThatItGoesOn();
}

// AddressSanitizer keeps what is given back, to see who uses it.
#if defined(__SANITIZE_ADDRESS__)
constexpr double growth = 1e9;
#else
constexpr double growth = 4e6;
#endif

TEST_F(InputFault, AThousandObjectsInAFrame) {
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const auto taken = [this](int frames) {
        return publishUntil(
            [frames](const auto& status) {
                return status["sensor"]["camera"]["framesTaken"] >= frames &&
                       status["sensor"]["radar"]["framesTaken"] >= frames;
            },
            1000);
    };
    ASSERT_TRUE(taken(10));
    const double before = status()["memory"];
    ASSERT_TRUE(taken(40));
    const nlohmann::json last = status();
    EXPECT_LT(last["memory"], before + growth);
    EXPECT_EQ(last["reportsLeftOut"], last["framesIn"].get<int>() * (1000 - 256));
    EXPECT_EQ(last["reportsIn"], last["framesIn"].get<int>() * 256);
    EXPECT_EQ(last["framesFailed"], 0);
    EXPECT_THAT(
        warnings(program),
        UnorderedElementsAre("veskar: warning: left out reports of video: 744 more than 256",
                             "veskar: warning: left out reports of radar: 744 more than 256"));
    expectThatItGoesOn();
}

}  // namespace VeskarTest
