// SPDX-License-Identifier: Apache-2.0
#include "live/transport/ClientInput.h"

#include "live/transport/Descriptor.h"
#include "live/transport/KeepAlive.h"

#include <cerrno>
#include <utility>

#include <netdb.h>
#include <sys/socket.h>

namespace Veskar::Live {

ClientInput::ClientInput(EventLoop& loop, Options options, Faults& faults, Receiver receiver,
                         Departure departed)
    : loop_(loop),
      options_(std::move(options)),
      input_{options_.stream, faults, std::move(receiver), std::move(departed)},
      name_("input " + input_.options.name),
      backoff_(options_.firstRetry, options_.longestRetry),
      retry_(loop.timer([this] { lookUp(); })),
      patience_(loop.timer([this] { fail("no answer"); })) {
    retry_.expireAfter({});
}

void ClientInput::lookUp() {
    lookup_.emplace(loop_, options_.host, [this](const std::string& fault) {
        if (fault.empty()) {
            connect();
        } else {
            fail(fault);
        }
    });
}

void ClientInput::connect() {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int fault =
        ::getaddrinfo(options_.host.c_str(), std::to_string(options_.port).c_str(), &hints, &found);
    if (fault != 0) {
        fail(::gai_strerror(fault));
        return;
    }
    // The first address at which an attempt can be begun; on this machine that is one that answers.
    int refusal = 0;
    for (const addrinfo* address = found; address != nullptr; address = address->ai_next) {
        connecting_ = FileDescriptor(::socket(
            address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, address->ai_protocol));
        if (connecting_ &&
            (::connect(connecting_.get(), address->ai_addr, address->ai_addrlen) == 0 ||
             errno == EINPROGRESS)) {
            break;
        }
        refusal = errno;
        connecting_.reset();
    }
    ::freeaddrinfo(found);
    if (!connecting_) {
        fail(textOf(refusal));
        return;
    }
    patience_.expireAfter(options_.answerWithin);
    watch_ =
        loop_.watch(connecting_.get(), EPOLLOUT, [this](std::uint32_t) { finishConnecting(); });
}

void ClientInput::finishConnecting() {
    int fault = 0;
    socklen_t length = sizeof fault;
    ::getsockopt(connecting_.get(), SOL_SOCKET, SO_ERROR, &fault, &length);
    if (fault != 0) {
        fail(textOf(fault));
        return;
    }
    watch_ = {};
    patience_.disarm();
    askWhenSilent(connecting_.get());
    ++input_.counters.connections;
    input_.counters.publishers = 1;
    reader_ = std::make_unique<StreamReader>(
        loop_, std::exchange(connecting_, {}), channelOf(input_), input_,
        [this](StreamReader::End how, const std::string& reason) { ended(how, reason); });
}

void ClientInput::fail(const std::string& reason) {
    watch_ = {};
    patience_.disarm();
    connecting_.reset();
    input_.faults.report(name_ + ": cannot connect", reason);
    retry_.expireAfter(backoff_.next());
}

void ClientInput::ended(StreamReader::End how, const std::string& reason) {
    const std::unique_ptr<StreamReader> last = std::move(reader_);
    input_.counters.publishers = 0;
    last->finish(false);
    input_.faults.report(name_ + ": lost the connection",
                         how == StreamReader::End::Orderly ? "closed by the server" : reason);
    // A server that accepts and closes at once must not be asked all the time.
    if (std::exchange(messagesBefore_, input_.counters.messages) < input_.counters.messages) {
        backoff_.reset();
    }
    retry_.expireAfter(backoff_.next());
}

}  // namespace Veskar::Live
