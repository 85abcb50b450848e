// SPDX-License-Identifier: Apache-2.0
#include <veskar/SDEventGSource.h>

#include "dbus/SdBus.h"
#include "support/MainLoop.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"

#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <dlfcn.h>
#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Veskar::SdBus::Event;

namespace {

Event newEvent() {
    sd_event* event = nullptr;
    EXPECT_GE(sd_event_new(&event), 0);
    return Event(event);
}

/// Counts in *data how often the loop has run it.
int countRun(sd_event_source* /*source*/, void* data) {
    ++*static_cast<int*>(data);
    return 0;
}

/// Runs countRun once with the next dispatch.
void deferCount(sd_event* event, int& count) {
    ASSERT_GE(sd_event_add_defer(event, nullptr, countRun, &count), 0);
}

std::unique_ptr<SDEventGSource> attach(MainLoop& loop, sd_bus* bus, sd_event* event) {
    std::unique_ptr<SDEventGSource> source;
    loop.asThreadDefault([&] { source = std::make_unique<SDEventGSource>(bus, event); });
    return source;
}

/// Descriptors and masks of polls added to GLib.
std::vector<std::pair<int, int>> addedPolls;

/// Sets *data when its owner is freed.
void setFlag(void* data) {
    *static_cast<bool*>(data) = true;
}

}  // namespace

// This definition overrides GLib's, to make the registered masks visible.
extern "C" void g_source_add_poll(GSource* source, GPollFD* descriptor) {
    addedPolls.emplace_back(descriptor->fd, descriptor->events);
    static const auto original =
        reinterpret_cast<decltype(&g_source_add_poll)>(dlsym(RTLD_NEXT, "g_source_add_poll"));
    original(source, descriptor);
}

