// SPDX-License-Identifier: Apache-2.0
// From scene descriptions at a broker to fused tracks there, in every form.
#include "cli/live/LiveSite.h"
#include "live/support/Certificates.h"
#include "live/support/OnvifSchema.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <string>

#include <gmock/gmock.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;

namespace VeskarTest {
namespace {

constexpr const char* availability = "veskar/available";

nlohmann::json topic(const std::string& name, int qos) {
    return {{"type", "mqtt"}, {"topic", name}, {"qos", qos}};
}

/// A program with an output of every form.
class LiveFormats : public LiveSite {
protected:
    explicit LiveFormats(const Broker::Options& options = {}, const MqttPeer::Options& peer = {})
        : LiveSite(options, peer) {
        run_["brokers"][0]["availability"] = availability;
        addOutput("lines", "json-lines", topic("veskar/lines", 1));
        addOutput("json", "onvif-json", topic("veskar/json", 2), {{"confirmedOnly", true}});
        addOutput("xml", "onvif-xml", topic("veskar/xml", 0));
        peer_.subscribe("veskar/#");
    }

    /// Publishes the frames of the simulation at their pace.
    void publishSimulation() {
        const Clock::time_point start = Clock::now();
        const double utc = utcNow();
        for (nlohmann::json frame : simulatedFrames()) {
            const double time = frame["time"];
            const double received = frame.value("received", time);
            const auto due = start + std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>(received));
            while (Clock::now() < due) {
                peer_.turn(std::chrono::milliseconds(2));
            }
            frame["time"] = utc + time;
            peer_.publish(frame["source"] == "radar" ? radarTopic : cameraTopic, onvifJson(frame));
        }
    }

    /// Ends the program, and takes what it has published to the end.
    Outcome end(RunningProgram& program) {
        program.send(SIGTERM);
        Outcome outcome = program.finish();
        EXPECT_TRUE(untilAvailability("offline"));
        return outcome;
    }

    bool untilAvailability(const std::string& expected) {
        return heard([&] {
            const std::vector<std::string> told = peer_.on(availability);
            return !told.empty() && told.back() == expected;
        });
    }

    std::set<int> qualities(const std::string& topic) const {
        std::set<int> found;
        for (const Published& message : peer_.received()) {
            if (message.topic == topic) {
                found.insert(message.qos);
            }
        }
        return found;
    }
};

}  // namespace

TEST_F(LiveFormats, FusesCameraAndRadar) {
    const std::string recording = directory_ / "run.jsonl";
    RunningProgram program({"run", configuration(), "--record", recording}, {});
    awaitStart(program);
    ASSERT_TRUE(untilAvailability("online"));
    publishSimulation();
    ASSERT_TRUE(until([](const auto& status) {
        return framesJudged(status["sensor"]["camera"]) == status["sensor"]["camera"]["messages"] &&
               framesJudged(status["sensor"]["radar"]) == status["sensor"]["radar"]["messages"];
    }));
    const nlohmann::json last = status();
    const Outcome outcome = end(program);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(warningsOf(outcome.errors), IsEmpty());
    EXPECT_EQ(last["sensor"]["camera"]["refused"], 0);
    EXPECT_EQ(last["sensor"]["camera"]["framesStray"], 0);
    EXPECT_EQ(last["sensor"]["radar"]["framesStray"], 0);
    expectAccounted(last);

    // Three objects that both sensors see, in every form.
    const Lines lines = peer_.on("veskar/lines");
    ASSERT_THAT(lines.size(), Gt(20U));
    EXPECT_THAT(lines.back(), AllOf(HasSubstr(R"("confirmed":true)"), HasSubstr(R"("class":"car")"),
                                    HasSubstr(R"("sensors":[{"source":"video","id":)"),
                                    HasSubstr(R"({"source":"radar","id":)")));
    // At the end, descriptions delete all objects.
    ASSERT_TRUE(heard([&] { return peer_.on("veskar/json").size() == lines.size() + 1; }));
    const Lines json = peer_.on("veskar/json");
    EXPECT_EQ(occurrences(json.back(), "\"Delete\""), 1U);
    const nlohmann::json scene = nlohmann::json::parse(json[lines.size() - 1])["Frame"][0];
    ASSERT_EQ(scene["Object"].size(), 3U);
    for (const nlohmann::json& object : scene["Object"]) {
        const nlohmann::json& appearance = object["Appearance"];
        EXPECT_TRUE(appearance["Shape"].contains("BoundingBox"));
        EXPECT_TRUE(appearance["SphericalCoordinate"].contains("@Distance"));
        EXPECT_TRUE(appearance["GeoLocation"].contains("@lat"));
        EXPECT_TRUE(appearance.contains("Class"));
        EXPECT_TRUE(object["Behaviour"].contains("Speed"));
    }
    const Lines xml = peer_.on("veskar/xml");
    EXPECT_EQ(xml.size(), lines.size() + 1);
    EXPECT_EQ(faultsBySchema(xml).value_or(""), "");
    EXPECT_THAT(qualities("veskar/lines"), ElementsAre(1));
    EXPECT_THAT(qualities("veskar/json"), ElementsAre(2));
    EXPECT_THAT(qualities("veskar/xml"), ElementsAre(0));

    const Outcome replay = veskar({"replay", recording});
    ASSERT_EQ(replay.status, 0) << replay.errors;
    const Lines replayed = linesOf(replay.output);  // between a header and digests
    ASSERT_THAT(replayed.size(), Gt(22U));
    EXPECT_THAT(Lines(replayed.begin() + 1, replayed.end() - 1), ElementsAreArray(lines));
}

