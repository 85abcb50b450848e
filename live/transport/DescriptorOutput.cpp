// SPDX-License-Identifier: Apache-2.0
#include "live/transport/DescriptorOutput.h"

#include "live/transport/Descriptor.h"

#include <utility>

#include <fcntl.h>

namespace Veskar::Live {

DescriptorOutput::DescriptorOutput(EventLoop& loop, int descriptor, const std::string& name,
                                   QueueLimits limits, Faults& faults, EventLoop::Task closed)
    : writer_(loop, withoutWaiting(descriptor, O_WRONLY), limits,
              {[this, name, &faults, closed = std::move(closed)](const std::string& reason) {
                   isOpen_ = false;
                   faults.report(name, reason);
                   if (closed) {
                       closed();
                   }
               },
               [name, &faults](const std::string& reason) { faults.report(name, reason); }}) {}

void DescriptorOutput::send(std::string_view message) {
    writer_.send(std::make_shared<const std::string>(message));
}

OutputCounters DescriptorOutput::counters() const {
    OutputCounters counters = writer_.counters();
    counters.connections = 1;
    counters.readers = isOpen_ ? 1 : 0;
    return counters;
}

}  // namespace Veskar::Live
