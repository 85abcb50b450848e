// SPDX-License-Identifier: Apache-2.0
// Messages to standard output or another descriptor.
#pragma once

#include "live/transport/Faults.h"
#include "live/transport/Output.h"
#include "live/transport/StreamWriter.h"

namespace Veskar::Live {

/// Writes to a pipe, a terminal or a file that is open. A reader that does not read costs the
/// oldest messages; one that has gone costs all.
class DescriptorOutput : public Output {
public:
    /// @param loop runs the output
    /// @param descriptor such as STDOUT_FILENO; stays open
    /// @param name for faults, as "output standard output"
    /// @param limits of what waits
    /// @param faults receives write errors
    /// @param closed called when the reader has gone; may be empty
    /// @throw std::system_error when the descriptor is not open
    DescriptorOutput(EventLoop& loop, int descriptor, const std::string& name, QueueLimits limits,
                     Faults& faults, EventLoop::Task closed = {});

    void send(std::string_view message) override;
    OutputCounters counters() const override;

private:
    StreamWriter writer_;
    bool isOpen_ = true;
};

}  // namespace Veskar::Live
