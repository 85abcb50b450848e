// SPDX-License-Identifier: Apache-2.0
// Every command under faults of its environment: signals at any moment, full disks, closed pipes,
// closed streams and inputs of arbitrary bytes.
#include "Process.h"
#include "Programs.h"
#include "SourceDirectory.h"
#include "report/Page.h"
#include "support/Pipe.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using VeskarTest::dataFile;
using VeskarTest::Outcome;
using VeskarTest::Pipe;
using VeskarTest::RunningProgram;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;
using VeskarTest::writeAll;

namespace {

using Words = std::vector<std::string>;

constexpr int signals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

std::string inOneLine(const Words& words) {
    std::string line;
    for (const std::string& word : words) {
        line += " " + word;
    }
    return line;
}

Words operator+(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

/// A command with a placeholder for one of its inputs.
struct Input {
    Words before;
    Words after;
    std::string good;  ///< a valid file for it

    Words with(const std::string& path) const { return before + Words{path} + after; }
};

class Fault : public testing::Test {
protected:
    void SetUp() override {
        spill(directory / "explained",
              veskar({"replay", recording, "--explain", "-", "-o", directory / "none"}).output);
        ASSERT_EQ(::unlink((directory / "none").c_str()), 0);
        spill(camera, R"({"bdc": false, "rotation": {"pitch": 20.0, "yaw": 0.0, "roll": 0.0},
            "resolution": [1920, 1080], "sensorOffset": [0.0, 0.0],
            "imageToRadiansPolynomial": [0.0, 0.7853981633974483, 0.0, 0.0],
            "radiansToImagePolynomial": [0.0, 1.2732395447351628, 0.0, 0.0],
            "fov": [0.7853981633974483, 0.44], "position": [0.0, 0.0, 5.0]})");
        spill(results, "1,1,0,0,1,1,1,10,0,0\n");
        files = directory.names();
    }

    /// @return every command with valid inputs, without its output
    std::vector<Words> commands() const {
        std::vector<Words> all = {{"simulate", scenario},
                                  {"import", "kitti", labels, calibration},
                                  {"import", "autoferry", detections, groundTruth},
                                  {"import", "mot", results, recording},
                                  {"replay", recording},
                                  {"evaluate", recording},
                                  {"evaluate", recording, fused},
                                  {"export", recording, fused, "--to", "csv"},
                                  {"export", recording, "--to", "geojson"},
                                  {"export", recording, "--to", "mcap"},
                                  {"info", recording},
                                  {"check", recording},
                                  {"check", scenario}};
        if (hasPage) {
            all.push_back({"report", recording, fused});
        }
        return all;
    }

    /// @return every input of every command
    std::vector<Input> inputs() const {
        std::vector<Input> all = {{{"simulate"}, {}, scenario},
                                  {{"import", "kitti"}, {calibration}, labels},
                                  {{"import", "kitti", labels}, {}, calibration},
                                  {{"import", "autoferry"}, {groundTruth}, detections},
                                  {{"import", "autoferry", detections}, {}, groundTruth},
                                  {{"import", "mot"}, {recording}, results},
                                  {{"import", "mot", results}, {}, recording},
                                  {{"replay"}, {}, recording},
                                  {{"replay", recording, "--config"}, {}, configuration},
                                  {{"replay", recording, "--camera"}, {}, camera},
                                  {{"evaluate"}, {}, recording},
                                  {{"evaluate", recording}, {}, fused},
                                  {{"evaluate", recording, "--config"}, {}, configuration},
                                  {{"evaluate", recording, "--camera"}, {}, camera},
                                  {{"export", "--to", "geojson"}, {}, recording},
                                  {{"export", "--to", "csv", recording}, {}, fused},
                                  {{"check", "--as", "recording"}, {}, recording},
                                  {{"check", "--as", "scenario"}, {}, scenario},
                                  {{"check", "--as", "configuration"}, {}, configuration},
                                  {{"check", "--as", "camera"}, {}, camera}};
        if (hasPage) {
            all.push_back({{"report"}, {fused}, recording});
            all.push_back({{"report", recording}, {}, fused});
            all.push_back({{"report", recording, fused, "--explain"}, {}, explanation});
        }
        return all;
    }

    /// Removes the emulator's message about a program that ends by a signal.
    static std::string withoutEmulator(const std::string& errors) {
        return errors.substr(0, errors.find("qemu: uncaught target signal"));
    }

    /// Runs a command whose standard output is a pipe that nobody reads.
    static Outcome withoutReader(const Words& command) {
        return VeskarTest::run(
            Words{"bash", "-c", "exec 3> >(:); wait $!; exec \"$@\" >&3", "bash", VESKAR_PROGRAM} +
            command);
    }

    using Await = std::function<void(const RunningProgram&)>;

    /// Sends a signal to a command at a given moment.
    void interrupt(const Words& arguments, const RunningProgram::Streams& streams, int signal,
                   const Await& await = &RunningProgram::awaitIdle) {
        SCOPED_TRACE(inOneLine(arguments) + ", signal " + std::to_string(signal));
        RunningProgram program(arguments, streams);
        await(program);
        program.send(signal);
        const Outcome outcome = program.finish();
        EXPECT_EQ(outcome.status, -signal);
        EXPECT_THAT(withoutEmulator(outcome.errors), EndsWith("veskar: interrupted\n"));
        EXPECT_EQ(directory.names(), files);
    }
    /// Sends every signal, each to a new run.
    void interrupt(const Words& arguments, const RunningProgram::Streams& streams,
                   const Await& await = &RunningProgram::awaitIdle) {
        for (const int signal : signals) {
            interrupt(arguments, streams, signal, await);
        }
    }

    VeskarTest::TemporaryDirectory directory;
    const bool hasPage = !Workbench::reportPage.empty();
    const std::string scenario = dataFile("tiny.scenario.json");
    const std::string recording = dataFile("tiny.jsonl");
    const std::string fused = dataFile("tiny.fused.jsonl");
    const std::string labels = dataFile("kitti.labels.txt");
    const std::string calibration = dataFile("kitti.calibration.txt");
    const std::string detections = dataFile("boats.detections.json");
    const std::string groundTruth = dataFile("boats.groundTruth.json");
    const std::string configuration = std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json";
    const std::string explanation = directory / "explained";
    const std::string camera = directory / "camera";
    const std::string results = directory / "results";
    std::string out = directory / "out";
    Words files;  ///< in the directory before a command
};

const std::string frames =
    "{\"source\":\"radar\",\"time\":1,\"tracks\":[]}\n"
    "{\"source\":\"video\",\"time\":1,\"tracks\":[]}\n";

}  // namespace

