// SPDX-License-Identifier: Apache-2.0
// Runs `veskar run` and `veskar record` as a user does.
#include "Process.h"
#include "Programs.h"
#include "SourceDirectory.h"
#include "cli/live/LiveSite.h"
#include "live/support/Client.h"
#include "live/view/LiveView.h"
#include "support/Pipe.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

using testing::AnyOf;
using testing::ContainsRegex;
using testing::ElementsAreArray;
using testing::Gt;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using VeskarTest::Lines;
using VeskarTest::linesOf;
using VeskarTest::occurrences;
using VeskarTest::Outcome;
using VeskarTest::RunningProgram;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::utcNow;
using VeskarTest::veskar;
using VeskarTest::writeAll;

namespace {

using Clock = std::chrono::steady_clock;
/// @return the first line that a connection gives
std::string firstLine(const Veskar::FileDescriptor& connection) {
    std::string line;
    for (char letter = 0; ::read(connection.get(), &letter, 1) == 1 && letter != '\n';) {
        line += letter;
    }
    return line;
}

/// Two sensors that write to Unix sockets, and where the results go.
class LiveProgram : public testing::Test {
protected:
    LiveProgram() {
        header_ = nlohmann::json::parse(simulated_.front());
        run_["installation"] = {{"camera", header_["camera"]}, {"radar", header_["radar"]}};
        run_["installation"]["site"] = header_["site"];
        run_["sensors"] = nlohmann::json::array();
        for (const char* kind : {"camera", "radar"}) {
            run_["sensors"].push_back({{"kind", kind},
                                       {"format", "json-lines"},
                                       {"input", {{"type", "unix"}, {"path", socketOf(kind)}}}});
        }
        run_["outputs"] = nlohmann::json::array();
        run_["outputs"].push_back({{"format", "json-lines"}, {"to", {{"type", "stdout"}}}});
    }

    std::string socketOf(const std::string& name) const { return directory_ / (name + ".socket"); }
    std::string configuration() const {
        std::string path = directory_ / "run.json";
        spill(path, run_.dump(2));
        return path;
    }

    /// Waits until the program listens.
    void awaitSockets(const RunningProgram& program) const {
        program.await([this] {
            return VeskarTest::isListening(socketOf("camera")) &&
                   VeskarTest::isListening(socketOf("radar"));
        });
    }

    /// Sends the frames of the simulation at their pace, stamped in UTC.
    void sendFrames(double duration) const {
        sendFrames(duration, VeskarTest::connectTo(socketOf("camera")),
                   VeskarTest::connectTo(socketOf("radar")));
    }
    void sendFrames(double duration, const Veskar::FileDescriptor& camera,
                    const Veskar::FileDescriptor& radar) const {
        const Clock::time_point start = Clock::now();
        const double utc = utcNow();
        for (const std::string& text : simulated_) {
            nlohmann::json frame = nlohmann::json::parse(text);
            if (!frame.contains("tracks")) {
                continue;
            }
            const double time = frame["time"];
            const double received = frame.value("received", time);
            if (received > duration) {
                break;
            }
            frame["time"] = utc + time;
            frame.erase("received");
            std::this_thread::sleep_until(start + std::chrono::duration_cast<Clock::duration>(
                                                      std::chrono::duration<double>(received)));
            writeAll((frame["source"] == "radar" ? radar : camera).get(), frame.dump() + "\n");
        }
    }

    VeskarTest::TemporaryDirectory directory_;
    const Lines simulated_ =
        linesOf(veskar({"simulate", VeskarTest::dataFile("tiny.scenario.json")}).output);
    nlohmann::json header_;
    nlohmann::json run_;
};

/// @return the fused frames of a replay, without its header and digests
Lines replayed(const std::string& recording) {
    const Outcome replay = veskar({"replay", recording});
    EXPECT_EQ(replay.status, 0) << replay.errors;
    Lines lines = linesOf(replay.output);
    EXPECT_THAT(lines.size(), Gt(2U));
    return lines.size() < 2 ? Lines() : Lines(lines.begin() + 1, lines.end() - 1);
}

}  // namespace

