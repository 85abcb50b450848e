// SPDX-License-Identifier: Apache-2.0
#include "live/transport/ServerInput.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace Veskar::Live {

ServerInput::ServerInput(EventLoop& loop, ListeningSocket listening, StreamOptions options,
                         Faults& faults, Receiver receiver, Departure departed)
    : loop_(loop),
      input_{std::move(options), faults, std::move(receiver), std::move(departed)},
      acceptor_(loop, std::move(listening), "input " + input_.options.name, faults,
                [this](FileDescriptor connection) { add(std::move(connection)); }) {}

void ServerInput::add(FileDescriptor connection) {
    if (publishers_.size() == mostPublishers) {
        ++input_.counters.refusedConnections;
        input_.faults.report("input " + input_.options.name + ": turned a publisher away",
                             "there are " + std::to_string(mostPublishers));
        return;
    }
    ++input_.counters.connections;
    const auto place = publishers_.emplace(publishers_.end());
    *place = std::make_unique<StreamReader>(
        loop_, std::move(connection), channelOf(input_), input_,
        [this, place](StreamReader::End how, const std::string& reason) {
            remove(place, how, reason);
        },
        [this] { limitMemory(); });
    input_.counters.publishers = publishers_.size();
}

void ServerInput::remove(Publishers::iterator place, StreamReader::End how,
                         const std::string& reason) {
    const std::unique_ptr<StreamReader> ended = std::move(*place);
    publishers_.erase(place);
    input_.counters.publishers = publishers_.size();
    ended->finish(false);
    if (how == StreamReader::End::Broken) {
        input_.faults.report("input " + input_.options.name + ": lost a publisher", reason);
    }
}

std::size_t ServerInput::memory() const {
    return std::accumulate(
        publishers_.begin(), publishers_.end(), std::size_t{0},
        [](std::size_t sum, const auto& publisher) { return sum + publisher->memory(); });
}

void ServerInput::limitMemory() {
    while (memory() > mostMemory) {
        const auto largest = std::max_element(
            publishers_.begin(), publishers_.end(),
            [](const auto& a, const auto& b) { return a->memory() < b->memory(); });
        (*largest)->breakOff("unfinished messages occupy more than " + std::to_string(mostMemory) +
                             " bytes");
    }
}

}  // namespace Veskar::Live
