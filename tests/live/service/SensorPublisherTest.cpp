// SPDX-License-Identifier: Apache-2.0
// Publishing itself is tested with the program (tests/workbench/cli/PublishProgramTest.cpp).
#include "live/service/SensorPublisher.h"

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

TEST(SensorPublisher, FindsATopicForAFilter) {
    EXPECT_EQ(topicFor("gate/camera"), "gate/camera");
    EXPECT_EQ(topicFor("gate/onvif-mj/VideoAnalytics/#"),
              "gate/onvif-mj/VideoAnalytics/main/objects");
    EXPECT_EQ(topicFor("+/onvif-mj/VideoAnalytics/+/objects"),
              "main/onvif-mj/VideoAnalytics/main/objects");
}

}  // namespace
}  // namespace Veskar::Live
