// SPDX-License-Identifier: Apache-2.0
#include <veskar/HostApplication.h>

#include <cerrno>
#include <optional>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// What /proc shall say; empty for the truth.
std::optional<std::string> pretendedPath;
bool hasProc = true;
std::string askedLink;

class HostApplication : public testing::Test {
protected:
    void TearDown() override {
        pretendedPath.reset();
        hasProc = true;
    }

    static bool answerFor(const std::string& path) {
        pretendedPath = path;
        return Veskar::calledFromQWR();
    }
};

}  // namespace

// The program's own definition takes the place of the C library's.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept {
    askedLink = path;
    if (!hasProc) {
        errno = ENOENT;
        return -1;
    }
    if (!pretendedPath) {
        return syscall(SYS_readlinkat, AT_FDCWD, path, buffer, size);
    }
    return static_cast<ssize_t>(pretendedPath->copy(buffer, size));
}

TEST_F(HostApplication, IsNotThisProgram) {
    EXPECT_FALSE(Veskar::calledFromQWR());
    EXPECT_EQ(askedLink, "/proc/" + std::to_string(getpid()) + "/exe");
}

TEST_F(HostApplication, IsRecognisedByItsNameAnywhereInThePath) {
    EXPECT_TRUE(answerFor("/usr/bin/quandrelwatcher"));
    EXPECT_TRUE(answerFor("/opt/quandrelwatcher/bin/helper"));
    EXPECT_TRUE(answerFor("/opt/myquandrelwatcher2/helper"));
    EXPECT_TRUE(answerFor("quandrelwatcher"));
    EXPECT_FALSE(answerFor("/usr/bin/Quandrelwatcher"));
    EXPECT_FALSE(answerFor("/usr/bin/quandrel/watcher"));
    EXPECT_FALSE(answerFor("quandrelwatche"));
    EXPECT_FALSE(answerFor(""));
}

TEST_F(HostApplication, IsAskedForAnewEachTime) {
    EXPECT_TRUE(answerFor("/usr/bin/quandrelwatcher"));
    EXPECT_FALSE(answerFor("/usr/bin/other"));
    EXPECT_TRUE(answerFor("/usr/bin/quandrelwatcher"));
}

TEST_F(HostApplication, IsLookedForInTheFirst4096Bytes) {
    const std::string word = "quandrelwatcher";
    EXPECT_TRUE(answerFor(std::string(4096 - word.size(), 'x') + word));
    EXPECT_FALSE(answerFor(std::string(4097 - word.size(), 'x') + word));
}

TEST_F(HostApplication, IsNotRecognisedWithoutProc) {
    hasProc = false;
    EXPECT_FALSE(Veskar::calledFromQWR());
}
