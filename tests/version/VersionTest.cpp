// SPDX-License-Identifier: Apache-2.0
#include <veskar/Version.h>

#include <string>

#include <gtest/gtest.h>

TEST(Version, IsTheProjects) {
    EXPECT_STREQ(Veskar::veskarVersion(), PROJECT_VERSION);
    EXPECT_STREQ(VESKAR_VERSION_STRING, PROJECT_VERSION);
}

TEST(Version, HasItsPartsAsNumbersThatThePreprocessorKnows) {
#if VESKAR_VERSION_MAJOR > 0 || VESKAR_VERSION_MINOR > 0 || VESKAR_VERSION_PATCH > 0
    EXPECT_EQ(std::to_string(VESKAR_VERSION_MAJOR) + "." + std::to_string(VESKAR_VERSION_MINOR) +
                  "." + std::to_string(VESKAR_VERSION_PATCH),
              PROJECT_VERSION);
#else
    FAIL() << "all of them are zero";
#endif
}
