// SPDX-License-Identifier: Apache-2.0
// For what lives as long as a process: a test in a process of its own.
#pragma once

#include <cstdlib>

#include <gtest/gtest.h>

/// Runs a test's body in a process of its own and fails where it fails.
#define EXPECT_IN_OWN_PROCESS(body)                                               \
    EXPECT_EXIT(                                                                  \
        {                                                                         \
            body();                                                               \
            std::exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS); \
        },                                                                        \
        testing::ExitedWithCode(EXIT_SUCCESS), "")

namespace VeskarTest {

/// The process is a new start of the test program, in which nothing has happened yet. Derived
/// fixtures have "ProcessWideDeathTest" in their names, by which cross builds leave them out.
class ProcessWideDeathTest : public testing::Test {
protected:
    ProcessWideDeathTest() { testing::GTEST_FLAG(death_test_style) = "threadsafe"; }
};

}  // namespace VeskarTest
