// SPDX-License-Identifier: Apache-2.0
// The same figures on a topic, at a socket and for Prometheus.
#include "cli/live/LiveSite.h"
#include "support/Pipe.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>

#include <gmock/gmock.h>

using testing::StartsWith;

namespace VeskarTest {
namespace {

/// Numbers by "name" or "name{sensor=\"camera\"}", as Prometheus has them.
using Numbers = std::map<std::string, double>;

/// @return "frames_in" for "framesIn"
std::string inSnakeCase(const std::string& name) {
    std::string snake;
    for (const char letter : name) {
        const bool isUpper = std::isupper(static_cast<unsigned char>(letter)) != 0;
        snake += isUpper ? "_" : "";
        snake += static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    }
    return snake;
}

/// @return "uptime_seconds" for "uptime": the document leaves out units that go without saying
std::string metricOf(const std::string& name) {
    static const std::map<std::string, std::string> units{
        {"uptime", "_seconds"},        {"memory", "_bytes"},       {"epoch", "_seconds"},
        {"latencyMedian", "_seconds"}, {"latencyP99", "_seconds"}, {"clockOffset", "_seconds"},
        {"clockJitter", "_seconds"}};
    const auto unit = units.find(name);
    return inSnakeCase(name) + (unit == units.end() ? "" : unit->second);
}

Numbers numbersOf(const nlohmann::json& status) {
    Numbers numbers;
    for (const auto& [name, value] : status.items()) {
        if (value.is_number()) {
            numbers["veskar_" + metricOf(name)] = value;
            continue;
        }
        for (const auto& [instance, members] : value.items()) {
            for (const auto& [member, number] : members.items()) {
                std::ostringstream key;
                if (name == "leftOut") {
                    key << "veskar_left_out{sensor=\"" << instance << "\",term=\"" << member
                        << "\"}";
                } else {
                    key << "veskar_" << name << '_' << metricOf(member) << '{' << name << "=\""
                        << instance << "\"}";
                }
                numbers[key.str()] = number;
            }
        }
    }
    return numbers;
}

/// @return the numbers of a scrape, without the endings of counters
Numbers numbersOf(const std::string& text) {
    Numbers numbers;
    for (const std::string& line : linesOf(text)) {
        if (line[0] == '#') {
            continue;
        }
        const std::size_t space = line.rfind(' ');
        std::string name = line.substr(0, space);
        if (const std::size_t ending = name.find("_total"); ending != std::string::npos) {
            name.erase(ending, 6);
        }
        EXPECT_TRUE(numbers.emplace(name, std::stod(line.substr(space))).second) << name;
    }
    return numbers;
}

/// @return what an HTTP client gets from a port of this host
std::string scrape(std::uint16_t port) {
    const Veskar::FileDescriptor connection = connectTo(port);
    writeAll(connection.get(), "GET /metrics HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
    std::string answer;
    for (std::string piece = readSome(connection.get()); !piece.empty();
         piece = readSome(connection.get())) {
        answer += piece;
    }
    return answer;
}

/// Numbers that go on by themselves lie between those that were asked for before and after.
void expectBetween(const Numbers& before, const Numbers& numbers, const Numbers& after) {
    ASSERT_EQ(numbers.size(), before.size());
    for (const auto& [name, number] : numbers) {
        ASSERT_EQ(before.count(name), 1U) << name;
        // Memory comes and goes; the difference of two clocks is read with some microseconds'
        // noise.
        const double slack = name == "veskar_memory_bytes"    ? 1e6
                             : name == "veskar_epoch_seconds" ? 1e-2
                                                              : 1e-6;
        const auto [least, most] = std::minmax(before.at(name), after.at(name));
        EXPECT_GE(number, least - slack) << name;
        EXPECT_LE(number, most + slack) << name;
    }
}

}  // namespace

class LiveStatus : public LiveSite {};

TEST_F(LiveStatus, IsTheSameEverywhere) {
    const std::uint16_t port = freePort();
    addOutput("lines", "json-lines", {{"type", "mqtt"}, {"topic", "lines"}});
    run_["status"].update({{"interval", 0.1},
                           {"mqtt", {{"topic", "status"}, {"qos", 1}, {"retain", true}}},
                           {"prometheus", "127.0.0.1:" + std::to_string(port)}});
    peer_.subscribe("status");
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    peer_.publish(cameraTopic, "nonsense");
    ASSERT_TRUE(publishUntil([](const auto& status) {
        return status["sensor"]["radar"]["framesTaken"] > 5 && status["framesOut"] > 5;
    }));
    peer_.publish(cameraTopic, "nonsense");
    ASSERT_TRUE(until([](const auto& status) {
        return status["sensor"]["camera"]["refused"] > 0 &&
               status["output"]["lines"]["waiting"] == 0;
    }));

    const Numbers before = numbersOf(status());
    const std::size_t told = peer_.on("status").size();
    // The first one may be from before.
    ASSERT_TRUE(heard([&] { return peer_.on("status").size() >= told + 2; }));
    const std::string answer = scrape(port);
    const Numbers after = numbersOf(status());
    EXPECT_THAT(answer, StartsWith("HTTP/1.0 200 OK\r\n"));
    const std::string end = "\r\n\r\n";
    expectBetween(before, numbersOf(answer.substr(answer.find(end) + end.size())), after);
    expectBetween(before, numbersOf(nlohmann::json::parse(peer_.on("status").at(told + 1))), after);

    EXPECT_GT(before.at("veskar_sensor_messages{sensor=\"camera\"}"), 5);
    EXPECT_GT(before.at("veskar_output_written{output=\"lines\"}"), 5);
    EXPECT_EQ(before.at("veskar_broker_connected{broker=\"site\"}"), 1);
    EXPECT_GT(before.at("veskar_latency_median_seconds"), 0.0);
    EXPECT_GE(before.at("veskar_faults"), 1);
}

}  // namespace VeskarTest
