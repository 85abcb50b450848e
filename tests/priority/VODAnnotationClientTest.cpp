// SPDX-License-Identifier: Apache-2.0
// The client outside the host application.
#include <veskar/VODAnnotationClient.h>

#include "support/DatagramReceiver.h"
#include "support/SocketCounter.h"
#include "support/SyslogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using testing::IsEmpty;

TEST(VODAnnotationClient, OpensNoSocketOutsideTheHostApplication) {
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
