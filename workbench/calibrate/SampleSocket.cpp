// SPDX-License-Identifier: Apache-2.0
#include "calibrate/SampleSocket.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/Interruption.h"

#include <cerrno>
#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Workbench {
namespace {

/// Eleven samples take less than a kilobyte.
constexpr std::size_t longestDatagram = 65536;

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        throw InputError(path, InputError("too long for the path of a socket"));
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    return address;
}

int datagramSocket(const std::string& path) {
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        throw InputError(path, InputError(std::strerror(errno)));
    }
    return descriptor;
}

/// Keeps the caller's errno.
void closeQuietly(int descriptor) {
    const int error = errno;
    close(descriptor);
    errno = error;
}

/// @return whether a program receives what is sent there
bool isHeard(const std::string& path, const sockaddr_un& address) {
    const int probe = datagramSocket(path);
    const bool isConnected =
        connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(probe);
    return isConnected;
}

void removeLeftover(const std::string& path, const sockaddr_un& address) {
    struct stat found {};
    if (lstat(path.c_str(), &found) != 0) {
        return;
    }
    if (!S_ISSOCK(found.st_mode)) {
        throw InputError(path, InputError("is there and no socket"));
    }
    if (isHeard(path, address)) {
        throw InputError(path, InputError("another program listens there"));
    }
    unlink(path.c_str());
}

}  // namespace

SampleSocket::SampleSocket(const std::string& path) : path_(path), descriptor_(-1) {
    const sockaddr_un address = addressOf(path);
    removeLeftover(path, address);
    descriptor_ = datagramSocket(path);
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        closeQuietly(descriptor_);
        throw InputError(path, InputError(std::strerror(errno)));
    }
}

SampleSocket::~SampleSocket() {
    unlink(path_.c_str());
    close(descriptor_);
}

std::optional<std::string> SampleSocket::receive(std::chrono::steady_clock::time_point deadline) {
    std::string datagram(longestDatagram, '\0');
    while (true) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return std::nullopt;
        }
        waitFor({{descriptor_, POLLIN, 0}}, left);
        const ssize_t length = recv(descriptor_, datagram.data(), datagram.size(), MSG_DONTWAIT);
        if (length >= 0) {
            datagram.resize(static_cast<std::size_t>(length));
            return datagram;
        }
        if (errno != EAGAIN && errno != EINTR) {
            throw InputError(path_, InputError(std::strerror(errno)));
        }
    }
}

}  // namespace Workbench
