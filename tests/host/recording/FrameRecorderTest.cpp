// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FrameRecorder.h>
#include <veskar-host/InputError.h>

#include "host/TestInstallation.h"
#include "support/SyslogCapture.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Veskar::Host;
using testing::ElementsAre;
using testing::HasSubstr;
using VeskarTest::SyslogCapture;

namespace {

std::vector<std::string> linesOf(const std::string& path) {
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) {
        lines.push_back(line);
    }
    return lines;
}

SensorFrame frameAt(double time, std::size_t tracks = 0) {
    SensorFrame frame{Veskar::Radar, time, time, {}};
    for (std::size_t i = 0; i < tracks; ++i) {
        RadarReport report;
        report.id = static_cast<std::int32_t>(i);
        report.range = 10.0;
        report.radialSpeed = 0.0;
        frame.tracks.emplace_back(report);
    }
    return frame;
}

void waitFor(const std::function<bool()>& isOver) {
    while (!isOver()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// Reads a file as whoever replays it.
/// @return the times of its frames
std::vector<double> timesOf(const std::string& path) {
    Installation::parse(path);
    std::vector<std::string> lines = linesOf(path);
    std::vector<double> times;
    for (auto line = lines.begin() + 1; line != lines.end(); ++line) {
        times.push_back(parseSensorFrame(*line).time);
    }
    return times;
}

class FrameRecorderTest : public testing::Test {
protected:
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory.file("recording.jsonl");
    const Installation installation = VeskarTest::testInstallation();
};

}  // namespace

TEST_F(FrameRecorderTest, WritesAHeaderAndEveryFrame) {
    {
        FrameRecorder::Options options;
        options.name = "yard";
        options.epoch = 1.7e9;
        FrameRecorder recorder(path, installation, options);
        for (int i = 0; i < 100; ++i) {
            recorder.write(frameAt(i, 3));
        }
    }
    const std::vector<std::string> lines = linesOf(path);
    ASSERT_EQ(lines.size(), 101U);
    EXPECT_THAT(lines[0], HasSubstr(R"("format":"veskar-recording","version":1,"name":"yard")"));
    EXPECT_THAT(lines[0], HasSubstr(R"("epoch":1700000000.0)"));
    EXPECT_EQ(Installation::parse(path).radar.mounting.position,
              installation.radar.mounting.position);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(lines[static_cast<std::size_t>(i) + 1] + "\n", toJsonLine(frameAt(i, 3)));
    }
}

TEST_F(FrameRecorderTest, LosesNothingThatIsWrittenWhenTheProcessIsKilled) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        FrameRecorder recorder(path, installation);
        for (int i = 0;; ++i) {
            recorder.write(frameAt(i, 20));
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    }
    waitFor([&] {
        std::error_code none;
        return std::filesystem::exists(path, none) &&
               std::filesystem::file_size(path, none) > 50000;
    });
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    // Whole lines only, and none is missing.
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.back(), '\n');
    const std::vector<double> times = timesOf(path);
    ASSERT_GT(times.size(), 10U);
    for (std::size_t i = 0; i < times.size(); ++i) {
        EXPECT_EQ(times[i], static_cast<double>(i));
    }
}

TEST_F(FrameRecorderTest, RotatesBySizeAndBeginsEachFileWithTheHeader) {
    FrameRecorder::Options options;
    options.rotateAfter = 4000;
    options.keptFiles = 2;
    options.waiting = 1000;
    {
        FrameRecorder recorder(path, installation, options);
        for (int i = 0; i < 200; ++i) {
            recorder.write(frameAt(i, 2));
        }
    }
    std::vector<double> all;
    for (const char* suffix : {".2", ".1", ""}) {
        EXPECT_LE(std::filesystem::file_size(path + suffix), 4000U);
        const std::vector<double> times = timesOf(path + suffix);
        EXPECT_GT(times.size(), 5U);
        all.insert(all.end(), times.begin(), times.end());
    }
    EXPECT_FALSE(std::filesystem::exists(path + ".3"));
    EXPECT_EQ(all.back(), 199.0);
    for (std::size_t i = 1; i < all.size(); ++i) {
        EXPECT_EQ(all[i], all[i - 1] + 1.0);
    }
}

