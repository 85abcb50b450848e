// SPDX-License-Identifier: Apache-2.0
// Owning types for what libsystemd hands out, and how this library opens the system bus.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>

namespace Veskar::SdBus {

/// Longest wait for the answer of a synchronous call, so that a hung service cannot stall its
/// caller for longer.
constexpr std::chrono::milliseconds callTimeout(250);

struct CloseBus {
    void operator()(sd_bus* bus) const noexcept { sd_bus_flush_close_unref(bus); }
};
struct UnrefEvent {
    void operator()(sd_event* event) const noexcept { sd_event_unref(event); }
};
struct UnrefMessage {
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};

using Bus = std::unique_ptr<sd_bus, CloseBus>;
using Event = std::unique_ptr<sd_event, UnrefEvent>;
using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

/// What a bus call says about its failure.
class Error {
public:
    Error() = default;
    ~Error() { sd_bus_error_free(&error_); }
    Error(const Error&) = delete;
    Error& operator=(const Error&) = delete;

    /// @return where a call may put its error
    sd_bus_error* out() { return &error_; }
    bool hasName(const char* name) const { return sd_bus_error_has_name(&error_, name) > 0; }
    /// @return the error's own text, never null
    const char* message() const { return error_.message == nullptr ? "" : error_.message; }

private:
    sd_bus_error error_{};
};

/// Opens the system bus and limits the wait of its calls. Waits for the bus itself as for a call.
/// @param bus receives the connection
/// @return negative errno on failure
int openSystem(Bus& bus);

/// Sets how long each later call on a connection waits for its answer.
/// @return negative errno on failure
int limitCalls(sd_bus* bus, std::chrono::steady_clock::duration limit);

/// Drops what has arrived on a connection that no event loop dispatches, such as the late answer
/// to a call that nobody waits for any more.
void discardPending(sd_bus* bus);

/// sd_bus_message_enter_container for a container that must be there.
/// @return negative errno on failure, -ENXIO also where nothing is left to enter
int enter(sd_bus_message* message, char type, const char* contents);

/// Walks an a{sv}.
///
/// @param message positioned at the dictionary
/// @param arrayFailed called with the code when the dictionary cannot be entered
/// @param keyFailed called with the code when an entry or its key cannot be read
/// @param entry called with each key, the message positioned at its variant, which it must consume;
///              a negative result ends the walk
/// @return negative errno on failure
template <class ArrayFailed, class KeyFailed, class Entry>
int readDictionary(sd_bus_message* message, ArrayFailed arrayFailed, KeyFailed keyFailed,
                   Entry entry) {
    int r = enter(message, SD_BUS_TYPE_ARRAY, "{sv}");
    if (r < 0) {
        arrayFailed(r);
        return r;
    }
    while ((r = sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv")) > 0) {
        const char* key = nullptr;
        r = sd_bus_message_read_basic(message, SD_BUS_TYPE_STRING, &key);
        if (r < 0) {
            break;
        }
        r = entry(key);
        if (r < 0) {
            return r;
        }
        r = sd_bus_message_exit_container(message);
        if (r < 0) {
            break;
        }
    }
    if (r >= 0) {
        r = sd_bus_message_exit_container(message);
    }
    if (r < 0) {
        keyFailed(r);
    }
    return r;
}

}  // namespace Veskar::SdBus
