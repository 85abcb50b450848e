// SPDX-License-Identifier: Apache-2.0
// Messages from standard input or another descriptor.
#pragma once

#include "live/transport/Faults.h"
#include "live/transport/StreamReader.h"

namespace Veskar::Live {

/// The messages of a file, a pipe or a terminal, until its end. What stands behind the last line
/// end is a message, too.
class DescriptorInput {
public:
    /// @param loop runs the input
    /// @param descriptor such as STDIN_FILENO; stays open
    /// @param options how it is read; a message may take its time
    /// @param faults receives read errors
    /// @param receiver receives the messages
    /// @param ended called at the end of the input; may be empty
    /// @throw std::system_error when the descriptor is not open
    DescriptorInput(EventLoop& loop, int descriptor, StreamOptions options, Faults& faults,
                    Receiver receiver, EventLoop::Task ended = {});

    /// @return what was counted
    const InputCounters& counters() const { return input_.counters; }

private:
    void end(StreamReader::End how, const std::string& reason);

    StreamContext input_;
    EventLoop::Task ended_;
    StreamReader reader_;
};

}  // namespace Veskar::Live
