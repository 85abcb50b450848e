// SPDX-License-Identifier: Apache-2.0
#include "live/transport/DescriptorInput.h"

#include "live/transport/Descriptor.h"

#include <utility>

#include <fcntl.h>

namespace Veskar::Live {

DescriptorInput::DescriptorInput(EventLoop& loop, int descriptor, StreamOptions options,
                                 Faults& faults, Receiver receiver, EventLoop::Task ended)
    : input_{std::move(options), faults, std::move(receiver), {}},
      ended_(std::move(ended)),
      reader_(loop, withoutWaiting(descriptor, O_RDONLY), input_.options.name, input_,
              [this](StreamReader::End how, const std::string& reason) { end(how, reason); }) {
    input_.options.finishWithin.reset();
    input_.counters.connections = 1;
    input_.counters.publishers = 1;
}

void DescriptorInput::end(StreamReader::End how, const std::string& reason) {
    input_.counters.publishers = 0;
    reader_.finish(how == StreamReader::End::Orderly);
    if (how == StreamReader::End::Broken) {
        input_.faults.report("input " + input_.options.name, reason);
    }
    if (ended_) {
        ended_();
    }
}

}  // namespace Veskar::Live
