// SPDX-License-Identifier: Apache-2.0
// Annotations inside the host application; the path of this program makes it the host.
#include <veskar/DetectionPriority.h>
#include <veskar/HostApplication.h>
#include <veskar/VODAnnotationClient.h>

#include "support/CommaLocale.h"
#include "support/DatagramReceiver.h"
#include "support/ExecutableLink.h"
#include "support/OwnProcess.h"
#include "support/PrivateBus.h"
#include "support/SocketCounter.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Source;
using Veskar::VODAnnotation::Annotation;
using Veskar::VODAnnotation::VODAnnotationClient;

namespace {

class AnnotationsInTheHost : public testing::Test {
protected:
    AnnotationsInTheHost()
        : path("/tmp/vod_annotation"), receiver(std::make_unique<DatagramReceiver>(path.get())) {
        leaveSystemBus();
    }

    /// @return what the receiver gets for one annotation
    std::vector<std::string> send(const Annotation& annotation) {
        VODAnnotationClient::getInstance().send(annotation);
        return receiver->receive();
    }

    SyslogCapture log;
    SocketPath path;
    std::unique_ptr<DatagramReceiver> receiver;
};

std::int64_t millisecondsNow() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

}  // namespace

TEST_F(AnnotationsInTheHost, KnowTheirHost) {
    EXPECT_TRUE(Veskar::calledFromQWR());
}

TEST_F(AnnotationsInTheHost, AreCompactJson) {
    EXPECT_THAT(
        send({12, "human", {0.41, 0.05, 0.33, 0.12}, 1700000000123}),
        ElementsAre(
            R"({"id":12,"type":"human","bbox":[0.41,0.05,0.33,0.12],"timestamp":1700000000123})"));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(AnnotationsInTheHost, WriteNumbersWithSixDigitsInTheShorterNotation) {
    EXPECT_THAT(
        send({-2147483647,
              "unknown",
              {-0.123456789, 1.0, 1e-7, 1234567.0},
              std::numeric_limits<std::int64_t>::min()}),
        ElementsAre(R"({"id":-2147483647,"type":"unknown","bbox":[-0.123457,1,1e-07,1.23457e+06],)"
                    R"("timestamp":-9223372036854775808})"));
}

TEST_F(AnnotationsInTheHost, DoNotEscapeTheLabel) {
    EXPECT_THAT(send({1, "a\"b\\", {0.0, 0.0, 0.0, 0.0}, 2}),
                ElementsAre("{\"id\":1,\"type\":\"a\"b\\\",\"bbox\":[0,0,0,0],\"timestamp\":2}"));
}

TEST_F(AnnotationsInTheHost, IgnoreTheHostsLocale) {
    const CommaLocale locale;
    EXPECT_THAT(
        send({12345, "human", {0.41, 0.05, 1234.5, 0.12}, 1700000000123}),
        ElementsAre(
            R"({"id":12345,"type":"human","bbox":[0.41,0.05,1234.5,0.12],"timestamp":1700000000123})"));
}

TEST_F(AnnotationsInTheHost, AskOnceWhereTheyRun) {
    VODAnnotationClient::getInstance();
    const ExecutableLink moved("/usr/bin/other");
    EXPECT_EQ(send({1, "human", {0.0, 0.0, 0.0, 0.0}, 2}).size(), 1U);
}

TEST_F(AnnotationsInTheHost, UseOneSocketEach) {
    const int before = openedSockets();
    send({1, "human", {0.0, 0.0, 0.0, 0.0}, 2});
    send({2, "human", {0.0, 0.0, 0.0, 0.0}, 2});
    EXPECT_EQ(openedSockets(), before + 2);
}

TEST_F(AnnotationsInTheHost, AreDroppedSilentlyWithoutAReceiver) {
    receiver.reset();
    VODAnnotationClient::getInstance().send({1, "human", {0.0, 0.0, 0.0, 0.0}, 2});
    unlink(path.get().c_str());
    VODAnnotationClient::getInstance().send({1, "human", {0.0, 0.0, 0.0, 0.0}, 2});
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(AnnotationsInTheHost, MayBeSentFromSeveralThreads) {
    const VODAnnotationClient copy = VODAnnotationClient::getInstance();
    const auto sendSome = [&copy](int id) {
        for (int i = 0; i < 4; ++i) {
            copy.send({id, "human", {0.0, 0.0, 0.0, 0.0}, i});
        }
    };
    std::thread other([&] { sendSome(1); });
    sendSome(2);
    other.join();
    EXPECT_EQ(receiver->receive().size(), 8U);
}

TEST_F(AnnotationsInTheHost, GoOutOncePerRadarTrackWithTheTracksBox) {
    Veskar::Config config;
    config.detectionPriority.autoAnnotationEnabled = true;
    Veskar::DetectionPriority priority(config);
    Report report;
    report.className = "human";
    const auto track = makeSystemTrack(makeTrack(report));
    track->sensorTracks[Source::Radar][41] = makeTrack(Source::Radar, 41);
    track->boundingBox = Eigen::Vector4d(-0.1, 0.2, -0.3, 0.4);

    const std::int64_t before = millisecondsNow();
    priority.evaluateTrack(*track);
    const std::int64_t after = millisecondsNow();
    const std::vector<std::string> datagrams = receiver->receive();
    ASSERT_EQ(datagrams.size(), 1U);
    const std::string head = R"({"id":41,"type":"human","bbox":[-0.1,0.2,-0.3,0.4],"timestamp":)";
    ASSERT_EQ(datagrams[0].substr(0, head.size()), head);
    EXPECT_EQ(datagrams[0].back(), '}');
    const std::int64_t timestamp = std::stoll(datagrams[0].substr(head.size()));
    EXPECT_GE(timestamp, before);
    EXPECT_LE(timestamp, after);

    priority.evaluateTrack(*track);
    priority.sendAnnotation(*track, "unknown");
    EXPECT_THAT(receiver->receive(), IsEmpty());
    track->sensorTracks[Source::Radar][5] = makeTrack(Source::Radar, 5);
    priority.evaluateTrack(*track);
    EXPECT_EQ(receiver->receive().size(), 1U);
}

TEST_F(AnnotationsInTheHost, StayAwayWhenTheyAreSwitchedOff) {
    Veskar::DetectionPriority priority{Veskar::Config()};
    const auto track = makeSystemTrack(makeTrack());
    track->sensorTracks[Source::Radar][41] = makeTrack(Source::Radar, 41);
    const int before = openedSockets();
    priority.evaluateTrack(*track);
    EXPECT_EQ(openedSockets(), before);
    EXPECT_THAT(receiver->receive(), IsEmpty());
}

namespace {

void annotateAsATool() {
    Veskar::setCalledFromHostApplication(false);
    const SocketPath path("/tmp/vod_annotation");
    DatagramReceiver receiver(path.get());
    const int before = openedSockets();
    VODAnnotationClient::getInstance().send({1, "human", {0.0, 0.0, 0.0, 0.0}, 2});
    EXPECT_EQ(openedSockets(), before);
    EXPECT_THAT(receiver.receive(), IsEmpty());
}

}  // namespace

TEST_F(ProcessWideDeathTest, AToolBesideTheHostAnnotatesNothingWhenItSaysSo) {
    EXPECT_IN_OWN_PROCESS(annotateAsATool);
}
