// SPDX-License-Identifier: Apache-2.0
#include "live/transport/NameLookup.h"

#include "live/transport/Descriptor.h"

#include <cerrno>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <netdb.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

namespace Veskar::Live {
namespace {

/// @return why a host has no address; empty when it has one
std::string lookUp(const std::string& host, int flags) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    addrinfo* found = nullptr;
    const int fault = ::getaddrinfo(host.c_str(), nullptr, &hints, &found);
    if (fault == 0) {
        ::freeaddrinfo(found);
        return {};
    }
    return fault == EAI_SYSTEM ? textOf(errno) : ::gai_strerror(fault);
}

}  // namespace

/// What the thread and the loop share. The thread may outlive the loop.
struct NameLookup::Answer {
    FileDescriptor arrived{::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::mutex mutex;  // guards fault
    std::string fault;

    void give(const std::string& text) {
        const std::lock_guard<std::mutex> lock(mutex);
        fault = text;
        ::eventfd_write(arrived.get(), 1);
    }
    std::string take() {
        const std::lock_guard<std::mutex> lock(mutex);
        return fault;
    }
};

NameLookup::NameLookup(EventLoop& loop, const std::string& host,
                       std::function<void(const std::string&)> done)
    : answer_(std::make_shared<Answer>()) {
    if (!answer_->arrived) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    watch_ = loop.watch(answer_->arrived.get(), EPOLLIN,
                        [this, called = std::move(done)](std::uint32_t) {
                            watch_ = {};
                            called(answer_->take());
                        });
    if (host == "localhost" || lookUp(host, AI_NUMERICHOST).empty()) {
        answer_->give({});
        return;
    }
    std::thread([answer = answer_, host] { answer->give(lookUp(host, 0)); }).detach();
}

}  // namespace Veskar::Live
