// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "io/OutputFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class OutputFileTest : public testing::Test {
protected:
    VeskarTest::TemporaryDirectory directory;
    std::string path = directory / "out";
};

}  // namespace

TEST_F(OutputFileTest, AppearsOnlyWhenItIsComplete) {
    Workbench::OutputFile output(path);
    output.write("one\n");
    output.flush();
    EXPECT_EQ(VeskarTest::slurp(path), "");
    output.write("two\n");
    output.commit();
    EXPECT_EQ(VeskarTest::slurp(path), "one\ntwo\n");
    EXPECT_THAT(directory.names(), ElementsAre("out"));
}

TEST_F(OutputFileTest, IsCompleteBeforeItAppears) {
    for (const char* const name : {"out", "out.gz", "out.zst"}) {
        SCOPED_TRACE(name);
        VeskarTest::TemporaryDirectory here;
        Workbench::OutputFile output(here / name);
        output.write("text\n");
        output.complete();
        ASSERT_EQ(here.names().size(), 1u);
        const std::string complete = VeskarTest::slurp(here / here.names().front());
        EXPECT_THAT(complete, testing::Not(IsEmpty()));
        output.commit();
        EXPECT_EQ(VeskarTest::slurp(here / name), complete) << "nothing follows";
    }
}

TEST_F(OutputFileTest, LeavesNothingBehindWhenItIsGivenUp) {
    {
        Workbench::OutputFile output(path);
        output.write(std::string(1 << 20, 'x'));
    }
    EXPECT_THAT(directory.names(), IsEmpty());
}

TEST_F(OutputFileTest, KeepsTheEarlierFileUntilThen) {
    VeskarTest::spill(path, "earlier");
    {
        Workbench::OutputFile output(path);
        output.write("half");
        EXPECT_EQ(VeskarTest::slurp(path), "earlier");
    }
    EXPECT_EQ(VeskarTest::slurp(path), "earlier");
    Workbench::OutputFile output(path);
    output.write("later");
    output.commit();
    EXPECT_EQ(VeskarTest::slurp(path), "later");
}

TEST_F(OutputFileTest, HasTheUsualPermissions) {
    const mode_t before = ::umask(027);
    Workbench::OutputFile output(path);
    output.commit();
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(OutputFileTest, WritesDirectlyToWhatIsNoRegularFile) {
    Workbench::OutputFile output("/dev/null");
    output.write("gone");
    output.commit();
    struct stat status {};
    ASSERT_EQ(::stat("/dev/null", &status), 0);
    EXPECT_TRUE(S_ISCHR(status.st_mode));
}

TEST_F(OutputFileTest, SaysWhenTheDiskIsFull) {
    Workbench::OutputFile output("/dev/full");
    output.write("x");
    try {
        output.commit();
        FAIL();
    } catch (const Veskar::Host::InputError& error) {
        EXPECT_STREQ(error.what(), "/dev/full: cannot write: No space left on device");
    }
}

TEST_F(OutputFileTest, SaysWhenTheDirectoryIsMissing) {
    try {
        const Workbench::OutputFile output(directory / "no/such/file");
        FAIL();
    } catch (const Veskar::Host::InputError& error) {
        EXPECT_THAT(error.what(), HasSubstr("cannot create: No such file or directory"));
    }
}

TEST_F(OutputFileTest, FollowsLinks) {
    const std::string link = directory / "link";
    const std::string second = directory / "second";
    ASSERT_EQ(::mkdir((directory / "folder").c_str(), 0700), 0);
    VeskarTest::spill(directory / "folder/target", "earlier");
    ASSERT_EQ(::symlink("folder/target", link.c_str()), 0);
    ASSERT_EQ(::symlink(link.c_str(), second.c_str()), 0);
    Workbench::OutputFile output(second);
    output.write("later");
    output.commit();
    EXPECT_EQ(VeskarTest::slurp(directory / "folder/target"), "later");
    struct stat status {};
    ASSERT_EQ(::lstat(link.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    ASSERT_EQ(::lstat(second.c_str(), &status), 0);
    EXPECT_TRUE(S_ISLNK(status.st_mode));
    EXPECT_THAT(directory.names(), ElementsAre("folder", "link", "second"));
}

TEST_F(OutputFileTest, MakesWhatALinkLeadsTo) {
    ASSERT_EQ(::symlink("new", path.c_str()), 0);
    { const Workbench::OutputFile given(path); }
    EXPECT_THAT(directory.names(), ElementsAre("out"));
    Workbench::OutputFile output(path);
    output.write("text");
    output.commit();
    EXPECT_THAT(directory.names(), ElementsAre("new", "out"));
    EXPECT_EQ(VeskarTest::slurp(directory / "new"), "text");
}

TEST_F(OutputFileTest, RefusesLinksThatLeadInACircle) {
    ASSERT_EQ(::symlink("other", path.c_str()), 0);
    ASSERT_EQ(::symlink("out", (directory / "other").c_str()), 0);
    EXPECT_THROW(Workbench::OutputFile{path}, Veskar::Host::InputError);
}

TEST_F(OutputFileTest, TakesTheLongestNameThereIs) {
    const std::string name(255, 'n');
    Workbench::OutputFile output(directory / name);
    output.write("text");
    output.commit();
    EXPECT_EQ(VeskarTest::slurp(directory / name), "text");
}
