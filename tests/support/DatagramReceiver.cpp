// SPDX-License-Identifier: Apache-2.0
#include "support/DatagramReceiver.h"

#include "support/SystemCall.h"

#include <array>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace VeskarTest {
SocketPath::SocketPath(const std::string& path)
    : path_(path),
      lock_(checked(open((path_ + ".veskar-test-lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666),
                    "open lock")) {
    checked(flock(lock_, LOCK_EX), "flock");
    unlink(path_.c_str());
}

SocketPath::~SocketPath() {
    unlink(path_.c_str());
    close(lock_);
}

DatagramReceiver::DatagramReceiver(const std::string& path)
    : descriptor_(
          checked(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), "socket")) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    checked(bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
            "bind");
}

DatagramReceiver::~DatagramReceiver() {
    close(descriptor_);
}

std::vector<std::string> DatagramReceiver::receive() {
    std::vector<std::string> datagrams;
    std::array<char, 65536> buffer{};
    ssize_t length = 0;
    while ((length = recv(descriptor_, buffer.data(), buffer.size(), 0)) >= 0) {
        datagrams.emplace_back(buffer.data(), static_cast<std::size_t>(length));
    }
    return datagrams;
}

}  // namespace VeskarTest
