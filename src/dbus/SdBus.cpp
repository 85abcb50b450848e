// SPDX-License-Identifier: Apache-2.0
#include "dbus/SdBus.h"

#include <cerrno>

namespace Veskar::SdBus {

int openSystem(Bus& bus) {
    sd_bus* opened = nullptr;
    const int r = sd_bus_open_system(&opened);
    if (r < 0) {
        return r;
    }
    bus.reset(opened);
    return sd_bus_set_method_call_timeout(opened, callTimeoutMicroseconds);
}

void discardPending(sd_bus* bus) {
    // Not without end: somebody might send faster than this can read.
    constexpr int most = 1000;
    for (int i = 0; i < most && sd_bus_process(bus, nullptr) > 0; ++i) {
    }
}

int enter(sd_bus_message* message, char type, const char* contents) {
    const int r = sd_bus_message_enter_container(message, type, contents);
    return r == 0 ? -ENXIO : r;
}

}  // namespace Veskar::SdBus
