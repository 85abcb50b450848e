// SPDX-License-Identifier: Apache-2.0
#include <veskar/SDEventGSource.h>

#include "dbus/CallbackGuard.h"

#include <new>

#include <glib.h>
#include <syslog.h>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace {

/// What GLib keeps for a source, extended by the loop behind it.
struct Record {
    /// The part that is ours. GLib may still hold a source that another thread has just destroyed,
    /// so that its callbacks can outlive the owner: they share the owner's mutex, and the owner
    /// takes the loop away under it.
    struct Loop {
        sd_event* event;
        GPollFD poll;
        GMainContext* context;
        std::shared_ptr<std::mutex> mutex;
    };

    GSource base;
    Loop loop;
};

Record::Loop& loopOf(GSource* source) {
    return reinterpret_cast<Record*>(source)->loop;
}

/// Runs one step of the loop under the owner's mutex.
/// @return the step's code, negative when there is no loop any more
template <class Step>
int run(GSource* source, Step step) noexcept {
    return Veskar::guarded(-1, [&] {
        Record::Loop& loop = loopOf(source);
        const std::lock_guard<std::mutex> lock(*loop.mutex);
        return loop.event == nullptr ? -1 : step(loop.event);
    });
}

gboolean prepare(GSource* source, gint* timeout) {
    *timeout = -1;
    return run(source, sd_event_prepare) > 0 ? TRUE : FALSE;
}

gboolean check(GSource* source) {
    return run(source, [](sd_event* event) { return sd_event_wait(event, 0); }) > 0 ? TRUE : FALSE;
}

gboolean dispatch(GSource* source, GSourceFunc /*callback*/, gpointer /*data*/) {
    return run(source, sd_event_dispatch) >= 0 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

void finalize(GSource* source) {
    Record::Loop& loop = loopOf(source);
    sd_event_unref(loop.event);
    g_main_context_unref(loop.context);
    loop.~Loop();
}

GSourceFuncs callbacks = {prepare, check, dispatch, finalize, nullptr, nullptr};

}  // namespace

SDEventGSource::SDEventGSource(sd_bus* bus, sd_event* event)
    : mutex_(std::make_shared<std::mutex>()) {
    // Held to the end: the context may run on another thread, and must not see the loop before the
    // bus is on it.
    const std::lock_guard<std::mutex> lock(*mutex_);
    source_ = g_source_new(&callbacks, sizeof(Record));
    g_source_set_name(source_, "sd-event");
    Record::Loop& loop = *new (&loopOf(source_)) Record::Loop{
        sd_event_ref(event),
        {sd_event_get_fd(event), G_IO_IN | G_IO_ERR | G_IO_HUP, 0},
        g_main_context_ref_thread_default(),
        mutex_};
    g_source_add_poll(source_, &loop.poll);
    g_source_attach(source_, loop.context);

    if (bus != nullptr) {
        const int r = sd_bus_attach_event(bus, event, SD_EVENT_PRIORITY_NORMAL);
        if (r < 0) {
            syslog(LOG_ERR, "SDEventGSource: Failed to attach sd bus. Error code: %d\n", r);
        }
    }
}

SDEventGSource::~SDEventGSource() {
    // The source may hold the last reference to its context, and GLib still needs the context after
    // it has finalized the source.
    GMainContext* context = g_main_context_ref(loopOf(source_).context);
    {
        const std::lock_guard<std::mutex> lock(*mutex_);
        g_source_destroy(source_);
        // Here and not in finalize, which may run later on the context's thread: the reference
        // count of a loop is not atomic.
        Record::Loop& loop = loopOf(source_);
        loop.event = sd_event_unref(loop.event);
    }
    g_source_unref(source_);
    g_main_context_unref(context);
}