TEST_F(LiveProgram, RecordsWhatReplaysToTheSameBytes) {
    const std::string recording = directory_ / "run.jsonl";
    RunningProgram program({"run", configuration(), "--record", recording}, {});
    awaitSockets(program);
    sendFrames(3.5);
    // For some time, the program adds frames for the sensors that have become silent.
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    program.send(SIGTERM);
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.errors, IsEmpty());
    const Lines live = linesOf(outcome.output);
    const Lines replay = replayed(recording);
    ASSERT_THAT(replay.size(), Gt(20U));
    EXPECT_THAT(live, ElementsAreArray(replay));
    EXPECT_THAT(replay, testing::Contains(HasSubstr("\"id\":")));
}

TEST_F(LiveProgram, RecordsWithoutFusing) {
    const std::string recording = directory_ / "run.jsonl";
    RunningProgram program({"record", configuration(), "-o", recording}, {});
    awaitSockets(program);
    sendFrames(1.5);
    program.send(SIGTERM);
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_THAT(outcome.output, IsEmpty());
    EXPECT_THAT(replayed(recording).size(), Gt(5U));
}

TEST_F(LiveProgram, TellsHowItFares) {
    run_["status"] = {{"interval", 0.2}, {"socket", {{"path", socketOf("status")}}}};
    RunningProgram program({"run", configuration()}, {});
    awaitSockets(program);
    sendFrames(1.0);
    const Veskar::FileDescriptor reader = VeskarTest::connectTo(socketOf("status"));
    const nlohmann::json status = nlohmann::json::parse(firstLine(reader));
    EXPECT_GE(status["sensor"]["camera"]["messages"], 3);
    EXPECT_EQ(status["sensor"]["camera"]["refused"], 0);
    EXPECT_GE(status["sensor"]["radar"]["framesTaken"], 3);
    EXPECT_GE(status["framesIn"], 6);
    EXPECT_GE(status["framesOut"], 4);
    EXPECT_GT(status["latencyMedian"], 0.0);
    EXPECT_EQ(status["output"]["json-lines"]["dropped"], 0);
    EXPECT_EQ(status["faults"], 0);
    program.send(SIGTERM);
    EXPECT_EQ(program.finish().status, 0);
}

TEST_F(LiveProgram, ReadsTheFusionsConfigurationAgain) {
    const std::string fusion = directory_ / "fusion.json";
    spill(fusion, slurp(VeskarTest::dataFile("../../../config/fusion.json")));
    run_["fusion"] = fusion;
    const std::string events = directory_ / "events.jsonl";
    run_["outputs"].push_back({{"format", "events"}, {"to", {{"type", "file"}, {"path", events}}}});
    const std::string recording = directory_ / "run.jsonl";
    RunningProgram program({"run", configuration(), "--record", recording}, {});
    awaitSockets(program);
    const Veskar::FileDescriptor connection = VeskarTest::connectTo(socketOf("camera"));
    sendFrames(1.5);
    program.send(SIGHUP);
    const auto hasEnded = [&] {
        return std::filesystem::exists(recording + ".1") &&
               slurp(recording + ".1").find("{\"end\":") != std::string::npos;
    };
    program.await(hasEnded);
    // The connection is as it was.
    writeAll(connection.get(),
             "{\"source\":\"video\",\"time\":" + std::to_string(utcNow()) + ",\"tracks\":[]}\n");
    program.await([&] { return linesOf(slurp(recording)).size() > 1; });
    program.send(SIGTERM);
    EXPECT_EQ(program.finish().status, 0);
    // The tracks have gone, before their ids occur again.
    const std::string told = slurp(events);
    EXPECT_THAT(told, HasSubstr("\"disappeared\""));
    EXPECT_EQ(occurrences(told, "\"appeared\""), occurrences(told, "\"disappeared\""));
    EXPECT_THAT(replayed(recording + ".1").size(), Gt(5U));
}

TEST_F(LiveProgram, GoesOnAsItWasWhenItCannotReload) {
    const std::string fusion = directory_ / "fusion.json";
    const std::string shipped = slurp(VeskarTest::dataFile("../../../config/fusion.json"));
    spill(fusion, shipped);
    run_["fusion"] = fusion;
    const std::string folder = directory_ / "recordings";
    std::filesystem::create_directory(folder);
    const std::string recording = folder + "/run.jsonl";
    RunningProgram program({"run", configuration(), "--record", recording}, {});
    awaitSockets(program);
    sendFrames(0.5);
    spill(fusion, "{");
    program.send(SIGHUP);
    program.await([&] { return program.errors().find("reload: ") != std::string::npos; });
    spill(fusion, shipped);
    std::filesystem::rename(folder, folder + ".moved");
    program.send(SIGHUP);
    const std::string second = "reload: " + recording;
    program.await([&] { return program.errors().find(second) != std::string::npos; });
    sendFrames(0.5);
    program.send(SIGTERM);
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, HasSubstr("reload: " + fusion));
    // One recording of all, which its tracks have gone through.
    EXPECT_THAT(linesOf(outcome.output), ElementsAreArray(replayed(folder + ".moved/run.jsonl")));
}