TEST_F(Fault, AGoodInputPasses) {
    for (const Input& input : inputs()) {
        SCOPED_TRACE(inOneLine(input.with("...")));
        EXPECT_EQ(veskar(input.with(input.good) + Words{"-o", out}).status, 0);
    }
}

TEST_F(Fault, ASignalEndsACommandWhoseInputIsSilent) {
    for (const Input& input : inputs()) {
        const Pipe silent;
        interrupt(input.with("-") + Words{"-o", out}, {silent.reader.get(), -1});
    }
}

TEST_F(Fault, ASignalEndsACommandWhoseInputFallsSilent) {
    for (const Input& input : inputs()) {
        // Ends within a line, and before the end of the document.
        const std::string text = slurp(input.good).substr(0, 60000);
        for (const int signal : signals) {
            const Pipe pipe;
            writeAll(pipe.writer.get(), text.substr(0, text.size() / 2));
            interrupt(input.with("-") + Words{"-o", out}, {pipe.reader.get(), -1}, signal);
        }
    }
}

TEST_F(Fault, ASignalEndsACommandWhoseReaderTakesNothing) {
    const Pipe full;
    fill(full);
    for (const Words& command : commands()) {
        interrupt(command + Words{"-o", "-"}, {-1, full.writer.get()});
    }
    interrupt({"--help"}, {-1, full.writer.get()});
    interrupt({"replay", recording, "-o", "/dev/null", "--summary"}, {-1, full.writer.get()});
    interrupt({"replay", recording, "-o", "/dev/null", "--explain", "-"}, {-1, full.writer.get()});
}

TEST_F(Fault, ASignalEndsACommandWhosePipeHasNoOtherEnd) {
    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
    files = directory.names();
    for (const Input& input : inputs()) {
        interrupt(input.with(directory / "pipe") + Words{"-o", out}, {});
    }
    for (const Words& command : commands()) {
        interrupt(command + Words{"-o", directory / "pipe"}, {});
    }
}

