// SPDX-License-Identifier: Apache-2.0
// Keeps what inputs hand on and what faults are told.
#pragma once

#include "live/transport/Faults.h"
#include "live/transport/Message.h"

#include <mutex>
#include <string>
#include <vector>

namespace VeskarTest {

/// The messages of an input.
struct Received {
    Veskar::Live::Receiver receiver() {
        return [this](const Veskar::Live::Message& message) {
            if (message.bytes == probe) {
                ++probes;
                return;
            }
            channels.push_back(message.channel);
            texts.emplace_back(message.bytes);
            arrived.push_back(message.arrived);
        };
    }

    /// A message that asks whether anybody is there.
    static constexpr const char* probe = "are you there?";

    std::size_t probes = 0;  ///< which are not kept
    std::vector<std::string> channels;
    std::vector<std::string> texts;
    std::vector<std::chrono::steady_clock::time_point> arrived;
};

/// Faults, and what was told of them.
struct ToldFaults {
    std::vector<std::string> told() const {
        const std::lock_guard<std::mutex> lock(mutex);
        return texts;
    }

    mutable std::mutex mutex;
    std::vector<std::string> texts;
    Veskar::Live::Faults faults{[this](const std::string& text) {
        const std::lock_guard<std::mutex> lock(mutex);
        texts.push_back(text);
    }};
};

}  // namespace VeskarTest