TEST_F(LiveProgram, LeavesRecordingsAloneWhenItCannotStart) {
    const std::string recording = directory_ / "run.jsonl";
    const std::string events = directory_ / "events.jsonl";
    spill(recording, "precious\n");
    spill(events, "precious\n");
    run_["record"] = {{"path", recording}};
    run_["outputs"].push_back({{"format", "events"}, {"to", {{"type", "file"}, {"path", events}}}});
    run_["sensors"][1]["input"] = {{"type", "unix"}, {"path", "/nowhere/socket"}};
    EXPECT_EQ(veskar({"run", configuration()}).status, 2);
    EXPECT_EQ(slurp(recording), "precious\n");
    EXPECT_EQ(slurp(events), "precious\n");
    EXPECT_FALSE(std::filesystem::exists(recording + ".1"));
}

TEST_F(LiveProgram, WritesNothingThatItReads) {
    const std::string path = configuration();
    const Outcome outcome = veskar({"run", path, "--record", path});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr(path));
    EXPECT_FALSE(std::filesystem::exists(path + ".1"));
    EXPECT_EQ(slurp(path), run_.dump(2));
    EXPECT_EQ(veskar({"record", path, "-o", path}).status, 2);
    EXPECT_EQ(slurp(path), run_.dump(2));
    run_["outputs"].push_back(
        {{"name", "a"}, {"format", "events"}, {"to", {{"type", "file"}, {"path", "x/../e"}}}});
    run_["outputs"].push_back(
        {{"name", "b"}, {"format", "events"}, {"to", {{"type", "file"}, {"path", "e"}}}});
    EXPECT_THAT(veskar({"run", configuration()}).errors,
                HasSubstr("outputs[2].to.path: \"e\" is taken already"));
}

TEST_F(LiveProgram, EndsWhenNobodyReadsItsOnlyOutput) {
    VeskarTest::Pipe output;
    RunningProgram program({"run", configuration()}, {-1, output.writer.get()});
    output.writer = Veskar::FileDescriptor();
    awaitSockets(program);
    const Veskar::FileDescriptor connection = VeskarTest::connectTo(socketOf("camera"));
    output.reader = Veskar::FileDescriptor();
    const std::string frame =
        "{\"source\":\"video\",\"time\":" + std::to_string(utcNow()) + ",\"tracks\":[]}\n";
    // Fails when the program has noticed by itself, and ended.
    ::send(connection.get(), frame.data(), frame.size(), MSG_NOSIGNAL);
    EXPECT_EQ(program.finish().status, 0);
}

TEST_F(LiveProgram, EndsWithItsOnlyInput) {
    run_["sensors"] = nlohmann::json::array();
    run_["sensors"].push_back(
        {{"kind", "radar"}, {"format", "json-lines"}, {"input", {{"type", "stdin"}}}});
    VeskarTest::Pipe input;
    RunningProgram program({"run", configuration()}, {input.reader.get()});
    writeAll(input.writer.get(), "{\"source\":\"radar\",\"time\":" + std::to_string(utcNow()) +
                                     ",\"tracks\":[]}\n" + "nonsense\n");
    program.awaitOutput();
    input.writer.reset();
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, StartsWith("{\"source\":\"video\""));
    EXPECT_THAT(outcome.errors, StartsWith("veskar: warning: input radar: refused a message: "));
}

