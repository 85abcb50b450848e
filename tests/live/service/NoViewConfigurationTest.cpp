// SPDX-License-Identifier: Apache-2.0
// run.json where the program has no live view.
#include "RunText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(ViewConfiguration, IsRefusedWithoutTheView) {
    EXPECT_THAT(VeskarTest::refusalOf(
                    VeskarTest::document(R"(,"sensors":[{"kind":"radar","format":"json-lines",)"
                                         R"("input":{"type":"stdin"}}],"view":{})")),
                testing::StartsWith("view: this program was built without the live view"));
}