TEST(SDEventGSource, DispatchesTheLoopFromTheContextThatWasTheThreadDefault) {
    const SyslogCapture log;
    MainLoop loop;
    const Event event = newEvent();
    int count = 0;
    const auto source = attach(loop, nullptr, event.get());
    deferCount(event.get(), count);
    EXPECT_TRUE(loop.iterateUntil([&] { return count > 0; }));
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_EQ(count, 1);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(SDEventGSource, UsesTheGlobalDefaultContextWithoutAThreadDefault) {
    MainLoop loop(MainLoop::Context::GlobalDefault);
    const Event event = newEvent();
    int count = 0;
    const SDEventGSource source(nullptr, event.get());
    deferCount(event.get(), count);
    EXPECT_TRUE(loop.iterateUntil([&] { return count > 0; }));
}

TEST(SDEventGSource, IsNamedSdEvent) {
    MainLoop loop;
    const Event event = newEvent();
    const auto source = attach(loop, nullptr, event.get());
    std::string name;
    ASSERT_GE(sd_event_add_defer(
                  event.get(), nullptr,
                  [](sd_event_source*, void* data) {
                      *static_cast<std::string*>(data) = g_source_get_name(g_main_current_source());
                      return 0;
                  },
                  &name),
              0);
    EXPECT_TRUE(loop.iterateUntil([&] { return !name.empty(); }));
    EXPECT_EQ(name, "sd-event");
}

TEST(SDEventGSource, PollsTheLoopsDescriptorForInputErrorAndHangUp) {
    MainLoop loop;
    const Event event = newEvent();
    addedPolls.clear();
    const auto source = attach(loop, nullptr, event.get());
    // G_IO_IN, G_IO_ERR and G_IO_HUP
    EXPECT_THAT(addedPolls, ElementsAre(Pair(sd_event_get_fd(event.get()), 25)));
}

TEST(SDEventGSource, ProposesNoTimeOut) {
    MainLoop loop;
    const Event event = newEvent();
    const auto source = attach(loop, nullptr, event.get());
    ASSERT_TRUE(g_main_context_acquire(loop.get()));
    gint priority = 0;
    gint timeout = 0;
    g_main_context_prepare(loop.get(), &priority);
    g_main_context_query(loop.get(), G_PRIORITY_LOW, &timeout, nullptr, 0);
    g_main_context_release(loop.get());
    EXPECT_EQ(timeout, -1);
}

TEST(SDEventGSource, WakesTheContextForInput) {
    MainLoop loop;
    const Event event = newEvent();
    const auto source = attach(loop, nullptr, event.get());
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    int received = 0;
    ASSERT_GE(sd_event_add_io(
                  event.get(), nullptr, ends[0], EPOLLIN,
                  [](sd_event_source*, int descriptor, std::uint32_t, void* data) {
                      char character = '\0';
                      *static_cast<int*>(data) += static_cast<int>(read(descriptor, &character, 1));
                      return 0;
                  },
                  &received),
              0);
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_EQ(received, 0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    EXPECT_TRUE(loop.iterateUntil([&] { return received > 0; }));
    close(ends[0]);
    close(ends[1]);
}

TEST(SDEventGSource, IsRemovedWhenTheDispatchFails) {
    MainLoop loop;
    const Event event = newEvent();
    // Runs before the bridge in each iteration and removes the loop's pending work.
    GSource* thief = g_idle_source_new();
    g_source_set_priority(thief, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        thief,
        [](gpointer data) -> gboolean {
            sd_event_dispatch(static_cast<sd_event*>(data));
            return G_SOURCE_REMOVE;
        },
        event.get(), nullptr);
    g_source_attach(thief, loop.get());
    g_source_unref(thief);
    const auto source = attach(loop, nullptr, event.get());
    int count = 0;
    deferCount(event.get(), count);
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_EQ(count, 1);
    deferCount(event.get(), count);
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_EQ(count, 1) << "a source whose dispatch has failed must not run any more";
}

TEST(SDEventGSource, StaysThroughManyDispatches) {
    MainLoop loop;
    const Event event = newEvent();
    const auto source = attach(loop, nullptr, event.get());
    int count = 0;
    for (int i = 1; i <= 100; ++i) {
        deferCount(event.get(), count);
        EXPECT_TRUE(loop.iterateUntilIdle());
        EXPECT_EQ(count, i);
    }
}

TEST(SDEventGSource, StaysAndRestsWhenTheLoopHasFinished) {
    MainLoop loop;
    const Event event = newEvent();
    const auto source = attach(loop, nullptr, event.get());
    GSource* bridge = nullptr;
    ASSERT_GE(sd_event_add_defer(
                  event.get(), nullptr,
                  [](sd_event_source* deferred, void* data) {
                      *static_cast<GSource**>(data) = g_main_current_source();
                      // The dispatch that finds no further work returns 0.
                      return sd_event_exit(sd_event_source_get_event(deferred), 0);
                  },
                  &bridge),
              0);
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_EQ(sd_event_get_state(event.get()), SD_EVENT_FINISHED);
    ASSERT_NE(bridge, nullptr);
    EXPECT_FALSE(g_source_is_destroyed(bridge));
}

TEST(SDEventGSource, LeavesTheContextWhenItEnds) {
    MainLoop loop;
    const Event event = newEvent();
    auto source = attach(loop, nullptr, event.get());
    int count = 0;
    deferCount(event.get(), count);
    source.reset();
    EXPECT_TRUE(loop.iterateUntilIdle());
    EXPECT_EQ(count, 0);
}

TEST(SDEventGSource, HoldsTheLoopUntilItEndsAndNoLonger) {
    MainLoop loop;
    Event event = newEvent();
    bool freed = false;
    sd_event_source* marker = nullptr;
    ASSERT_GE(sd_event_add_defer(event.get(), &marker, countRun, &freed), 0);
    ASSERT_GE(sd_event_source_set_destroy_callback(marker, setFlag), 0);
    ASSERT_GE(sd_event_source_set_enabled(marker, SD_EVENT_OFF), 0);
    ASSERT_GE(sd_event_source_set_floating(marker, 1), 0);
    sd_event_source_unref(marker);
    auto source = attach(loop, nullptr, event.get());
    event.reset();
    EXPECT_FALSE(freed);
    source.reset();
    EXPECT_TRUE(freed);
}

TEST(SDEventGSource, HoldsTheContextUntilItEndsAndNoLonger) {
    const Event event = newEvent();
    bool freed = false;
    GMainContext* context = g_main_context_new();
    GSource* marker = g_idle_source_new();
    g_source_set_callback(
        marker, [](gpointer) -> gboolean { return TRUE; }, &freed, setFlag);
    g_source_attach(marker, context);
    g_source_unref(marker);
    g_main_context_push_thread_default(context);
    auto source = std::make_unique<SDEventGSource>(nullptr, event.get());
    g_main_context_pop_thread_default(context);
    g_main_context_unref(context);
    EXPECT_FALSE(freed);
    source.reset();
    EXPECT_TRUE(freed);
}

TEST(SDEventGSource, AttachesTheBusToTheLoop) {
    const SyslogCapture log;
    const PrivateBus daemon;
    Veskar::SdBus::Bus bus;
    ASSERT_GE(Veskar::SdBus::openSystem(bus), 0);
    MainLoop loop;
    const Event event = newEvent();
    const auto source = attach(loop, bus.get(), event.get());
    EXPECT_EQ(sd_bus_get_event(bus.get()), event.get());
    EXPECT_TRUE(loop.iterateUntil([&] { return sd_bus_is_ready(bus.get()) > 0; }));
    EXPECT_THAT(log.errors(), IsEmpty());
    sd_bus_detach_event(bus.get());
}

TEST(SDEventGSource, LogsABusThatCannotBeAttachedAndStillRunsTheLoop) {
    const SyslogCapture log;
    const PrivateBus daemon;
    Veskar::SdBus::Bus bus;
    ASSERT_GE(Veskar::SdBus::openSystem(bus), 0);
    const Event other = newEvent();
    ASSERT_GE(sd_bus_attach_event(bus.get(), other.get(), 0), 0);
    MainLoop loop;
    const Event event = newEvent();
    const auto source = attach(loop, bus.get(), event.get());
    EXPECT_THAT(log.errors(), ElementsAre("SDEventGSource: Failed to attach sd bus. Error code: " +
                                          std::to_string(-EBUSY) + "\n"));
    int count = 0;
    deferCount(event.get(), count);
    EXPECT_TRUE(loop.iterateUntil([&] { return count > 0; }));
    sd_bus_detach_event(bus.get());
}

// Sources are created and destroyed on one thread while another iterates the context, with the loop
// always in some intermediate state.
TEST(SDEventGSource, MayComeAndGoWhileAnotherThreadIteratesTheContext) {
    MainLoop loop(MainLoop::Context::GlobalDefault);
    loop.start();
    for (int i = 0; i < 300; ++i) {
        const Event event = newEvent();
        int count = 0;
        sd_event_source* busy = nullptr;
        ASSERT_GE(sd_event_add_defer(event.get(), &busy, countRun, &count), 0);
        ASSERT_GE(sd_event_source_set_enabled(busy, SD_EVENT_ON), 0);
        ASSERT_GE(sd_event_source_set_floating(busy, 1), 0);
        sd_event_source_unref(busy);
        const SDEventGSource source(nullptr, event.get());
    }
    loop.stop();
    EXPECT_TRUE(loop.iterateUntilIdle());
}