TEST_F(Fault, ASignalEndsACommandAtWork) {
    const Words endless = {"simulate", scenario, "--duration", "1000000", "-o"};
    interrupt(endless + Words{out}, {}, [this](const RunningProgram& program) {
        program.await([this] { return directory.names() != files; });
    });
    interrupt(endless + Words{"-"}, {}, &RunningProgram::awaitOutput);
}

TEST_F(Fault, ASignalEndsAPause) {
    const std::string text = slurp(recording);
    for (const char* time : {"100", "1e18"}) {
        spill(directory / "late", text.substr(0, text.find('\n') + 1) + frames +
                                      "{\"source\":\"radar\",\"time\":" + time +
                                      ",\"tracks\":[]}\n");
        files = directory.names();
        interrupt({"replay", directory / "late", "--realtime", "-o", out}, {});
    }
}

TEST_F(Fault, ATerminalThatClosesTakesNoBarAndLeavesNoOutput) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_EQ(::grantpt(terminal), 0);
    ASSERT_EQ(::unlockpt(terminal), 0);
    const int program = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
    RunningProgram running({"simulate", scenario, "--duration", "1000000", "-o", out},
                           {-1, -1, program});
    ::close(program);
    // The progress bar has been drawn.
    std::array<char, 64> drawn{};
    EXPECT_GT(::read(terminal, drawn.data(), drawn.size()), 0);
    ::close(terminal);
    running.send(SIGHUP);
    EXPECT_EQ(running.finish().status, -SIGHUP);
    EXPECT_EQ(directory.names(), files);
}

TEST_F(Fault, ASignalThatComesTwiceIsOne) {
    const Pipe silent;
    for (const int signal : signals) {
        RunningProgram program({"replay", "-", "-o", out}, {silent.reader.get(), -1});
        program.awaitIdle();
        program.send(signal);
        program.send(signal);
        EXPECT_EQ(program.finish().status, -signal);
        EXPECT_EQ(directory.names(), files);
    }
}

TEST_F(Fault, ASignalThatTheProgramShallIgnoreIsIgnored) {
    Pipe pipe;
    RunningProgram program({"replay", "-", "-o", out}, {pipe.reader.get(), -1}, SIGHUP);
    program.awaitIdle();
    program.send(SIGHUP);
    writeAll(pipe.writer.get(), slurp(recording));
    // The child has inherited no writing end.
    pipe.writer.reset();
    EXPECT_EQ(program.finish().status, 0);
    EXPECT_EQ(slurp(out), veskar({"replay", recording}).output);
}

TEST_F(Fault, AFullDiskIsStatus2) {
    const std::string message = "cannot write: No space left on device\n";
    std::vector<Words> toStream;
    std::vector<Words> all;
    for (const Words& command : commands()) {
        all.push_back(command + Words{"-o", "/dev/full"});
        toStream.push_back(command + Words{"-o", "-"});
        toStream.push_back(Words{command[0], "--help"});
    }
    all.push_back({"replay", recording, "-o", out, "--explain", "/dev/full"});
    toStream.push_back({"--help"});
    toStream.push_back({"--version"});
    toStream.push_back({"replay", recording, "-o", "/dev/null", "--summary"});
    toStream.push_back({"replay", recording, "-o", "/dev/null", "--explain", "-"});
    for (const Words& command : all) {
        SCOPED_TRACE(inOneLine(command));
        const Outcome outcome = veskar(command);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, "veskar: /dev/full: " + message);
        EXPECT_EQ(directory.names(), files);
    }
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    for (const Words& command : toStream) {
        SCOPED_TRACE(inOneLine(command));
        RunningProgram program(command, {-1, full});
        const Outcome outcome = program.finish();
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, "veskar: <stdout>: " + message);
    }
    ::close(full);
}

// As `veskar replay recording | head -n 1` does.
TEST_F(Fault, AReaderThatHasSeenEnoughIsNoError) {
    for (const Words& command : commands()) {
        SCOPED_TRACE(inOneLine(command));
        const Outcome outcome = withoutReader(command + Words{"-o", "-"});
        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.errors, IsEmpty());
    }
}

TEST_F(Fault, AReaderThatLeavesAnotherOutputUnfinishedIsStatus2) {
    for (const Words& command : {Words{"replay", recording, "-o", out, "--explain", "-"},
                                 Words{"replay", recording, "-o", "-", "--explain", out}}) {
        SCOPED_TRACE(inOneLine(command));
        const Outcome outcome = withoutReader(command);
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, "veskar: <stdout>: cannot write: Broken pipe\n");
        EXPECT_EQ(directory.names(), files);
    }
}