TEST_F(LiveProgram, FusesBothSensorsOfOneStream) {
    for (auto& sensor : run_["sensors"]) {
        sensor["input"] = {{"type", "stdin"}};
    }
    VeskarTest::Pipe input;
    RunningProgram program({"run", configuration()}, {input.reader.get()});
    program.awaitIdle();
    sendFrames(2.5, input.writer, input.writer);
    input.writer = Veskar::FileDescriptor();
    const Outcome outcome = program.finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.errors, IsEmpty());
    const char* const track = R"("id":[0-9]+,"coasting":[0-9.]+\},\{"source":")";
    EXPECT_THAT(outcome.output,
                AnyOf(ContainsRegex(std::string(R"("source":"video",)") + track + "radar"),
                      ContainsRegex(std::string(R"("source":"radar",)") + track + "video")));
    run_["sensors"][0]["format"] = "onvif-json";
    EXPECT_THAT(veskar({"run", configuration()}).errors,
                HasSubstr("sensors[1].input: standard input has another reader already"));
}

TEST_F(LiveProgram, NamesTheFaultOfItsConfiguration) {
    run_["sensors"][1]["latency"] = -1;
    const std::string path = configuration();
    const Outcome outcome = veskar({"run", path});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.errors,
              "veskar: " + path + ": sensors[1].latency: -1 is not between 0 and 60\n");
    EXPECT_THAT(
        veskar({"run", path, "--set", "sensors.1.latency=0", "--set", "radarGain=0"}).errors,
        HasSubstr("--set radarGain: 0 is not"));
    EXPECT_THAT(veskar({"run", path, "--set", "sensors.1.latency=0", "--set", "nonsense=0"}).errors,
                HasSubstr("--set"));
    EXPECT_THAT(veskar({"run", path, "--set", "sensors.x.latency=0"}).errors,
                HasSubstr("--set sensors.x.latency=0: there is no such place"));
    EXPECT_THAT(veskar({"record", path, "--set", "sensors.1.latency=0"}).errors,
                HasSubstr("where to record"));
}

TEST_F(LiveProgram, IsCheckedBeforehand) {
    Outcome check = veskar({"check", configuration()});
    EXPECT_EQ(check.status, 0) << check.output;
    run_["sensors"][1]["latency"] = -1;
    const std::string path = configuration();
    check = veskar({"check", path, "--as", "run"});
    EXPECT_EQ(check.status, 1);
    const Lines lines = linesOf(slurp(path));
    std::size_t line = 0;
    while (lines[line].find("\"latency\"") == std::string::npos) {
        ++line;
    }
    EXPECT_THAT(check.output,
                StartsWith(path + ":" + std::to_string(line + 1) +
                           ": fault: sensors[1].latency: -1 is not between 0 and 60"));
}

TEST_F(LiveProgram, ItsSchemaAndItsReaderAgree) {
    run_["brokers"] = nlohmann::json::array();
    run_["brokers"].push_back({{"host", "127.0.0.1"}, {"tls", nlohmann::json::object()}});
    run_["sensors"][0]["input"] = {{"type", "mqtt"}, {"topic", "a/#"}, {"qos", 1}};
    run_["outputs"].push_back(
        {{"format", "events"}, {"to", {{"type", "mqtt"}, {"topic", "b/events"}}}});
    run_["status"] = {{"prometheus", "127.0.0.1:9100"}, {"mqtt", {{"topic", "b/status"}}}};
    run_["record"] = {{"path", "/tmp/a"}};
    if (Veskar::Live::viewMissing().empty()) {
        run_["view"] = {{"address", "127.0.0.1:8650"},
                        {"names", {"gate.local"}},
                        {"pictures", {{"directory", "/var/lib/camera"}, {"interval", 0.5}}}};
    }
    const nlohmann::json whole = run_;
    const auto isValid = [](const nlohmann::json& document) {
        const std::string schema =
            std::string(VESKAR_SOURCE_DIR) + "/live/service/schema/run.schema.json";
        const std::string line = document.dump() + "\n";
        // The validator wants two lines at least.
        return VeskarTest::run({PYTHON_PROGRAM, VeskarTest::dataFile("validate_lines.py"), schema},
                               line + line)
                   .status == 0;
    };
    const auto isRead = [&](const nlohmann::json& document) {
        const std::string path = directory_ / "checked.json";
        spill(path, document.dump());
        return veskar({"check", "--as", "run", path}).status == 0;
    };
    EXPECT_TRUE(isValid(whole) && isRead(whole));
    auto shipped = nlohmann::json::parse(slurp(VESKAR_SOURCE_DIR "/config/run.json"));
    // Where the package of the library puts it.
    EXPECT_EQ(shipped["fusion"], "/etc/veskar/fusion.json");
    shipped["fusion"] = VESKAR_SOURCE_DIR "/config/fusion.json";
    EXPECT_TRUE(isValid(shipped) && isRead(shipped));
    for (const auto& [pointer, value] :
         std::vector<std::pair<std::string, nlohmann::json>>{{"/sensors", nlohmann::json::array()},
                                                             {"/sensors/0/kind", "lidar"},
                                                             {"/sensors/0/input/qos", 3},
                                                             {"/sensors/0/input/path", "a"},
                                                             {"/sensors/0/input/topic", "a/#/b"},
                                                             {"/sensors/0/input/topic", "a+"},
                                                             {"/outputs/1/to/topic", "a/+"},
                                                             {"/status/mqtt/topic", "#"},
                                                             {"/status/prometheus", "eth0:9100"},
                                                             {"/brokers/0/availability", "b/#"},
                                                             {"/sensors/0/latency", "1"},
                                                             {"/outputs/0/to/type", "printer"},
                                                             {"/outputs/0/interval", -1},
                                                             {"/brokers/0/tls/key", "/tmp/key"},
                                                             {"/brokers/0/password", "secret"},
                                                             {"/status/interval", 0},
                                                             {"/record/path", ""},
                                                             {"/view/address", "eth0:8650"},
                                                             {"/view/files", "/"},
                                                             {"/installation", 1},
                                                             {"/more", 1}}) {
        nlohmann::json faulty = whole;
        faulty[nlohmann::json::json_pointer(pointer)] = value;
        EXPECT_FALSE(isValid(faulty)) << pointer;
        EXPECT_FALSE(isRead(faulty)) << pointer;
    }
}

