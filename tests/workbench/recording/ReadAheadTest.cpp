// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "recording/ReadAhead.h"
#include "recording/RecordingWriter.h"

#include <variant>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using Workbench::ReadAhead;
using Workbench::RecordingReader;

namespace {

std::string textOf(const Workbench::RecordingLine& line) {
    return std::visit([](const auto& frame) { return toJsonLine(frame); }, line);
}

// A named pipe without end of file, since its writer stays open.
class SilentPipe {
public:
    explicit SilentPipe(const std::string& text) : path(directory_ / "pipe") {
        if (::mkfifo(path.c_str(), 0600) != 0) {
            throw std::runtime_error("cannot make a pipe");
        }
        descriptor_ = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
        if (::write(descriptor_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            throw std::runtime_error("cannot fill the pipe");
        }
    }
    ~SilentPipe() { ::close(descriptor_); }
    SilentPipe(const SilentPipe&) = delete;
    SilentPipe& operator=(const SilentPipe&) = delete;

private:
    VeskarTest::TemporaryDirectory directory_;
    int descriptor_ = -1;

public:
    const std::string path;
};

std::string headerLine() {
    const std::string text = VeskarTest::slurp(VeskarTest::dataFile("tiny.jsonl"));
    return text.substr(0, text.find('\n') + 1);
}

}  // namespace

TEST(ReadAhead, HandsOutWhatTheReaderWould) {
    const std::string path = VeskarTest::dataFile("tiny.jsonl");
    RecordingReader plain(path);
    RecordingReader reader(path);
    ReadAhead ahead(reader);
    EXPECT_EQ(ahead.fractionRead(), 0.0);
    int lines = 0;
    while (const auto expected = plain.next()) {
        const auto actual = ahead.next();
        ASSERT_TRUE(actual);
        EXPECT_EQ(textOf(*actual), textOf(*expected));
        EXPECT_DOUBLE_EQ(ahead.fractionRead(), plain.input().fractionRead());
        ++lines;
    }
    EXPECT_GT(lines, 10);
    EXPECT_FALSE(ahead.next());
    EXPECT_DOUBLE_EQ(ahead.fractionRead(), 1.0);
}

TEST(ReadAhead, TellsOfAFaultBehindTheLinesBeforeIt) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "bad.jsonl";
    VeskarTest::spill(path, headerLine() +
                                "{\"source\":\"video\",\"time\":0.5,\"tracks\":[]}\n"
                                "{\"source\":\"video\",\"time\":\"late\",\"tracks\":[]}\n");
    RecordingReader reader(path);
    ReadAhead ahead(reader);
    EXPECT_TRUE(ahead.next());
    try {
        ahead.next();
        FAIL();
    } catch (const Veskar::Host::InputError& error) {
        EXPECT_EQ(error.what(), path + ":3: time: expected a number, found a string");
    }
}

TEST(ReadAhead, EndsThoughItsPipeIsSilent) {
    const SilentPipe pipe(headerLine() + "{\"source\":\"video\",\"time\":0.5,\"tracks\":[]}\n");
    RecordingReader reader(pipe.path);
    ReadAhead ahead(reader);
    EXPECT_TRUE(ahead.next());
}

TEST(ReadAhead, DoesNotKnowHowMuchOfAPipeIsRead) {
    const SilentPipe pipe(headerLine() + "{\"source\":\"video\",\"time\":0.5,\"tracks\":[]}\n");
    RecordingReader reader(pipe.path);
    ReadAhead ahead(reader);
    EXPECT_TRUE(ahead.next());
    EXPECT_LT(ahead.fractionRead(), 0.0);
}