TEST_F(Fault, WithoutStandardStreamsNothingLandsInTheWrongFile) {
    for (const Words& command : commands()) {
        SCOPED_TRACE(inOneLine(command));
        const Outcome usual = veskar(command + Words{"-o", out});
        const std::string expected = slurp(out);
        const Outcome outcome = VeskarTest::run(
            Words{"bash", "-c", "exec \"$@\" <&- >&- 2>&-", "bash", VESKAR_PROGRAM} + command +
            Words{"-o", out});
        EXPECT_EQ(outcome.status, usual.status);
        EXPECT_EQ(slurp(out), expected);
        const Outcome nowhere =
            VeskarTest::run(Words{"bash", "-c", "exec \"$@\" >&-", "bash", VESKAR_PROGRAM} +
                            command + Words{"-o", "-"});
        EXPECT_EQ(nowhere.status, 2);
        EXPECT_THAT(nowhere.errors, HasSubstr("<stdout>: cannot write: Bad file descriptor"));
    }
}

TEST_F(Fault, WithoutStandardStreamsNoLogLineLandsInTheOutput) {
    // The library logs that there are too many, and the program reports it.
    const std::string text = slurp(recording);
    std::string many = text.substr(0, text.find('\n') + 1);
    for (int frame = 1; frame <= 2; ++frame) {
        many += "{\"source\":\"radar\",\"time\":" + std::to_string(frame) + ",\"tracks\":[";
        for (int id = 0; id < 520; ++id) {
            many += (id == 0 ? "" : ",") + std::string("{\"id\":") + std::to_string(id) +
                    ",\"range\":" + std::to_string(10 + id) + ",\"azimuth\":0,\"radialSpeed\":0}";
        }
        many +=
            "]}\n{\"source\":\"video\",\"time\":" + std::to_string(frame) + ".01,\"tracks\":[]}\n";
    }
    many += "{\"source\":\"radar\",\"time\":3,\"tracks\":[]}\n";
    spill(directory / "many", many);
    const Words command = {"replay", directory / "many", "-o", out};
    const Outcome usual = veskar(command);
    EXPECT_EQ(usual.status, 1);
    EXPECT_THAT(usual.errors, Not(IsEmpty()));
    const std::string expected = slurp(out);
    const Outcome outcome = VeskarTest::run(
        Words{"bash", "-c", "exec \"$@\" <&- >&- 2>&-", "bash", VESKAR_PROGRAM} + command);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(slurp(out), expected);
}

TEST_F(Fault, AMessageThatCannotBeWrittenChangesNoStatus) {
    for (const Words& command :
         {Words{"replay", directory / "no such file"}, Words{"replay"}, Words{"fly"}}) {
        const Outcome outcome = VeskarTest::run(
            Words{"bash", "-c", "exec \"$@\" 2>/dev/full", "bash", VESKAR_PROGRAM} + command);
        EXPECT_EQ(outcome.status, 2) << inOneLine(command);
    }
}

