// SPDX-License-Identifier: Apache-2.0
#include "live/transport/ServerOutput.h"

#include "live/transport/Descriptor.h"

#include <array>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace Veskar::Live {
namespace {

void add(OutputCounters& sum, const OutputCounters& part) {
    sum.accepted += part.accepted;
    sum.written += part.written;
    sum.dropped += part.dropped;
    sum.failed += part.failed;
    sum.waiting += part.waiting;
    sum.waitingBytes += part.waitingBytes;
}

}  // namespace

ServerOutput::ServerOutput(EventLoop& loop, ListeningSocket listening, std::string name,
                           QueueLimits limits, Faults& faults, Greeting greeting)
    : loop_(loop),
      name_(std::move(name)),
      limits_(limits),
      faults_(faults),
      greeting_(std::move(greeting)),
      acceptor_(loop, std::move(listening), name_, faults,
                [this](FileDescriptor connection) { add(std::move(connection)); }) {}

void ServerOutput::add(FileDescriptor connection) {
    if (readers_.size() == mostReaders) {
        ++gone_.refusedConnections;
        faults_.report(name_ + ": turned a reader away",
                       "there are " + std::to_string(mostReaders));
        return;
    }
    FileDescriptor written(::dup(connection.get()));
    if (!written) {
        faults_.report(name_ + ": cannot accept a connection", textOf(errno));
        return;
    }
    ++gone_.connections;
    const auto reader = readers_.emplace(readers_.end());
    reader->connection = std::move(connection);
    const auto leave = [this, reader](const std::string&) { remove(reader); };
    reader->writer.emplace(loop_, std::move(written), limits_, StreamWriter::Events{leave, leave});
    reader->input = loop_.watch(reader->connection.get(), EPOLLIN, [this, reader](std::uint32_t) {
        std::array<char, 4096> ignored;
        const ssize_t count = ::read(reader->connection.get(), ignored.data(), ignored.size());
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) {
            remove(reader);
        }
    });
    if (const std::string text = greeting_ ? greeting_() : ""; !text.empty()) {
        reader->writer->send(std::make_shared<const std::string>(text));
    }
}

void ServerOutput::remove(std::list<Reader>::iterator reader) {
    OutputCounters last = reader->writer->counters();
    last.failed += std::exchange(last.waiting, 0);
    last.waitingBytes = 0;
    Live::add(gone_, last);
    readers_.erase(reader);
}

void ServerOutput::send(std::string_view message) {
    if (readers_.empty()) {
        return;
    }
    const auto text = std::make_shared<const std::string>(message);
    for (Reader& reader : readers_) {
        reader.writer->send(text);
    }
}

OutputCounters ServerOutput::counters() const {
    OutputCounters counters = gone_;
    for (const Reader& reader : readers_) {
        Live::add(counters, reader.writer->counters());
    }
    counters.readers = readers_.size();
    return counters;
}

}  // namespace Veskar::Live