TEST_F(LiveFormats, SaysWhetherItIsThere) {
    {
        RunningProgram program({"run", configuration()}, {});
        ASSERT_TRUE(untilAvailability("online"));
        MqttPeer later(broker_.port());
        later.subscribe(availability);
        while (later.received().empty()) {
            later.turn(std::chrono::milliseconds(5));
        }
        EXPECT_EQ(later.received()[0].text, "online");
        EXPECT_TRUE(later.received()[0].isRetained);
        program.send(SIGKILL);
        EXPECT_EQ(program.finish().status, -SIGKILL);
    }
    // The broker says so instead.
    EXPECT_TRUE(untilAvailability("offline"));
    RunningProgram program({"run", configuration()}, {});
    EXPECT_TRUE(untilAvailability("online"));
    EXPECT_EQ(end(program).status, 0);
}

namespace {

const Certificates& certificates() {
    static const Certificates made;
    return made;
}

Broker::Options guarded() {
    Broker::Options options;
    options.user = "veskar";
    options.password = "open sesame";
    options.authority = certificates().authority();
    options.certificate = certificates().certificate("server");
    options.key = certificates().key("server");
    return options;
}

class GuardedSite : public LiveFormats {
protected:
    GuardedSite()
        : LiveFormats(guarded(), {"veskar", "open sesame", certificates().authority(), ""}) {
        run_["brokers"][0]["credentials"] = secret_;
        run_["brokers"][0]["tls"] = {{"authorities", certificates().authority()}};
        tellPassword("open sesame");
    }

    void tellPassword(const std::string& password) const {
        spill(secret_, "veskar\n" + password + "\n");
        std::filesystem::permissions(secret_, std::filesystem::perms{0600});
    }

    const std::string secret_ = directory_ / "secret";
};

}  // namespace

TEST_F(GuardedSite, IsReachedWithAPasswordOverTls) {
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    EXPECT_TRUE(
        publishUntil([](const auto& status) { return status["output"]["lines"]["written"] > 5; }));
    EXPECT_EQ(status()["broker"]["site"]["connected"], 1);
    const Outcome outcome = end(program);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(warningsOf(outcome.errors), IsEmpty());
    EXPECT_THAT(peer_.on("veskar/lines").size(), Gt(5U));
}

// Until somebody puts the right password into the file; the fusion goes on meanwhile.
TEST_F(GuardedSite, TurnsAWrongPasswordAway) {
    tellPassword("open barley");
    letCameraConnect();
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    EXPECT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["broker"]["site"]["refused"] >= 2 && status["framesOut"] > 5;
    }));
    const nlohmann::json away = status();
    EXPECT_EQ(away["broker"]["site"]["connected"], 0);
    EXPECT_EQ(away["faults"], away["broker"]["site"]["refused"]);
    EXPECT_EQ(away["output"]["lines"]["written"], 0);
    EXPECT_EQ(away["output"]["lines"]["dropped"], 0);
    EXPECT_THAT(warnings(program),
                ElementsAre("veskar: warning: broker 127.0.0.1:" + std::to_string(broker_.port()) +
                            ": refused the connection: Not authorized"));
    tellPassword("open sesame");
    EXPECT_TRUE(until([](const auto& status) {
        return status["broker"]["site"]["connected"] == 1 &&
               status["output"]["lines"]["waiting"] == 0;
    }));
    const nlohmann::json back = status();
    EXPECT_EQ(back["output"]["lines"]["written"], back["output"]["lines"]["accepted"]);
    const std::size_t accepted = back["output"]["lines"]["accepted"];
    EXPECT_TRUE(heard([&] { return peer_.on("veskar/lines").size() >= accepted; }));
    EXPECT_EQ(end(program).status, 0);
}

}  // namespace VeskarTest
