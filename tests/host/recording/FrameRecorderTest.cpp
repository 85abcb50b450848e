// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FrameRecorder.h>
#include <veskar-host/InputError.h>

#include "host/TestInstallation.h"
#include "support/AllocationCounter.h"
#include "support/FileSizeLimit.h"
#include "support/SyslogCapture.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <limits>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Veskar::Host;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
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

/// Reads a file as a replay does.
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

/// Received before it was measured: no recording may hold it.
SensorFrame badFrame() {
    SensorFrame frame = frameAt(0.5);
    frame.received = 0.25;
    return frame;
}

class FrameRecorderTest : public testing::Test {
protected:
    /// @return why there can be no recorder
    std::string faultOf(const Installation& wanted, const FrameRecorder::Options& options) const {
        try {
            const FrameRecorder recorder(path, wanted, options);
        } catch (const InputError& error) {
            return error.what();
        }
        return "";
    }

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
    // Complete lines only, and none is missing.
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

TEST_F(FrameRecorderTest, StatesAtTheEndUntilWhenFramesWereAwaited) {
    const auto lastLine = [&](double end) {
        {
            FrameRecorder recorder(path, VeskarTest::testInstallation());
            recorder.write(frameAt(1.5));
            recorder.end(end);
        }
        return linesOf(path).back();
    };
    EXPECT_EQ(lastLine(1.75), R"({"end":1.75})");
    EXPECT_EQ(lastLine(1.5), R"({"end":1.5})");
    EXPECT_THAT(lastLine(1.4999), HasSubstr("\"source\""));
    EXPECT_THAT(lastLine(std::numeric_limits<double>::infinity()), HasSubstr("\"source\""));
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
    recorder.write({Veskar::VideoObject, 0.25, 0.5, {}});  // received before the previous frame
    SensorFrame twice = frameAt(3.0, 1);
    twice.tracks.push_back(twice.tracks.front());
    recorder.write(twice);
    recorder.write(frameAt(4.0));
    waitFor([&] { return recorder.counts().written == 2; });
    EXPECT_EQ(recorder.counts().refused, 5U);
    EXPECT_EQ(recorder.counts().lastFault, "tracks[1].id: 0 occurs twice in the frame");
    EXPECT_THAT(timesOf(path), ElementsAre(1.0, 4.0));
    // Once, although several were left out.
    EXPECT_THAT(log.errors(), ElementsAre(HasSubstr("FrameRecorder: Left out a frame: time: ")));
}

TEST_F(FrameRecorderTest, GoesOnWhenThereIsRoomAgain) {
    const SyslogCapture log;
    {
        FrameRecorder recorder(path, installation);
        recorder.write(frameAt(1.0));
        waitFor([&] { return recorder.counts().written == 1; });
        {
            // Room for a part of the next line.
            const VeskarTest::FileSizeLimit full(std::filesystem::file_size(path) + 10);
            recorder.write(frameAt(2.0));
            recorder.write(frameAt(3.0));
            waitFor([&] { return recorder.counts().failed == 2; });
            EXPECT_THAT(timesOf(path), ElementsAre(1.0));
        }
        recorder.write(frameAt(4.0));
        waitFor([&] { return recorder.counts().written == 2; });
    }
    EXPECT_THAT(timesOf(path), ElementsAre(1.0, 4.0));
    EXPECT_THAT(log.errors(), ElementsAre(HasSubstr("FrameRecorder: Left out a frame: ")));
}

TEST_F(FrameRecorderTest, DropsFramesInsteadOfWaitingForTheDisk) {
    const SyslogCapture log;
    FrameRecorder::Options options;
    options.waiting = 100000;
    FrameRecorder recorder(path, installation, options);
    // More than a thread can write at once.
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

TEST_F(FrameRecorderTest, HoldsAsMuchInMemoryAsItMay) {
    const SyslogCapture log;
    FrameRecorder::Options options;
    options.waiting = 10 * sizeof(SensorFrame) + 10 * sizeof(Report);
    FrameRecorder recorder(path, installation, options);
    std::unique_lock<std::mutex> heldUp = SyslogCapture::holdUp();
    recorder.write(badFrame());
    // The thread waits for the log: nothing is taken from the queue.
    waitFor([&] { return recorder.counts().refused == 1; });
    recorder.write(frameAt(1.0, 1));
    recorder.write(frameAt(2.0, 20));  // too large
    recorder.write(frameAt(3.0, 9));
    EXPECT_EQ(recorder.counts().dropped, 1U);
    heldUp.unlock();
    waitFor([&] { return recorder.counts().written == 2; });
    EXPECT_THAT(timesOf(path), ElementsAre(1.0, 3.0));
    // One frame may always wait.
    recorder.write(frameAt(4.0, 20));
    waitFor([&] { return recorder.counts().written == 3; });
}

TEST_F(FrameRecorderTest, DoesNotMakeTheHostWaitForTheSystemLog) {
    const SyslogCapture log;
    FrameRecorder recorder(path, installation);
    std::unique_lock<std::mutex> heldUp = SyslogCapture::holdUp();
    recorder.write(badFrame());
    std::future<void> host = std::async(std::launch::async, [&] {
        waitFor([&] { return recorder.counts().refused == 1; });
        recorder.write(frameAt(1.0));
    });
    EXPECT_EQ(host.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    heldUp.unlock();
    host.get();
    waitFor([&] { return recorder.counts().written == 1; });
    EXPECT_THAT(log.errors(), SizeIs(1));
}

TEST_F(FrameRecorderTest, LogsACauseOnceAMinute) {
    const SyslogCapture log;
    FrameRecorder recorder(path, installation);
    for (int i = 1; i <= 20; ++i) {
        recorder.write(frameAt(i));
        recorder.write(frameAt(i));
    }
    waitFor([&] { return recorder.counts().written == 20 && recorder.counts().refused == 20; });
    EXPECT_THAT(log.errors(), SizeIs(1));
}

TEST_F(FrameRecorderTest, LeavesOutOneFrameThatIsFarFromTheOthersInTime) {
    const SyslogCapture log;
    {
        FrameRecorder recorder(path, installation);
        for (const double time : {100.0, 100.1, 9000.0, 100.2, 3.0, 100.3, 100.4}) {
            recorder.write(frameAt(time));
        }
    }
    EXPECT_THAT(timesOf(path), ElementsAre(100.0, 100.1, 100.2, 100.3, 100.4));
    EXPECT_FALSE(std::filesystem::exists(path + ".1"));
    EXPECT_THAT(log.errors(), ElementsAre(HasSubstr("time: far from that of the others")));
}

TEST_F(FrameRecorderTest, BeginsAFileWhenAClockWasSet) {
    const SyslogCapture log;
    FrameRecorder recorder(path, installation);
    for (const double time : {100.0, 100.1, 9000.0, 9000.1, 9000.2, 8990.0, 8990.1}) {
        recorder.write(frameAt(time));
    }
    waitFor([&] { return recorder.counts().written == 7; });
    EXPECT_EQ(recorder.counts().refused, 0U);
    EXPECT_THAT(timesOf(path + ".2"), ElementsAre(100.0, 100.1));
    EXPECT_THAT(timesOf(path + ".1"), ElementsAre(9000.0, 9000.1, 9000.2));
    EXPECT_THAT(timesOf(path), ElementsAre(8990.0, 8990.1));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(FrameRecorderTest, BeginsAFileWhenOneSensorBeginsAnew) {
    FrameRecorder recorder(path, installation);
    recorder.write({Veskar::Radar, 500.0, 500.0, {}});
    recorder.write({Veskar::VideoObject, 500.0, 500.0, {}});
    recorder.write({Veskar::Radar, 0.1, 500.1, {}});  // its clock begins at 0
    recorder.write({Veskar::VideoObject, 500.1, 500.1, {}});
    recorder.write({Veskar::Radar, 0.2, 500.2, {}});
    recorder.write({Veskar::VideoObject, 500.2, 500.2, {}});
    waitFor([&] { return recorder.counts().written == 6; });
    EXPECT_THAT(timesOf(path + ".1"), ElementsAre(500.0, 500.0, 500.1));
    EXPECT_THAT(timesOf(path), ElementsAre(0.1, 0.2, 500.2));
}

TEST_F(FrameRecorderTest, SurvivesWantOfMemory) {
    const SyslogCapture log;
    FrameRecorder recorder(path, installation);
    std::unique_lock<std::mutex> heldUp = SyslogCapture::holdUp();
    recorder.write(badFrame());
    waitFor([&] { return recorder.counts().refused == 1; });
    recorder.write(frameAt(1.0, 5000));
    {
        const VeskarTest::AllocationLimit limit(100000);
        recorder.write(frameAt(2.0, 1));
        heldUp.unlock();
        waitFor([&] { return recorder.counts().failed == 1; });
    }
    EXPECT_EQ(recorder.counts().lastFault, "std::bad_alloc");
    const SensorFrame large = frameAt(3.0, 5000);
    {
        const VeskarTest::AllocationLimit limit(100000);
        recorder.write(large);
    }
    EXPECT_EQ(recorder.counts().dropped, 1U);
    recorder.write(frameAt(4.0));
    waitFor([&] { return recorder.counts().written == 2; });
    EXPECT_THAT(timesOf(path), ElementsAre(2.0, 4.0));
}

TEST_F(FrameRecorderTest, RefusesAHeaderThatCouldNotBeReadBack) {
    EXPECT_EQ(faultOf(Installation(), {}),
              "camera.position: the height above ground, the third number, must be positive");
    Installation vague = installation;
    vague.radar.rangeStd = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(faultOf(vague, {}), "radar.rangeStd: expected a number, found null");
    vague = installation;
    vague.radar.fieldOfView = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(faultOf(vague, {}), "the header of the recording holds a number that is not finite");
    FrameRecorder::Options options;
    options.name = std::string("a\0b", 3);
    EXPECT_THAT(faultOf(installation, options), HasSubstr("line 1, column "));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(FrameRecorderTest, LeavesAloneWhatIsNoFile) {
    std::filesystem::create_directory(path);
    EXPECT_THAT(faultOf(installation, {}), HasSubstr(path + ": is no regular file"));
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST_F(FrameRecorderTest, RotatesUnlessItIsToldNotTo) {
    EXPECT_EQ(FrameRecorder::Options().rotateAfter, 268435456U);
    EXPECT_EQ(FrameRecorder::Options().keptFiles, 5U);
}

TEST_F(FrameRecorderTest, SaysThatTheFileCannotBeCreated) {
    EXPECT_THROW(FrameRecorder(directory.file("none/recording"), installation), InputError);
}
