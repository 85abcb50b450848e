// SPDX-License-Identifier: Apache-2.0
#include "host/recording/RotatingFile.h"
#include "support/FileSizeLimit.h"
#include "support/TemporaryDirectory.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

using testing::HasSubstr;
using Veskar::Host::Internal::RotatingFile;
using VeskarTest::FileSizeLimit;

namespace {

class RotatingFileTest : public testing::Test {
protected:
    void put(const std::string& suffix, const std::string& text) const {
        std::ofstream(path + suffix) << text;
    }
    /// @return the text of a file; "none" when there is none
    std::string textOf(const std::string& suffix) const {
        std::ifstream file(path + suffix);
        return file ? std::string{std::istreambuf_iterator<char>(file), {}} : "none";
    }

    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory.file("recording");
};

}  // namespace

TEST_F(RotatingFileTest, BeginsAFileWhenALineDoesNotFit) {
    {
        RotatingFile file(path, "h\n", 6, 2);
        for (const char* line : {"1\n", "2\n", "3\n", "longer\n", "4\n", "5\n"}) {
            file.append(line);
        }
    }
    EXPECT_EQ(textOf(""), "h\n4\n5\n");
    EXPECT_EQ(textOf(".1"), "h\nlonger\n");
    EXPECT_EQ(textOf(".2"), "h\n3\n");
    EXPECT_EQ(textOf(".3"), "none");
}

TEST_F(RotatingFileTest, BeginsAFileWhenItIsTold) {
    RotatingFile file(path, "h\n", 0, 2);
    file.rotate();  // there is none to leave yet
    file.append("1\n");
    file.rotate();
    file.append("2\n");
    EXPECT_EQ(textOf(""), "h\n2\n");
    EXPECT_EQ(textOf(".1"), "h\n1\n");
    EXPECT_EQ(textOf(".2"), "none");
}

TEST_F(RotatingFileTest, MovesNoFileThatHoldsNothing) {
    put("", R"({"format":"veskar-recording","epoch":1})"
            "\n{}\n");
    const std::string header = R"({"format":"veskar-recording","epoch":2})"
                               "\n";
    for (int start = 0; start < 5; ++start) {
        const RotatingFile file(path, header, 0, 2);
    }
    EXPECT_EQ(textOf(""), header);
    EXPECT_THAT(textOf(".1"), HasSubstr("\"epoch\":1"));
    EXPECT_EQ(textOf(".2"), "none");
}

TEST_F(RotatingFileTest, KeepsWhatAnotherOneIsAboutToWrite) {
    const std::string header = R"({"format":"veskar-recording"})"
                               "\n";
    RotatingFile before(path, header, 0, 2);
    const RotatingFile after(path, header, 0, 2);
    before.append("late\n");
    EXPECT_EQ(textOf(".1"), header + "late\n");
    EXPECT_EQ(textOf(""), header);
}

TEST_F(RotatingFileTest, TakesNoOtherFileForOneThatHoldsNothing) {
    const std::string header = R"({"format":"veskar-recording"})"
                               "\n";
    for (const char* other : {"one line\n", R"({"format":"veskar-recording"})", "\n"}) {
        put("", other);
        const RotatingFile file(path, header, 0, 2);
        EXPECT_EQ(textOf(".1"), other);
    }
}

TEST_F(RotatingFileTest, MovesNoEmptyFileWithoutHeader) {
    put("", "1\n");
    for (int start = 0; start < 5; ++start) {
        const RotatingFile file(path, "", 0, 2);
    }
    EXPECT_EQ(textOf(""), "");
    EXPECT_EQ(textOf(".1"), "1\n");
    EXPECT_EQ(textOf(".2"), "none");
}

TEST_F(RotatingFileTest, MovesNoFileTwiceWhileNoneCanBeBegun) {
    put("", "new");
    put(".1", "old");
    put(".2", "older");
    const FileSizeLimit full(1);
    for (int attempt = 0; attempt < 5; ++attempt) {
        EXPECT_THROW(RotatingFile(path, "header\n", 0, 5), std::system_error);
    }
    EXPECT_EQ(textOf(""), "none");
    EXPECT_EQ(textOf(".1"), "new");
    EXPECT_EQ(textOf(".2"), "old");
    EXPECT_EQ(textOf(".3"), "older");
    EXPECT_EQ(textOf(".4"), "none");
}

TEST_F(RotatingFileTest, KeepsItsFilesWhileTheDiskIsFull) {
    RotatingFile file(path, "h\n", 6, 3);
    for (const char* line : {"1\n", "2\n", "3\n", "4\n"}) {
        file.append(line);
    }
    {
        const FileSizeLimit full(1);
        for (int attempt = 0; attempt < 5; ++attempt) {
            EXPECT_THROW(file.append("5\n"), std::system_error);
        }
    }
    file.append("6\n");
    EXPECT_EQ(textOf(""), "h\n6\n");
    EXPECT_EQ(textOf(".1"), "h\n3\n4\n");
    EXPECT_EQ(textOf(".2"), "h\n1\n2\n");
    EXPECT_EQ(textOf(".3"), "none");
}

TEST_F(RotatingFileTest, MovesFilesOnlyAsFarAsTheFirstGap) {
    put("", "new");
    put(".1", "old");
    put(".3", "older");
    const RotatingFile file(path, "h\n", 0, 5);
    EXPECT_EQ(textOf(".1"), "new");
    EXPECT_EQ(textOf(".2"), "old");
    EXPECT_EQ(textOf(".3"), "older");
    EXPECT_EQ(textOf(".4"), "none");
}

TEST_F(RotatingFileTest, KeepsNoFileWhenNoneIsWanted) {
    put("", "old");
    const RotatingFile file(path, "h\n", 0, 0);
    EXPECT_EQ(textOf(""), "h\n");
    EXPECT_EQ(textOf(".1"), "none");
}

TEST_F(RotatingFileTest, LeavesAloneWhatIsNoRegularFile) {
    std::filesystem::create_directory(path);
    EXPECT_THROW(RotatingFile(path, "h\n", 0, 5), std::system_error);
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_FALSE(std::filesystem::exists(path + ".1"));
    const std::string pipe = directory.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    try {
        const RotatingFile file(pipe, "h\n", 0, 5);
        FAIL() << "a pipe";
    } catch (const std::system_error& error) {
        EXPECT_THAT(error.what(), HasSubstr(pipe + ": is no regular file"));
    }
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}