TEST_F(Fault, AWarningThatCannotBeWrittenChangesNoStatus) {
    std::string words = slurp(recording);
    for (std::size_t place = 0; (place = words.find("\"human\"", place)) != std::string::npos;) {
        words.replace(place, 7, "\"person\"");
    }
    const std::string wordy = directory / "wordy";
    spill(wordy, words);
    std::string settings = slurp(std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json");
    const std::string key = "\"removeClassMismatches\"";
    settings.replace(settings.find(key), key.size(), "\"removeClassMissmatches\"");
    const std::string misspelt = directory / "misspelt";
    spill(misspelt, settings);
    const Words command = {"replay", wordy, "--config", misspelt, "--summary"};
    for (const char* streams : {"2>/dev/full", "2>&-", "<&- 2>&-"}) {
        for (const std::string& output : {out, std::string("-")}) {
            SCOPED_TRACE(streams + (" " + output));
            const Outcome usual = veskar(command + Words{"-o", output});
            EXPECT_THAT(usual.errors, HasSubstr("veskar: warning: " + misspelt));
            EXPECT_THAT(usual.errors, HasSubstr("veskar: warning: " + wordy));
            const Outcome outcome = VeskarTest::run(
                Words{"bash", "-c", std::string("exec \"$@\" ") + streams, "bash", VESKAR_PROGRAM} +
                command + Words{"-o", output});
            EXPECT_EQ(outcome.status, 0);
            EXPECT_EQ(outcome.output, usual.output);
        }
    }
}

TEST_F(Fault, LinesForTheJournalHaveTheirPriority) {
    std::string settings = slurp(std::string(VESKAR_SOURCE_DIR) + "/config/fusion.json");
    const std::string key = "\"removeClassMismatches\"";
    settings.replace(settings.find(key), key.size(), "\"removeClassMissmatches\"");
    spill(directory / "misspelt", settings);
    // Standard error is the file that the variable names, as the journal's socket would be.
    const auto withJournal = [](const std::string& stream, const Words& arguments) {
        return VeskarTest::run(Words{"bash", "-c", "JOURNAL_STREAM=" + stream + " exec \"$@\"",
                                     "bash", VESKAR_PROGRAM} +
                               arguments);
    };
    const std::string here = "$(stat -L -c %d:%i /proc/self/fd/2)";
    const Words warned = {"replay", recording, "--config", directory / "misspelt", "-o", out};
    EXPECT_THAT(withJournal(here, warned).errors, StartsWith("<4>veskar: warning: "));
    EXPECT_THAT(withJournal("1:1", warned).errors, StartsWith("veskar: warning: "));
    const Words failed = {"replay", directory / "no such file", "-o", out};
    EXPECT_THAT(withJournal(here, failed).errors, StartsWith("<3>veskar: "));
    EXPECT_THAT(withJournal("1:1", failed).errors, StartsWith("veskar: "));
}

TEST_F(Fault, AHostileInputIsRefusedWithAMessageAndWithoutAnOutput) {
    constexpr int deep = 150000;
    std::string objects;
    for (int i = 0; i < deep; ++i) {
        objects += "{\"a\":";
    }
    std::string binary;
    for (int i = 0; i < 1024; ++i) {
        binary += static_cast<char>(i % 256);
    }
    std::string closed = objects + "1" + std::string(deep, '}') + "\n";
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"empty", ""},
        {"a blank", "\n"},
        {"binary", binary},
        {"deep objects", closed},
        {"deep objects, cut off", objects},
        {"deep arrays", std::string(deep, '[') + std::string(deep, ']') + "\n"},
        {"deep within a header", R"({"format":"veskar-fused","version":1,"configuration":)" +
                                     closed.substr(0, closed.size() - 1) + "}\n"},
        {"a number", "1e999\n"},
        {"half a word", "\"\\ud800"}};
    for (const auto& [name, text] : texts) {
        spill(directory / "hostile", text);
        files = directory.names();
        for (const Input& input : inputs()) {
            SCOPED_TRACE(name + ":" + inOneLine(input.with("...")));
            if (input.good == explanation && text.find_first_not_of('\n') == std::string::npos) {
                continue;  // a run without fused frames has nothing to explain
            }
            const bool isCheck = input.before[0] == "check";
            const Outcome outcome =
                veskar(input.with(directory / "hostile") + Words{"-o", isCheck ? "-" : out});
            EXPECT_THAT(outcome.status, AnyOf(2, isCheck ? 1 : 2));
            const std::string& told = isCheck ? outcome.output : outcome.errors;
            EXPECT_THAT(told, Not(IsEmpty()));
            EXPECT_TRUE(std::all_of(told.begin(), told.end(), [](char c) {
                return c == '\n' || (c >= ' ' && c <= '~');
            })) << told;
            EXPECT_LT(told.size(), 2000u);
            EXPECT_EQ(directory.names(), files);
        }
    }
}

TEST_F(Fault, AnInputThatBreaksOffIsRefused) {
    for (const Input& input : inputs()) {
        SCOPED_TRACE(inOneLine(input.with("...")));
        const std::string text = slurp(input.good);
        spill(directory / "hostile", text.substr(0, text.size() / 2));
        files = directory.names();
        const bool isCheck = input.before[0] == "check";
        const Outcome outcome =
            veskar(input.with(directory / "hostile") + Words{"-o", isCheck ? "-" : out});
        EXPECT_EQ(outcome.status, isCheck ? 1 : 2);
        EXPECT_EQ(directory.names(), files);
    }
}