TEST_F(LiveProgram, LeavesLogLinesToTheJournal) {
    run_["sensors"] = nlohmann::json::array();
    run_["sensors"].push_back(
        {{"kind", "radar"}, {"format", "json-lines"}, {"input", {{"type", "stdin"}}}});
    run_["outputs"] = nlohmann::json::array();
    nlohmann::json frame = {{"source", "radar"}, {"time", utcNow()}};
    for (int id = 0; id < 30; ++id) {
        frame["tracks"].push_back(
            {{"id", id}, {"range", 10 + id}, {"azimuth", 0}, {"radialSpeed", 0}});
    }
    const std::string path = configuration();
    // The disk is full after 1 KiB, which the recorder logs. Standard error is the file that the
    // variable names, as the journal's socket would be.
    const auto errors = [&](const std::string& journal) {
        return VeskarTest::run(
                   {"bash", "-c",
                    "ulimit -f 1; trap '' XFSZ; JOURNAL_STREAM=" + journal + " exec \"$@\"", "bash",
                    VESKAR_PROGRAM, "run", path, "--record", directory_ / "run.jsonl"},
                   frame.dump() + "\n")
            .errors;
    };
    EXPECT_THAT(errors("1:1"), HasSubstr("FrameRecorder: "));
    EXPECT_THAT(errors("$(stat -L -c %d:%i /proc/self/fd/2)"), Not(HasSubstr("FrameRecorder: ")));
}

TEST_F(LiveProgram, TellsSystemdWhereItIs) {
    const std::string path = directory_ / "notify";
    const Veskar::FileDescriptor manager(
        VeskarTest::checked(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0), "socket"));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    VeskarTest::checked(
        ::bind(manager.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), "bind");
    const timeval patience{60, 0};
    ::setsockopt(manager.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const auto told = [&] {
        std::string text(1024, '\0');
        const ssize_t count = ::recv(manager.get(), text.data(), text.size(), 0);
        text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return text;
    };
    ::setenv("NOTIFY_SOCKET", path.c_str(), 1);
    RunningProgram program({"run", configuration()}, {});
    ::unsetenv("NOTIFY_SOCKET");
    EXPECT_THAT(told(), HasSubstr("READY=1"));
    program.send(SIGHUP);
    EXPECT_THAT(told(), HasSubstr("RELOADING=1\nMONOTONIC_USEC="));
    EXPECT_THAT(told(), HasSubstr("READY=1"));
    program.send(SIGTERM);
    EXPECT_THAT(told(), HasSubstr("STOPPING=1"));
    EXPECT_EQ(program.finish().status, 0);
}
