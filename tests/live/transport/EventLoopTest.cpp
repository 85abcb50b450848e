// SPDX-License-Identifier: Apache-2.0
#include "live/support/LoopUntil.h"
#include "live/transport/EventLoop.h"
#include "support/Pipe.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace std::chrono_literals;
using namespace VeskarTest;
using testing::ElementsAre;
using Veskar::Live::EventLoop;

TEST(EventLoop, TellsWhatADescriptorIsReadyFor) {
    EventLoop loop;
    const Pipe pipe;
    std::vector<std::uint32_t> events;
    auto watch = loop.watch(pipe.reader.get(), EPOLLIN, [&](std::uint32_t occurred) {
        events.push_back(occurred);
        readSome(pipe.reader.get());
    });
    EXPECT_FALSE(loop.turn(0ms));
    writeAll(pipe.writer.get(), "x");
    EXPECT_TRUE(loop.turn(10s));
    EXPECT_THAT(events, ElementsAre(EPOLLIN));
    watch.setEvents(0);
    writeAll(pipe.writer.get(), "x");
    EXPECT_FALSE(loop.turn(0ms)) << "nothing is wanted any more";
    watch.setEvents(EPOLLIN);
    EXPECT_TRUE(loop.turn(10s));
    watch = {};
    writeAll(pipe.writer.get(), "x");
    EXPECT_FALSE(loop.turn(0ms)) << "nothing is watched any more";
}

TEST(EventLoop, TakesARegularFileAsAlwaysReady) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("text");
    std::ofstream(path) << "text";
    const Veskar::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    EventLoop loop;
    std::string text;
    std::uint32_t events = 0;
    auto watch = loop.watch(file.get(), EPOLLIN, [&](std::uint32_t occurred) {
        events = occurred;
        text += readSome(file.get());
    });
    EXPECT_TRUE(loop.turn(0ms));
    EXPECT_EQ(text, "text");
    EXPECT_EQ(events, std::uint32_t{EPOLLIN});
    EXPECT_TRUE(loop.turn(0ms));
    watch.setEvents(0);
    EXPECT_FALSE(loop.turn(0ms));
}

TEST(EventLoop, LetsAFileWaitForEverythingElse) {
    const TemporaryDirectory directory;
    std::ofstream(directory.file("text")) << "text";
    const Veskar::FileDescriptor file(::open(directory.file("text").c_str(), O_RDONLY | O_CLOEXEC));
    const Pipe pipe;
    EventLoop loop;
    std::vector<std::string> order;
    const auto files =
        loop.watch(file.get(), EPOLLIN, [&](std::uint32_t) { order.push_back("file"); });
    const auto pipes = loop.watch(pipe.reader.get(), EPOLLIN, [&](std::uint32_t) {
        order.push_back("pipe");
        readSome(pipe.reader.get());
    });
    loop.turn(0ms);
    writeAll(pipe.writer.get(), "x");
    loop.turn(0ms);
    loop.turn(0ms);
    EXPECT_THAT(order, ElementsAre("file", "pipe", "file"));
}

TEST(EventLoop, RunsATimerOnceAtItsTime) {
    EventLoop loop;
    int count = 0;
    EventLoop::Timer timer = loop.timer([&] { ++count; });
    EXPECT_FALSE(loop.turn(0ms)) << "no time is set yet";
    const auto begin = EventLoop::Clock::now();
    timer.expireAfter(20ms);
    EXPECT_TRUE(loop.turn(60s));
    EXPECT_GE(EventLoop::Clock::now() - begin, 20ms);
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(loop.turn(0ms));
    timer.expireAfter(0ms);
    timer.disarm();
    EXPECT_FALSE(loop.turn(0ms));
    timer.expireAfter(0ms);
    EXPECT_TRUE(loop.turn(60s));
    EXPECT_EQ(count, 2);
}

TEST(EventLoop, DefersATaskBehindTheCallbackThatAsksForIt) {
    EventLoop loop;
    std::vector<std::string> order;
    EventLoop::Deferral later = loop.deferral([&] { order.push_back("later"); });
    EventLoop::Deferral now = loop.deferral([&] {
        later.request();
        later.request();
        order.push_back("now");
    });
    now.request();
    loopUntilIdle(loop);
    EXPECT_THAT(order, ElementsAre("now", "later"));
}

TEST(EventLoop, ReceivesSignalsInsteadOfTheirAction) {
    EventLoop loop;
    int count = 0;
    {
        const auto watch = loop.onSignal(SIGUSR1, [&] { ++count; });
        ::kill(::getpid(), SIGUSR1);
        EXPECT_TRUE(loop.turn(60s));
        EXPECT_EQ(count, 1);
    }
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGUSR1), 0);
}

TEST(EventLoop, PassesExceptionsOnAndRunsOn) {
    EventLoop loop;
    EventLoop::Deferral fails = loop.deferral([] { throw std::runtime_error("fault"); });
    EventLoop::Deferral stops = loop.deferral([&] { loop.stop(); });
    fails.request();
    try {
        loop.run();
        FAIL() << "ended without an exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "fault");
    }
    stops.request();
    loop.run();
}

TEST(EventLoop, StopsBeforeItRuns) {
    EventLoop loop;
    bool hasRun = false;
    EventLoop::Deferral task = loop.deferral([&] { hasRun = true; });
    task.request();
    loop.stop();
    loop.run();
    EXPECT_FALSE(hasRun);
}

TEST(EventLoop, LetsACallbackDestroyItsOwnRegistration) {
    EventLoop loop;
    const auto guarded = std::make_shared<int>(0);
    std::optional<EventLoop::Deferral> deferral;
    deferral = loop.deferral([&deferral, guarded] {
        deferral.reset();
        ++*guarded;  // what the callback holds must still be there
    });
    deferral->request();
    loopUntilIdle(loop);
    EXPECT_EQ(*guarded, 1);
    EXPECT_EQ(guarded.use_count(), 1);
}

TEST(EventLoop, LetsWritersToClosedPipesLive) {
    EventLoop loop;
    Pipe pipe;
    pipe.reader.reset();
    EXPECT_EQ(::write(pipe.writer.get(), "x", 1), -1);
    EXPECT_EQ(errno, EPIPE);
}

TEST(EventLoop, TellsTheWatchdogThatItRuns) {
    const TemporaryDirectory directory;
    const std::string path = directory.file("notify");
    const Veskar::FileDescriptor service(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(service.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address),
              0);

    EventLoop loop;
    EXPECT_FALSE(loop.keepWatchdog()) << "the service has none";
    ::setenv("NOTIFY_SOCKET", path.c_str(), 1);
    ::setenv("WATCHDOG_USEC", "20000", 1);
    ::setenv("WATCHDOG_PID", std::to_string(::getpid()).c_str(), 1);
    EXPECT_TRUE(loop.keepWatchdog());
    std::string text;
    EXPECT_TRUE(loopUntil(loop, [&] {
        std::string datagram(100, '\0');
        const ssize_t count = ::recv(service.get(), datagram.data(), datagram.size(), MSG_DONTWAIT);
        text = datagram.substr(0, count > 0 ? static_cast<std::size_t>(count) : 0);
        return count > 0;
    }));
    EXPECT_EQ(text, "WATCHDOG=1");
    for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_USEC", "WATCHDOG_PID"}) {
        ::unsetenv(name);
    }
}
