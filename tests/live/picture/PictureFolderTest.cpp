// SPDX-License-Identifier: Apache-2.0
// The newest picture of a directory.
#include <veskar-host/InputError.h>

#include "live/picture/PictureFolder.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::HasSubstr;
using testing::Optional;

const std::string jpeg = "\xff\xd8\xff\xe0 first";
const std::string png = "\x89PNG\r\n\x1a\n second";

MATCHER_P(HasBytes, bytes, "") {
    return arg.bytes == bytes;
}

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

class PictureFolderTest : public testing::Test {
protected:
    void put(const std::string& name, const std::string& bytes, double age) const {
        std::ofstream(directory_ / name) << bytes;
        std::filesystem::last_write_time(
            directory_ / name,
            std::filesystem::file_time_type::clock::now() -
                std::chrono::duration_cast<std::filesystem::file_time_type::duration>(
                    std::chrono::duration<double>(age)));
    }
    std::optional<Picture> next() { return folder_.next(isEnding_); }
    std::string faultOfNext() {
        try {
            next();
        } catch (const Host::InputError& error) {
            return error.what();
        }
        return "";
    }

    const VeskarTest::TemporaryDirectory directory_;
    const std::atomic<bool> isEnding_{false};
    PictureFolder folder_{directory_ / ""};
};

TEST_F(PictureFolderTest, GivesEachNewPictureOnceWithItsTime) {
    put("b.JPG", jpeg, 100.0);
    const std::optional<Picture> first = next();
    ASSERT_THAT(first, Optional(HasBytes(jpeg)));
    EXPECT_NEAR(first->time, now() - 100.0, 10.0);
    EXPECT_FALSE(next());
    put("a.png", png, 50.0);
    EXPECT_THAT(next(), Optional(HasBytes(png)));
    put("a.png", png + " again", 40.0);
    EXPECT_THAT(next(), Optional(HasBytes(png + " again")));
    put("c.jpeg", jpeg, 60.0);
    EXPECT_FALSE(next()) << "it is older";
    std::filesystem::remove(directory_ / "a.png");
    EXPECT_THAT(next(), Optional(HasBytes(jpeg)));
}

TEST_F(PictureFolderTest, OrdersPicturesOfOneTimeByName) {
    put("2.jpg", jpeg, 0.0);
    put("1.png", png, 0.0);
    const auto time = std::filesystem::last_write_time(directory_ / "1.png");
    std::filesystem::last_write_time(directory_ / "2.jpg", time);
    EXPECT_THAT(next(), Optional(HasBytes(jpeg)));
}

TEST_F(PictureFolderTest, TakesOnlyRegularFilesNamedAsPictures) {
    const VeskarTest::TemporaryDirectory elsewhere;
    std::ofstream(elsewhere / "secret.jpg") << jpeg;
    std::filesystem::create_symlink(elsewhere / "secret.jpg", directory_ / "link.jpg");
    std::filesystem::create_directory(directory_ / "folder.jpg");
    put(".hidden.jpg", jpeg, 0.0);
    put("jpg", jpeg, 0.0);
    put(".jpg", jpeg, 0.0);
    put("a.jpg.part", jpeg, 0.0);
    EXPECT_EQ(faultOfNext(), "no picture yet");
    put("a.jpg", jpeg, 1000.0);
    EXPECT_THAT(next(), Optional(HasBytes(jpeg)));
}

TEST_F(PictureFolderTest, SaysWhatIsWrongAndGoesOn) {
    put("a.jpg", "GIF89a", 3.0);
    EXPECT_EQ(faultOfNext(), "the newest picture is neither JPEG nor PNG");
    put("a.jpg", "", 2.0);
    EXPECT_EQ(faultOfNext(), "the newest picture is neither JPEG nor PNG");
    put("b.jpg", jpeg, 1.0);
    std::filesystem::resize_file(directory_ / "b.jpg", Picture::mostBytes + 1);
    EXPECT_EQ(faultOfNext(), "the newest picture is larger than 8 MiB");
    put("c.jpg", jpeg, -10.0);
    EXPECT_THAT(next(), Optional(HasBytes(jpeg)));
    std::filesystem::remove_all(directory_ / "");
    EXPECT_THAT(faultOfNext(), HasSubstr("cannot be read: No such file"));
    std::filesystem::create_directory(directory_ / "");
    put("c.jpg", jpeg, 0.0);
    EXPECT_THAT(next(), Optional(HasBytes(jpeg)));
}

}  // namespace
}  // namespace Veskar::Live
