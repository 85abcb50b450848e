// SPDX-License-Identifier: Apache-2.0
#include "dbus/LocalMessage.h"

#include <array>

#include <sys/socket.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace VeskarTest {

LocalMessage::LocalMessage(const Body& body) {
    // A message needs a connection, but its other end need not answer.
    std::array<int, 2> ends{};
    must(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()),
         "socketpair");
    peer_ = ends[1];
    must(sd_bus_new(&bus_), "new bus");
    must(sd_bus_set_fd(bus_, ends[0], ends[0]), "set fd");
    must(sd_bus_start(bus_), "start");
    must(sd_bus_message_new_signal(bus_, &message_, "/test", "test.Test", "Test"), "new signal");
    body(message_);
    must(sd_bus_message_seal(message_, 1, 0), "seal");
    must(sd_bus_message_rewind(message_, 1), "rewind");
}

LocalMessage::~LocalMessage() {
    sd_bus_message_unref(message_);
    sd_bus_close_unref(bus_);
    close(peer_);
}

}  // namespace VeskarTest
