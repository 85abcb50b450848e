// SPDX-License-Identifier: Apache-2.0
// Brokers that come and go.
#include "cli/live/LiveSite.h"
#include "live/support/LoopUntil.h"
#include "live/support/Proxy.h"
#include "support/Pipe.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::Gt;
using testing::HasSubstr;
using testing::StartsWith;

namespace VeskarTest {
namespace {

/// A camera at a socket, a radar at the broker, and tracks at the broker.
class BrokerFault : public LiveSite {
protected:
    BrokerFault() {
        letCameraConnect();
        addOutput("lines", "json-lines", {{"type", "mqtt"}, {"topic", "lines"}, {"qos", 1}});
        peer_.subscribe("lines");
    }

    /// The program finds the broker when the peer is there already, who thus gets everything.
    void bringBrokerBack(const RunningProgram& program) {
        program.send(SIGSTOP);
        broker_.restart();
        peer_.reconnect();
        program.send(SIGCONT);
    }

    std::string warning(const std::string& text) const {
        return "veskar: warning: broker 127.0.0.1:" + std::to_string(broker_.port()) + ": " + text;
    }
};

/// @return the times of fused frames
std::vector<double> timesOf(const Lines& lines) {
    std::vector<double> times;
    for (const std::string& line : lines) {
        times.push_back(nlohmann::json::parse(line)["time"]);
    }
    return times;
}

}  // namespace

TEST_F(BrokerFault, TheFusionGoesOnWhileTheBrokerIsAway) {
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    ASSERT_TRUE(writeUntil(
        camera, [](const auto& status) { return status["output"]["lines"]["written"] >= 5; }));
    broker_.kill();
    // More than may wait.
    constexpr int away = 1300;
    for (int i = 0; i < away; ++i) {
        writeAll(camera.get(), sensorFrame("video").dump() + "\n");
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ASSERT_TRUE(until([](const auto& status) {
        const nlohmann::json& sensor = status["sensor"]["camera"];
        return sensor["messages"] >= away && status["output"]["lines"]["dropped"] > 0;
    }));
    const nlohmann::json alone = status();
    EXPECT_EQ(alone["broker"]["site"]["lost"], 1);
    EXPECT_EQ(framesJudged(alone["sensor"]["camera"]), alone["sensor"]["camera"]["messages"]);
    EXPECT_EQ(alone["framesFailed"], 0);
    EXPECT_LE(alone["output"]["lines"]["waiting"], 1000 + 20);
    expectAccounted(alone);

    const std::size_t before = peer_.on("lines").size();
    bringBrokerBack(program);
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["broker"]["site"]["connections"] == 2 &&
               status["output"]["lines"]["waiting"] == 0;
    }));
    const nlohmann::json back = status();
    expectAccounted(back);
    EXPECT_EQ(back["output"]["lines"]["failed"], 0);
    // Everything that was written has come: the newest ones, in their order.
    const auto written = back["output"]["lines"]["written"].get<std::size_t>() -
                         alone["output"]["lines"]["written"].get<std::size_t>();
    EXPECT_THAT(written, Gt(990U));
    ASSERT_TRUE(heard([&] { return peer_.on("lines").size() >= before + written; }));
    const std::vector<double> times = timesOf(peer_.on("lines"));
    EXPECT_TRUE(std::is_sorted(times.begin() + static_cast<long>(before), times.end()));
    const Lines told = warnings(program);
    EXPECT_THAT(told, ElementsAre(StartsWith(warning("lost the connection: ")),
                                  StartsWith(warning("cannot connect: "))));
    EXPECT_EQ(back["faults"].get<int>(), back["broker"]["site"]["lost"].get<int>() +
                                             back["broker"]["site"]["failed"].get<int>());
    program.send(SIGTERM);
    EXPECT_EQ(program.finish().status, 0);
}

TEST_F(BrokerFault, MayComeAfterTheProgram) {
    broker_.kill();
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["broker"]["site"]["failed"] >= 2 && status["framesOut"] >= 5;
    }));
    bringBrokerBack(program);
    ASSERT_TRUE(until([](const auto& status) {
        return status["output"]["lines"]["written"] == status["output"]["lines"]["accepted"];
    }));
    const auto written = status()["output"]["lines"]["written"].get<std::size_t>();
    EXPECT_TRUE(heard([&] { return peer_.on("lines").size() >= written; }));
    EXPECT_THAT(warnings(program), ElementsAre(warning("cannot connect: Connection refused")));
}

// Half of a message of 10 MB has come when the connection ends.
TEST_F(BrokerFault, AConnectionMayBeCutInMidMessage) {
    Veskar::Live::EventLoop loop;
    Proxy proxy(loop, broker_.port());
    run_["brokers"][0]["port"] = proxy.port();
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    const auto sendUntil = [&](const Condition& condition) {
        return loopUntil(loop, [&] {
            writeAll(camera.get(), sensorFrame("video").dump() + "\n");
            peer_.publish(radarTopic, onvifJson(sensorFrame("radar")));
            loop.turn(std::chrono::milliseconds(20));
            return condition(status());
        });
    };
    ASSERT_TRUE(sendUntil([](const auto& status) {
        return status["sensor"]["radar"]["framesTaken"] > 5 &&
               status["output"]["lines"]["written"] > 5;
    }));
    const std::size_t passed = proxy.received();
    peer_.beginToPublish(radarTopic, megabytes(10, ' '));
    ASSERT_TRUE(loopUntil(loop, [&] {
        peer_.turn(std::chrono::milliseconds(0));
        return proxy.received() > passed + 5'000'000;
    }));
    proxy.cut();
    const auto before = status()["sensor"]["radar"]["framesTaken"].get<int>();
    EXPECT_TRUE(sendUntil([&](const auto& status) {
        return status["broker"]["site"]["connections"] == 2 &&
               status["sensor"]["radar"]["framesTaken"] > before + 5;
    }));
    ASSERT_TRUE(loopUntil(loop, [&] { return status()["output"]["lines"]["waiting"] == 0; }));
    const nlohmann::json back = status();
    EXPECT_EQ(back["broker"]["site"]["lost"], 1);
    EXPECT_EQ(back["sensor"]["radar"]["refused"], 0);
    EXPECT_EQ(back["output"]["lines"]["dropped"], 0);
    EXPECT_EQ(back["output"]["lines"]["failed"], 0);
    expectAccounted(back);
    EXPECT_THAT(warnings(program),
                ElementsAre(HasSubstr(std::to_string(proxy.port()) + ": lost the connection: ")));
}

// As brokers do when somebody else takes a client's name.
TEST_F(BrokerFault, ANamesakeDrivesItAwayForAMoment) {
    run_["brokers"][0]["clientId"] = "gate";
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor camera = connectTo(socketOf("camera"));
    ASSERT_TRUE(writeUntil(
        camera, [](const auto& status) { return status["output"]["lines"]["written"] > 3; }));
    const MqttPeer namesake(broker_.port(), {"", "", "", "gate"});
    ASSERT_TRUE(writeUntil(camera, [](const auto& status) {
        return status["broker"]["site"]["connections"] == 2 &&
               status["output"]["lines"]["waiting"] == 0;
    }));
    const nlohmann::json back = status();
    EXPECT_EQ(back["broker"]["site"]["lost"], 1);
    EXPECT_EQ(back["output"]["lines"]["dropped"], 0);
    expectAccounted(back);
    EXPECT_THAT(warnings(program), ElementsAre(StartsWith(warning("lost the connection: "))));
}

}  // namespace VeskarTest
