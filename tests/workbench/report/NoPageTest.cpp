// SPDX-License-Identifier: Apache-2.0
// veskar report in a build without Node.js.
#include "Process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

TEST(ReportWithoutPage, SaysWhatIsMissingAndLeavesNothing) {
    const VeskarTest::TemporaryDirectory directory;
    const VeskarTest::Outcome outcome =
        VeskarTest::veskar({"report", "recording", "fused", "-o", directory / "report.html"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(
        outcome.errors,
        testing::StartsWith("veskar: this program was built without the page of the report"));
    EXPECT_THAT(directory.names(), testing::IsEmpty());
}