TEST_F(Fault, ALineWithoutEndIsRefused) {
    for (const Input& input : inputs()) {
        SCOPED_TRACE(inOneLine(input.with("...")));
        const Outcome outcome = veskar(input.with("/dev/zero") + Words{"-o", out});
        EXPECT_EQ(outcome.status, 2);
        EXPECT_EQ(outcome.errors, "veskar: /dev/zero:1: line is longer than 64 MiB\n");
        EXPECT_EQ(directory.names(), files);
    }
}

TEST_F(Fault, AGapOfAnyLengthTakesLittle) {
    const std::string text = slurp(recording);
    const std::size_t headerEnd = text.find('\n') + 1;
    const std::string track = R"({"id":1,"range":20,"azimuth":0,"speed":1,"direction":0})";
    for (const char* time : {"1e8", "1e18", "1e300"}) {
        SCOPED_TRACE(time);
        std::string gap = text;
        for (const char* kind : {"radar", "video", "truth"}) {
            gap += std::string("{\"source\":\"") + kind + "\",\"time\":" + time + ",\"" +
                   (kind == std::string("truth") ? "objects" : "tracks") + "\":[]}\n";
        }
        // A sensor with only such long intervals counts as slow.
        std::string slow = text.substr(0, headerEnd);
        for (const char* multiple : {"0", "1", "2"}) {
            slow += std::string("{\"source\":\"radar\",\"time\":") + multiple + (time + 1) +
                    ",\"tracks\":[" + track + "]}\n";
        }
        slow += std::string("{\"source\":\"truth\",\"time\":9") + (time + 1) + ",\"objects\":[]}\n";
        for (const std::string& recorded : {gap, slow}) {
            spill(directory / "gap", recorded);
            const Outcome replayed = veskar({"replay", directory / "gap", "-o", out});
            EXPECT_EQ(replayed.status, 0) << replayed.errors;
            const std::string lines = slurp(out);
            EXPECT_LT(std::count(lines.begin(), lines.end(), '\n'), 2000);
            EXPECT_EQ(veskar({"evaluate", directory / "gap", "-o", "/dev/null"}).status, 0);
            EXPECT_EQ(veskar({"evaluate", directory / "gap", out, "-o", "/dev/null"}).status, 0);
            EXPECT_EQ(veskar({"check", directory / "gap", "-o", "/dev/null"}).status, 0);
            if (hasPage) {
                EXPECT_EQ(veskar({"report", directory / "gap", out, "-o", "/dev/null"}).status, 0);
            }
        }
    }
}

TEST_F(Fault, WhatIsNoNumberPassesNoRange) {
    const Words kitti = {"import", "kitti", labels, calibration};
    const Words autoferry = {"import", "autoferry", detections, groundTruth};
    for (const Words& command :
         {Words{"simulate", scenario, "--duration"}, kitti + Words{"--rate"},
          kitti + Words{"--camera-height"}, kitti + Words{"--range-std"},
          kitti + Words{"--azimuth-std"}, kitti + Words{"--detection-probability"},
          autoferry + Words{"--forward"}, Words{"evaluate", recording, "--cutoff"},
          Words{"evaluate", recording, "--bands"}}) {
        for (const char* value : {"nan", "-nan", "inf", "1e999", "red"}) {
            SCOPED_TRACE(inOneLine(command) + " " + value);
            const Outcome outcome = veskar(command + Words{value});
            EXPECT_EQ(outcome.status, 2);
            EXPECT_THAT(outcome.errors, HasSubstr(command.back()));
            EXPECT_THAT(outcome.output, IsEmpty());
        }
    }
}

TEST_F(Fault, ASeedIsAnIntegerOf63BitsWithoutSign) {
    for (const Words& command :
         {Words{"simulate", scenario}, Words{"import", "kitti", labels, calibration}}) {
        for (const char* value :
             {"-1", "9223372036854775808", "18446744073709551616", "1.5", "nan", "1e3"}) {
            const Outcome outcome = veskar(command + Words{"--seed", value});
            EXPECT_EQ(outcome.status, 2) << inOneLine(command) << " " << value;
            EXPECT_THAT(outcome.errors, HasSubstr("--seed"));
        }
        EXPECT_THAT(veskar(command + Words{"--seed", "9223372036854775807"}).output,
                    HasSubstr("\"seed\":9223372036854775807"));
    }
}
