// SPDX-License-Identifier: Apache-2.0
// Programs that watch the live view.
#pragma once

#include "src/net/FileDescriptor.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

namespace VeskarBench {

/// Reads the stream of events over several connections and throws it away, on a thread of its own.
class Viewers {
public:
    /// Returns when each connection has been greeted.
    /// @param port of the view on 127.0.0.1
    /// @param number of connections
    Viewers(std::uint16_t port, std::size_t number);
    ~Viewers();
    Viewers(const Viewers&) = delete;
    Viewers& operator=(const Viewers&) = delete;

    /// @return bytes that all of them have read
    std::uint64_t bytes() const { return bytes_; }

private:
    void read();

    std::vector<Veskar::FileDescriptor> connections_;
    std::atomic<std::uint64_t> bytes_{0};
    std::atomic<bool> isEnding_{false};
    std::thread thread_;
};

}  // namespace VeskarBench
