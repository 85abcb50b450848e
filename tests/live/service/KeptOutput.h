// SPDX-License-Identifier: Apache-2.0
// An output that keeps what is sent.
#pragma once

#include "live/transport/Output.h"

#include <string>
#include <string_view>
#include <vector>

namespace Veskar::Live {

/// Keeps what is sent.
class KeptOutput : public Output {
public:
    /// @param texts receives it
    explicit KeptOutput(std::vector<std::string>& texts) : texts_(texts) {}

    void send(std::string_view message) override { texts_.emplace_back(message); }
    OutputCounters counters() const override { return {}; }

private:
    std::vector<std::string>& texts_;
};

}  // namespace Veskar::Live
