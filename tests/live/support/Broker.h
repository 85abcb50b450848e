// SPDX-License-Identifier: Apache-2.0
// A real MQTT broker.
#pragma once

#include "live/support/Command.h"
#include "live/support/FreePort.h"
#include "support/TemporaryDirectory.h"

#include <csignal>
#include <cstdint>
#include <optional>
#include <string>

namespace VeskarTest {

/// A mosquitto on a free port of 127.0.0.1.
class Broker {
public:
    /// What differs from a broker for everybody.
    struct Options {
        std::string user;  ///< the only one; empty: everybody
        std::string password;
        std::string access;     ///< lines of an access control file; empty: everything is allowed
        std::string authority;  ///< files of TLS; empty: none
        std::string certificate;
        std::string key;
        bool asksForCertificate = false;  ///< of the client
    };

    /// Returns when the broker listens.
    Broker();
    explicit Broker(const Options& options);

    std::uint16_t port() const { return port_; }
    /// Kills the broker, if it runs.
    void kill() { daemon_.reset(); }
    /// Runs it again at the same port.
    void restart();
    /// It keeps its connections but no longer responds.
    void stop() const { daemon_->signal(SIGSTOP); }

private:
    std::string configuration(const Options& options) const;

    const TemporaryDirectory directory_;
    const std::uint16_t port_;
    std::optional<Daemon> daemon_;
};

}  // namespace VeskarTest
