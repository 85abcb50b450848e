// SPDX-License-Identifier: Apache-2.0
// Runs tests of process-wide objects in their own process.
#pragma once

#include <cstdlib>

#include <gtest/gtest.h>

/// Runs a test's body in its own process and fails if it fails.
#define EXPECT_IN_OWN_PROCESS(body)                                               \
    EXPECT_EXIT(                                                                  \
        {                                                                         \
            body();                                                               \
            std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS); \
        },                                                                        \
        testing::ExitedWithCode(EXIT_SUCCESS), "")

namespace VeskarTest {

/// The process is a new start of the test program with fresh state. Derived fixtures have
/// "ProcessWideDeathTest" in their names, by which cross builds exclude them.
class ProcessWideDeathTest : public testing::Test {
protected:
    ProcessWideDeathTest() { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }
};

}  // namespace VeskarTest
