// SPDX-License-Identifier: Apache-2.0
// The client outside the host application.
#include <veskar/HostApplication.h>
#include <veskar/VODAnnotationClient.h>

#include "support/DatagramReceiver.h"
#include "support/ExecutableLink.h"
#include "support/OwnProcess.h"
#include "support/SocketCounter.h"
#include "support/SyslogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::IsEmpty;

namespace {

void expectSilence() {
    const SyslogCapture log;
    const SocketPath path("/tmp/vod_annotation");
    DatagramReceiver receiver(path.get());
    const int before = openedSockets();
    Veskar::VODAnnotation::VODAnnotationClient::getInstance().send(
        {12, "human", Eigen::Vector4d::Zero(), 0});
    EXPECT_EQ(openedSockets(), before);
    EXPECT_THAT(receiver.receive(), IsEmpty());
    EXPECT_THAT(log.errors(), IsEmpty());
}

}  // namespace

TEST(VODAnnotationClient, OpensNoSocketOutsideTheHostApplication) {
    expectSilence();
}

TEST(VODAnnotationClient, AsksOnceWhereItRuns) {
    Veskar::VODAnnotation::VODAnnotationClient::getInstance();
    const ExecutableLink moved("/usr/bin/quandrelwatcher");
    expectSilence();
}

namespace {

void annotateAsAHostOfAnotherName() {
    Veskar::setCalledFromHostApplication(true);
    const SocketPath path("/tmp/vod_annotation");
    DatagramReceiver receiver(path.get());
    const auto send = [] {
        Veskar::VODAnnotation::VODAnnotationClient::getInstance().send(
            {12, "human", Eigen::Vector4d::Zero(), 0});
    };
    send();
    EXPECT_THAT(receiver.receive(), testing::SizeIs(1));
    Veskar::setCalledFromHostApplication(false);
    send();
    EXPECT_THAT(receiver.receive(), testing::SizeIs(1)) << "settled with the first one";
}

}  // namespace

TEST_F(ProcessWideDeathTest, AHostOfAnotherNameAnnotatesWhenItSaysSo) {
    EXPECT_IN_OWN_PROCESS(annotateAsAHostOfAnotherName);
}