TEST_F(FrameRecorderTest, KeepsWhatAnEarlierRunRecorded) {
    { FrameRecorder(path, installation).write(frameAt(1.0)); }
    { FrameRecorder(path, installation).write(frameAt(2.0)); }
    EXPECT_THAT(timesOf(path), ElementsAre(2.0));
    EXPECT_THAT(timesOf(path + ".1"), ElementsAre(1.0));
}

TEST_F(FrameRecorderTest, LeavesOutWhatCouldNotBeReadBack) {
    const SyslogCapture log;
    FrameRecorder recorder(path, installation);
    recorder.write(frameAt(1.0));
    recorder.write(frameAt(1.0));
    recorder.write(frameAt(std::numeric_limits<double>::quiet_NaN()));
    SensorFrame early = frameAt(2.0);
    early.received = 0.5;
    recorder.write(early);
    recorder.write({Veskar::VideoObject, 0.25, 0.5, {}});  // received before the frame before
    SensorFrame twice = frameAt(3.0, 1);
    twice.tracks.push_back(twice.tracks.front());
    recorder.write(twice);
    recorder.write(frameAt(4.0));
    waitFor([&] { return recorder.counts().written == 2; });
    EXPECT_EQ(recorder.counts().refused, 5U);
    EXPECT_EQ(recorder.counts().lastFault, "tracks[1].id: 0 occurs twice in the frame");
    EXPECT_THAT(timesOf(path), ElementsAre(1.0, 4.0));
    // Once, although several in a row were left out.
    EXPECT_THAT(log.errors(), ElementsAre(HasSubstr("FrameRecorder: Left out a frame: time: ")));
}

TEST_F(FrameRecorderTest, GoesOnWhenThereIsRoomAgain) {
    const SyslogCapture log;
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &usual), 0);
    {
        FrameRecorder recorder(path, installation);
        recorder.write(frameAt(1.0));
        waitFor([&] { return recorder.counts().written == 1; });
        // Room for a part of the next line.
        const rlimit tight{std::filesystem::file_size(path) + 10, usual.rlim_max};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
        recorder.write(frameAt(2.0));
        recorder.write(frameAt(3.0));
        waitFor([&] { return recorder.counts().failed == 2; });
        EXPECT_THAT(timesOf(path), ElementsAre(1.0));
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &usual), 0);
        recorder.write(frameAt(4.0));
        waitFor([&] { return recorder.counts().written == 2; });
    }
    std::signal(SIGXFSZ, before);
    EXPECT_THAT(timesOf(path), ElementsAre(1.0, 4.0));
    EXPECT_THAT(log.errors(), ElementsAre(HasSubstr("FrameRecorder: Left out a frame: ")));
}

TEST_F(FrameRecorderTest, DropsFramesInsteadOfWaitingForTheDisk) {
    const SyslogCapture log;
    FrameRecorder::Options options;
    options.waiting = 10;
    FrameRecorder recorder(path, installation, options);
    // More at once than a thread can write of them.
    constexpr int frames = 20000;
    for (int i = 0; i < frames; ++i) {
        recorder.write(frameAt(i, 50));
    }
    waitFor([&] {
        const FrameRecorder::Counts counts = recorder.counts();
        return counts.written + counts.dropped == frames;
    });
    EXPECT_GT(recorder.counts().dropped, 0U);
    EXPECT_GT(recorder.counts().written, 0U);
    EXPECT_THAT(log.errors(),
                ElementsAre("FrameRecorder: Dropped frames that the disk is too slow for\n"));
}

TEST_F(FrameRecorderTest, SaysThatTheFileCannotBeCreated) {
    EXPECT_THROW(FrameRecorder(directory.file("none/recording"), installation), InputError);
}
