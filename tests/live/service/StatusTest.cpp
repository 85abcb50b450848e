// SPDX-License-Identifier: Apache-2.0
#include "live/service/Latency.h"
#include "live/service/MetricsServer.h"
#include "live/service/StatusReport.h"
#include "live/support/Client.h"
#include "live/support/LoopUntil.h"
#include "live/support/Received.h"
#include "support/Pipe.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

namespace Veskar::Live {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using Kind = StatusReport::Kind;
using Unit = StatusReport::Unit;

StatusReport sampleReport() {
    StatusReport report;
    report.add("uptime", 12.5, Kind::Gauge, Unit::Seconds);
    report.add("framesIn", 250, Kind::Counter);
    report.add("cpuSeconds", 0.5, Kind::Counter, Unit::Seconds);
    report.add("sensor", "camera", "messages", 3, Kind::Counter);
    report.add("sensor", "camera", "clockOffset", -0.25, Kind::Gauge, Unit::Seconds);
    report.add("sensor", "a \"radar\"", "messages", 4, Kind::Counter);
    report.add("broker", "site", "connected", 1, Kind::Gauge);
    return report;
}

TEST(StatusReport, IsADocument) {
    EXPECT_EQ(sampleReport().toJson(),
              "{\"uptime\":12.5,\"framesIn\":250,\"cpuSeconds\":0.5,\"sensor\":{\"camera\":{"
              "\"messages\":3,"
              "\"clockOffset\":-0.25},\"a \\\"radar\\\"\":{\"messages\":4}},"
              "\"broker\":{\"site\":{\"connected\":1}}}");
    EXPECT_EQ(StatusReport().toJson(), "{}");
}

TEST(StatusReport, IsATextForPrometheus) {
    EXPECT_EQ(sampleReport().toPrometheus(),
              "# TYPE veskar_uptime_seconds gauge\nveskar_uptime_seconds 12.5\n"
              "# TYPE veskar_frames_in_total counter\nveskar_frames_in_total 250\n"
              "# TYPE veskar_cpu_seconds_total counter\nveskar_cpu_seconds_total 0.5\n"
              "# TYPE veskar_sensor_messages_total counter\n"
              "veskar_sensor_messages_total{sensor=\"camera\"} 3\n"
              "veskar_sensor_messages_total{sensor=\"a \\\"radar\\\"\"} 4\n"
              "# TYPE veskar_sensor_clock_offset_seconds gauge\n"
              "veskar_sensor_clock_offset_seconds{sensor=\"camera\"} -0.25\n"
              "# TYPE veskar_broker_connected gauge\n"
              "veskar_broker_connected{broker=\"site\"} 1\n");
}

TEST(StatusReport, NamesWhatWasLeftOut) {
    StatusReport report;
    report.addLeftOut("camera", "Class Fire", 3);
    report.addLeftOut("camera", "Class \n\x1b\"", 1);
    report.addLeftOut("radar", "Shape of a radar", 2);
    EXPECT_EQ(report.toJson(),
              "{\"leftOut\":{\"camera\":{\"Class Fire\":3,\"Class \\n\\u001b\\\"\":1},"
              "\"radar\":{\"Shape of a radar\":2}}}");
    EXPECT_EQ(report.toPrometheus(),
              "# TYPE veskar_left_out_total counter\n"
              "veskar_left_out_total{sensor=\"camera\",term=\"Class Fire\"} 3\n"
              "veskar_left_out_total{sensor=\"camera\",term=\"Class \\n\x1b\\\"\"} 1\n"
              "veskar_left_out_total{sensor=\"radar\",term=\"Shape of a radar\"} 2\n");
}

TEST(Latency, KeepsTheLastOnes) {
    Latency latency;
    EXPECT_EQ(latency.quantile(0.5), 0.0);
    for (int i = 0; i < 5000; ++i) {
        latency.add(i < 3000 ? 1e6 : i % 100);
    }
    EXPECT_NEAR(latency.quantile(0.5), 49.5, 2.0);
    EXPECT_NEAR(latency.quantile(0.99), 98.0, 1.0);
    EXPECT_EQ(latency.quantile(1.0), 99.0);
}

class MetricsServerTest : public testing::Test {
protected:
    /// @return all that a connection gets, to its end
    std::string ask(const std::string& request) {
        const FileDescriptor connection = VeskarTest::connectTo(server_.port());
        VeskarTest::writeAll(connection.get(), request);
        std::string answer;
        bool hasEnded = false;
        EXPECT_TRUE(VeskarTest::loopUntil(loop_, [&] {
            pollfd readable{connection.get(), POLLIN, 0};
            if (::poll(&readable, 1, 0) > 0) {
                const std::string piece = VeskarTest::readSome(connection.get());
                hasEnded = piece.empty();
                answer += piece;
            }
            return hasEnded;
        }));
        return answer;
    }

    EventLoop loop_;
    VeskarTest::ToldFaults told_;
    std::string text_ = "veskar_uptime 1\n";
    MetricsServer server_{loop_, NetworkPlace{"127.0.0.1", 0}, told_.faults,
                          [this] { return text_; }};
};

TEST_F(MetricsServerTest, AnswersWithTheText) {
    const std::string answer = ask("GET /metrics HTTP/1.1\r\nHost: localhost\r\n\r\n");
    EXPECT_THAT(answer, StartsWith("HTTP/1.0 200 OK\r\n"));
    EXPECT_THAT(answer, HasSubstr("Content-Length: 16\r\n"));
    EXPECT_THAT(answer, testing::EndsWith("\r\n\r\n" + text_));
}

TEST_F(MetricsServerTest, AnswersWithLongTexts) {
    text_.assign(std::size_t{4} << 20, 'x');
    EXPECT_THAT(ask("GET / HTTP/1.0\r\n\r\n").size(), testing::Gt(text_.size()));
}

TEST_F(MetricsServerTest, RefusesEverythingElse) {
    EXPECT_THAT(ask("POST / HTTP/1.0\r\n\r\n"), StartsWith("HTTP/1.0 405 "));
    EXPECT_THAT(ask(std::string(10'000, 'x')), IsEmpty());
}

}  // namespace
}  // namespace Veskar::Live
