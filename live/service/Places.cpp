// SPDX-License-Identifier: Apache-2.0
#include "live/service/Places.h"

#include "live/service/InputOf.h"
#include "live/service/RtspPlaces.h"
#include "live/transport/ClientInput.h"
#include "live/transport/DatagramInput.h"
#include "live/transport/DescriptorInput.h"
#include "live/transport/DescriptorOutput.h"
#include "live/transport/FileOutput.h"
#include "live/transport/MqttInput.h"
#include "live/transport/MqttOutput.h"
#include "live/transport/ServerInput.h"
#include "live/transport/ServerOutput.h"

#include <utility>

#include <unistd.h>

namespace Veskar::Live {
namespace {

/// Makes the input for each kind of place.
struct InputMaker {
    EventLoop& loop;
    const Brokers& brokers;
    Faults& faults;
    Receiver receiver;
    Departure departed;
    EventLoop::Task ended;
    StreamOptions stream;

    using Made = std::unique_ptr<Input>;

    Made operator()(const StandardStream&) const {
        return std::make_unique<InputOf<DescriptorInput>>(loop, STDIN_FILENO, stream, faults,
                                                          receiver, ended);
    }
    Made operator()(const UnixPlace& place) const {
        return std::make_unique<InputOf<ServerInput>>(
            loop, ListeningSocket::atPath(place.path, place.permissions), stream, faults, receiver,
            departed);
    }
    Made operator()(const TcpPlace& place) const {
        return std::make_unique<InputOf<ServerInput>>(loop, ListeningSocket::tcp(place), stream,
                                                      faults, receiver, departed);
    }
    Made operator()(const UdpPlace& place) const {
        return std::make_unique<InputOf<DatagramInput>>(loop, ListeningSocket::udp(place), stream,
                                                        faults, receiver);
    }
    Made operator()(const ServerPlace& place) const {
        ClientInput::Options options;
        options.host = place.host;
        options.port = place.port;
        options.stream = stream;
        return std::make_unique<InputOf<ClientInput>>(loop, options, faults, receiver, departed);
    }
    Made operator()(const BrokerTopic& place) const {
        return std::make_unique<InputOf<MqttInput>>(*brokers.at(place.broker), place.topic,
                                                    place.qos, receiver);
    }
    Made operator()(const RtspPlace& place) const {
        return makeRtspInput(stream.name, place, loop, faults, receiver);
    }
};

/// Makes the output for each kind of place.
struct OutputMaker {
    std::string name;
    EventLoop& loop;
    const Brokers& brokers;
    Faults& faults;
    std::function<std::string()> greeting;
    EventLoop::Task closed;

    using Made = std::unique_ptr<Output>;

    Made operator()(const StandardStream&) const {
        return std::make_unique<DescriptorOutput>(loop, STDOUT_FILENO, name, QueueLimits(), faults,
                                                  closed);
    }
    Made operator()(const FilePlace& place) const {
        return std::make_unique<FileOutput>(place.path, place.rotation, QueueLimits(), faults);
    }
    Made operator()(const UnixPlace& place) const {
        return std::make_unique<ServerOutput>(
            loop, ListeningSocket::atPath(place.path, place.permissions), name, QueueLimits(),
            faults, greeting);
    }
    Made operator()(const TcpPlace& place) const {
        return std::make_unique<ServerOutput>(loop, ListeningSocket::tcp(place), name,
                                              QueueLimits(), faults, greeting);
    }
    Made operator()(const BrokerTopic& place) const {
        return std::make_unique<MqttOutput>(
            *brokers.at(place.broker),
            MqttOutput::Options{place.topic, place.qos, place.isRetained}, QueueLimits());
    }
};

}  // namespace

std::unique_ptr<Input> makeInput(const SensorSettings& sensor, EventLoop& loop,
                                 const Brokers& brokers, Faults& faults, Receiver receiver,
                                 Departure departed, EventLoop::Task ended) {
    StreamOptions stream;
    stream.name = sensor.name;
    stream.framing =
        sensor.format == SensorFormat::OnvifXml ? Framing::XmlDocuments : Framing::Lines;
    return std::visit(InputMaker{loop, brokers, faults, std::move(receiver), std::move(departed),
                                 std::move(ended), std::move(stream)},
                      sensor.input);
}

std::unique_ptr<Output> makeOutput(const std::string& name, const OutputPlace& place,
                                   EventLoop& loop, const Brokers& brokers, Faults& faults,
                                   std::function<std::string()> greeting, EventLoop::Task closed) {
    return std::visit(OutputMaker{"output " + name, loop, brokers, faults, std::move(greeting),
                                  std::move(closed)},
                      place);
}

}  // namespace Veskar::Live
