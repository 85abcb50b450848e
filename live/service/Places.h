// SPDX-License-Identifier: Apache-2.0
// Makes the inputs and outputs that the configuration names.
#pragma once

#include "live/service/RunConfiguration.h"
#include "live/transport/Counters.h"
#include "live/transport/Message.h"
#include "live/transport/MqttClient.h"
#include "live/transport/Output.h"

#include <functional>
#include <map>
#include <memory>
#include <string>

namespace Veskar::Live {

/// The brokers by their names.
using Brokers = std::map<std::string, std::unique_ptr<MqttClient>>;

/// An input of any kind.
class Input {
public:
    virtual ~Input() = default;
    /// @return what was counted
    virtual const InputCounters& counters() const = 0;
};

/// @param sensor says where its messages come from
/// @param loop runs the input
/// @param brokers those of the configuration
/// @param faults receives the faults of the input
/// @param receiver receives the messages
/// @param departed told the channel of each connection that has ended
/// @param ended called at the end of standard input
/// @return the input
/// @throw InputError when it cannot be opened
std::unique_ptr<Input> makeInput(const SensorSettings& sensor, EventLoop& loop,
                                 const Brokers& brokers, Faults& faults, Receiver receiver,
                                 Departure departed, EventLoop::Task ended);

/// @param name of the output, for faults
/// @param place where the messages go
/// @param loop runs the output
/// @param brokers those of the configuration
/// @param faults receives the faults of the output
/// @param greeting what each reader of a socket gets first; may be empty
/// @param closed called when the reader of standard output has gone; may be empty
/// @return the output
/// @throw InputError when it cannot be opened
std::unique_ptr<Output> makeOutput(const std::string& name, const OutputPlace& place,
                                   EventLoop& loop, const Brokers& brokers, Faults& faults,
                                   std::function<std::string()> greeting = {},
                                   EventLoop::Task closed = {});

}  // namespace Veskar::Live
