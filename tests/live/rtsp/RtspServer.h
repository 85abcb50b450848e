// SPDX-License-Identifier: Apache-2.0
// A real RTSP server.
#pragma once

#include "live/support/Command.h"

#include <csignal>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace VeskarTest {

/// GStreamer's server, in a process of its own, with tracks as cameras have them.
class RtspServer {
public:
    using Settings = std::map<std::string, std::string>;

    /// Returns when the server listens.
    /// @param file where the documents are written; must outlive the server
    /// @param documents one line each, sent in turns
    /// @param settings as ServerProgram.cpp has them; one track of metadata by default
    RtspServer(const std::string& file, const std::vector<std::string>& documents,
               Settings settings = {});

    std::string url() const { return "rtsp://127.0.0.1:" + settings_.at("port") + "/stream"; }
    /// Kills the server, if it runs.
    void kill() { daemon_.reset(); }
    /// Runs it again at the same port.
    void restart();
    /// It keeps its connections but no longer responds.
    void stop() const { daemon_->signal(SIGSTOP); }
    void goOn() const { daemon_->signal(SIGCONT); }

private:
    Settings settings_;
    std::optional<Daemon> daemon_;
};

}  // namespace VeskarTest
