// SPDX-License-Identifier: Apache-2.0
// `veskar run --view`, as a browser gets it.
#include "cli/live/LiveSite.h"
#include "live/support/FreePort.h"
#include "support/Pipe.h"

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

using testing::HasSubstr;
using testing::StartsWith;

namespace VeskarTest {
namespace {

Veskar::FileDescriptor ask(std::uint16_t port, const std::string& path) {
    Veskar::FileDescriptor connection = connectTo(port);
    writeAll(connection.get(),
             "GET " + path + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + "Connection: close\r\n\r\n");
    return connection;
}

}  // namespace

class LiveViewProgram : public LiveSite {
protected:
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }
    /// Reads a stream while both sensors publish, until it holds a text.
    bool streams(const Veskar::FileDescriptor& stream, const std::string& text) {
        return publishUntil([&](const auto& /*status*/) {
            read_ += readSome(stream.get());
            return read_.find(text) != std::string::npos;
        });
    }

    const std::uint16_t port_ = freePort();
    std::string read_;
};

TEST_F(LiveViewProgram, ShowsTracksStatusAndTheDecisionsAboutOne) {
    RunningProgram program({"run", configuration(), "--view=" + address()}, {});
    awaitStart(program);
    EXPECT_THAT(program.errors(), HasSubstr("Live view: http://" + address() + "/\n"));
    std::string page;
    const Veskar::FileDescriptor connection = ask(port_, "/");
    for (std::string piece = readSome(connection.get()); !piece.empty();
         piece = readSome(connection.get())) {
        page += piece;
    }
    EXPECT_THAT(page, StartsWith("HTTP/1.1 200"));
    EXPECT_THAT(page, HasSubstr("<title>veskar live</title>"));
    EXPECT_THAT(page, HasSubstr("connect-src 'self'"));

    const Veskar::FileDescriptor stream = ask(port_, "/events?select=system:1");
    ASSERT_TRUE(streams(stream, "event: decision\n"));
    EXPECT_THAT(read_, HasSubstr(R"("sensors":[{"name":"camera","source":"video"},)"));
    EXPECT_THAT(read_, HasSubstr(R"(data: {"fused":{"source":")"));
    EXPECT_THAT(read_, HasSubstr("\"track\":1,"));
    ASSERT_TRUE(streams(stream, "event: status\ndata: {\"uptime\":"));
}

TEST_F(LiveViewProgram, ShowsTheNewestPictureOfADirectory) {
    const std::string pictures = directory_ / "pictures";
    run_["view"] = {{"address", address()},
                    {"pictures", {{"directory", pictures}, {"interval", 0.1}}}};
    const std::string file = configuration();
    EXPECT_THAT(veskar({"check", file}).output,
                HasSubstr("warning: view.pictures.directory: " + pictures + ": is no directory"));
    RunningProgram program({"run", file}, {});
    awaitStart(program);
    const Veskar::FileDescriptor stream = ask(port_, "/events");
    ASSERT_TRUE(streams(stream, R"("fault":"the directory of pictures cannot be read: No such)"));
    std::filesystem::create_directory(pictures);
    spill(pictures + "/now.jpg", "\xff\xd8\xff picture");
    ASSERT_TRUE(streams(stream, "event: picture\ndata: {\"number\":2,\"time\":"));
    EXPECT_THAT(readSome(ask(port_, "/picture").get()), HasSubstr("Content-Type: image/jpeg"));
    ASSERT_TRUE(streams(stream, "event: state\n"));
}

TEST_F(LiveViewProgram, GoesOnAfterAReload) {
    run_["view"] = {{"address", address()}};
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor stream = ask(port_, "/events?select=system:1");
    ASSERT_TRUE(streams(stream, "event: decision\n"));
    program.send(SIGHUP);
    // The fusion begins anew, and so does its first track.
    read_.clear();
    ASSERT_TRUE(streams(stream, "\"starts\":[{\"track\":1,"));
    ASSERT_TRUE(streams(stream, "event: state\n"));
}

TEST_F(LiveViewProgram, EndsItsStreams) {
    run_["view"] = {{"address", address()}};
    RunningProgram program({"run", configuration()}, {});
    awaitStart(program);
    const Veskar::FileDescriptor stream = ask(port_, "/events");
    ASSERT_TRUE(streams(stream, "event: state\n"));
    program.send(SIGTERM);
    while (!readSome(stream.get()).empty()) {
    }
    EXPECT_EQ(program.finish().status, 0);
}

TEST_F(LiveViewProgram, RefusesWhatItCannotServe) {
    for (const auto& [view, fault] : std::vector<std::pair<std::string, std::string>>{
             {"192.0.2.1:8650", "view.token: missing"},
             {"8650", "view.address: "},
             {"127.0.0.1:" + std::to_string(broker_.port()), "Address already in use"}}) {
        const Outcome outcome = veskar({"run", configuration(), "--view=" + view});
        EXPECT_EQ(outcome.status, 2) << view;
        EXPECT_THAT(outcome.errors, HasSubstr(fault)) << view;
    }
}

}  // namespace VeskarTest
