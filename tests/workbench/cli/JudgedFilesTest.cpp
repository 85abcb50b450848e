// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "cli/JudgedFiles.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Workbench::groupFiles;
using Workbench::JudgedFiles;

class JudgedFilesTest : public testing::Test {
protected:
    JudgedFilesTest() {
        for (const std::string& path : {monday, tuesday}) {
            VeskarTest::spill(path, "{\"format\":\"veskar-recording\"}\n");
        }
        for (const std::string& path : {first, second}) {
            VeskarTest::spill(path, "{\"format\":\"veskar-fused\"}\n");
        }
    }

    static std::string faultOf(const std::vector<std::string>& files) {
        try {
            groupFiles(files);
        } catch (const Veskar::Host::InputError& error) {
            return error.what();
        }
        return "no fault";
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string monday = directory / "monday";
    const std::string tuesday = directory / "tuesday";
    const std::string first = directory / "first";
    const std::string second = directory / "second";
};

TEST_F(JudgedFilesTest, EachRecordingIsFollowedByItsRuns) {
    const std::vector<JudgedFiles> groups =
        groupFiles({monday, first, second, tuesday, second, "-"});
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0].recording, monday);
    EXPECT_THAT(groups[0].runs, ElementsAre(first, second));
    EXPECT_EQ(groups[1].recording, tuesday);
    EXPECT_THAT(groups[1].runs, ElementsAre(second, "-"));
}

TEST_F(JudgedFilesTest, RecordingsNeedNoRuns) {
    const std::vector<JudgedFiles> groups = groupFiles({monday, tuesday});
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_THAT(groups[0].runs, IsEmpty());
    EXPECT_EQ(groups[1].recording, tuesday);
}

TEST_F(JudgedFilesTest, WhateverComesFirstIsTheRecording) {
    const std::string pipe = directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path : {first, pipe, std::string("-"), directory / "nowhere"}) {
        const std::vector<JudgedFiles> groups = groupFiles({path, second});
        ASSERT_EQ(groups.size(), 1U);
        EXPECT_EQ(groups[0].recording, path);
        EXPECT_THAT(groups[0].runs, ElementsAre(second));
    }
}

TEST_F(JudgedFilesTest, APipeIsReadOnce) {
    const std::string pipe = directory / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(faultOf({"-", first, second}), "<stdin>: is read once for each run: name a file");
    EXPECT_EQ(faultOf({pipe, first, second}), pipe + ": is read once for each run: name a file");
    EXPECT_EQ(faultOf({monday, first, pipe}), "no fault");
}

TEST_F(JudgedFilesTest, EveryRecordingHasAsManyRuns) {
    EXPECT_EQ(faultOf({monday, first, tuesday}), tuesday + ": has another number of runs than " +
                                                     monday +
                                                     "; runs are compared by their places");
    EXPECT_THAT(faultOf({monday, tuesday, first}), HasSubstr("another number of runs"));
}

}  // namespace
