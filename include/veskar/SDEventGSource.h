// SPDX-License-Identifier: Apache-2.0
// Runs an sd-event loop inside a GLib main loop.
#pragma once

#include <veskar/Export.h>

#include <memory>
#include <mutex>

struct _GSource;  // NOLINT(bugprone-reserved-identifier): GLib's tag behind GSource
struct sd_bus;
struct sd_event;

/// Dispatches an sd-event loop from the GLib main context that is the thread default when this
/// object is made, so that bus signals need no thread of their own.
///
/// The callbacks run on the thread that iterates the context; one mutex keeps them apart from
/// construction and destruction, which may run on another thread. It must not end within a callback
/// of its own loop.
class VESKAR_EXPORT SDEventGSource {
public:
    /// Attaches the loop to the main context and the bus to the loop. A bus that cannot be attached
    /// is logged at error priority; the loop still runs.
    ///
    /// @param bus connection to dispatch; null for the loop alone
    /// @param event the loop; a reference is kept while attached
    SDEventGSource(sd_bus* bus, sd_event* event);
    /// Takes the loop out of the main context.
    ~SDEventGSource();
    SDEventGSource(const SDEventGSource&) = delete;
    SDEventGSource& operator=(const SDEventGSource&) = delete;

private:
    _GSource* source_;
    // Shared with the source's callbacks, which may still be on their way on the context's thread
    // when this object ends.
    std::shared_ptr<std::mutex> mutex_;
};
