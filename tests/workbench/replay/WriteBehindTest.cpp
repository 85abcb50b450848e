// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "replay/WriteBehind.h"

#include <array>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using Workbench::FusedFrame;
using Workbench::LineText;
using Workbench::OutputFile;
using Workbench::WriteBehind;

namespace {

FusedFrame frameAt(double time) {
    return {time, time, Veskar::VideoObject, {}};
}

void addTime(LineText& text, const FusedFrame& frame) {
    text.addNumber(frame.time, 0);
    text += '\n';
}

// More than the output's buffer holds.
void addMuch(LineText& text, const FusedFrame& /*frame*/) {
    text += std::string(1 << 20, 'x');
}

}  // namespace

TEST(WriteBehind, WritesEveryFrameInItsOrder) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "frames";
    std::string expected = "header\n";
    OutputFile output(path);
    output.write(expected);
    WriteBehind writer(output, addTime);
    for (int i = 0; i < 1000; ++i) {
        writer.write(frameAt(i));
        expected += std::to_string(i) + "\n";
    }
    writer.finish();
    output.write("end\n");
    output.commit();
    EXPECT_EQ(VeskarTest::slurp(path), expected + "end\n");
}

TEST(WriteBehind, TellsThatTheDiskIsFull) {
    OutputFile output("/dev/full");
    WriteBehind writer(output, addMuch);
    writer.write(frameAt(0.0));
    EXPECT_THROW(writer.finish(), Veskar::Host::InputError);
}

TEST(WriteBehind, TakesNothingMoreOnceTheDiskIsFull) {
    OutputFile output("/dev/full");
    WriteBehind writer(output, addMuch);
    const auto writeOn = [&] {
        for (int i = 0; i < 1000; ++i) {
            writer.write(frameAt(i));
        }
    };
    EXPECT_THROW(writeOn(), Veskar::Host::InputError);
}

TEST(WriteBehind, HandsOnEveryFrameToWhomFollowsAPipe) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "pipe";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const int reading = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ::fcntl(reading, F_SETFL, 0);
    OutputFile output(path);
    WriteBehind writer(output, addTime, WriteBehind::Flush::EveryFrame);
    writer.write(frameAt(7.0));
    std::array<char, 8> text{};
    ASSERT_EQ(::read(reading, text.data(), text.size()), 2);
    EXPECT_EQ(std::string(text.data()), "7\n");
    writer.finish();
    ::close(reading);
}
