// SPDX-License-Identifier: Apache-2.0
#include <veskar/HostApplication.h>

#include "support/ExecutableLink.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

using VeskarTest::ExecutableLink;

namespace {

bool answerFor(const std::optional<std::string>& path) {
    const ExecutableLink link(path);
    return Veskar::calledFromQWR();
}

}  // namespace

TEST(HostApplication, IsNotThisProgram) {
    EXPECT_FALSE(Veskar::calledFromQWR());
    EXPECT_EQ(ExecutableLink::lastAsked(), "/proc/" + std::to_string(getpid()) + "/exe");
}

TEST(HostApplication, IsRecognisedByItsNameAnywhereInThePath) {
    EXPECT_TRUE(answerFor("/usr/bin/quandrelwatcher"));
    EXPECT_TRUE(answerFor("/opt/quandrelwatcher/bin/helper"));
    EXPECT_TRUE(answerFor("/opt/myquandrelwatcher2/helper"));
    EXPECT_TRUE(answerFor("quandrelwatcher"));
    EXPECT_FALSE(answerFor("/usr/bin/Quandrelwatcher"));
    EXPECT_FALSE(answerFor("/usr/bin/quandrel/watcher"));
    EXPECT_FALSE(answerFor("quandrelwatche"));
    EXPECT_FALSE(answerFor(""));
}

TEST(HostApplication, IsAskedForAnewEachTime) {
    EXPECT_TRUE(answerFor("/usr/bin/quandrelwatcher"));
    EXPECT_FALSE(answerFor("/usr/bin/other"));
    EXPECT_TRUE(answerFor("/usr/bin/quandrelwatcher"));
}

TEST(HostApplication, IsLookedForInTheFirst4096Bytes) {
    const std::string word = "quandrelwatcher";
    EXPECT_TRUE(answerFor(std::string(4096 - word.size(), 'x') + word));
    EXPECT_FALSE(answerFor(std::string(4097 - word.size(), 'x') + word));
}

TEST(HostApplication, IsNotRecognisedWithoutProc) {
    EXPECT_FALSE(answerFor(std::nullopt));
}

TEST(HostApplication, IsWhatItsHostSays) {
    Veskar::setCalledFromHostApplication(true);
    EXPECT_TRUE(answerFor("/usr/bin/other"));
    Veskar::setCalledFromHostApplication(false);
    EXPECT_FALSE(answerFor("/usr/bin/quandrelwatcher"));
    Veskar::setCalledFromHostApplication(std::nullopt);
    EXPECT_FALSE(answerFor("/usr/bin/other")) << "by its path again";
    EXPECT_TRUE(answerFor("/usr/bin/quandrelwatcher"));
}
