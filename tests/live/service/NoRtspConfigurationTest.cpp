// SPDX-License-Identifier: Apache-2.0
// run.json where the program cannot read RTSP.
#include "RunText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(RtspConfiguration, IsRefusedWithoutRtsp) {
    EXPECT_THAT(VeskarTest::refusalOf(
                    VeskarTest::withSensor(R"({"kind":"camera","format":"onvif-xml",)"
                                           R"("input":{"type":"rtsp","url":"rtsp://camera/"}})")),
                testing::StartsWith("sensors[0].input.type: this program was built without RTSP"));
}
