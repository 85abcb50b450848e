// SPDX-License-Identifier: Apache-2.0
#include "dbus/RawBus.h"

#include "support/FakeService.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace VeskarTest {
namespace {

/// Reads up to a number of bytes.
/// @return false when the peer has gone
bool readExactly(int descriptor, std::string& bytes, std::size_t count) {
    bytes.resize(count);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t length = read(descriptor, &bytes[done], count - done);
        if (length <= 0) {
            return false;
        }
        done += static_cast<std::size_t>(length);
    }
    return true;
}

void writeAll(int descriptor, const std::string& bytes) {
    // The client may have given up already.
    (void)send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
}

std::uint32_t wordAt(const std::string& bytes, std::size_t position) {
    std::uint32_t word = 0;
    std::memcpy(&word, &bytes[position], sizeof(word));
    return word;
}

bool authenticate(int descriptor) {
    const std::string end = "BEGIN\r\n";
    std::string received;
    while (received.size() < end.size() ||
           received.compare(received.size() - end.size(), end.size(), end) != 0) {
        std::string next;
        if (!readExactly(descriptor, next, 1)) {
            return false;
        }
        received += next;
    }
    writeAll(descriptor, "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\nAGREE_UNIX_FD\r\n");
    return true;
}

/// Reads a call.
/// @return its serial, 0 when the peer has gone
std::uint32_t readCall(int descriptor) {
    std::string header;
    if (!readExactly(descriptor, header, 16)) {
        return 0;
    }
    const std::size_t fields = (std::size_t{wordAt(header, 12)} + 7) / 8 * 8;
    std::string rest;
    return readExactly(descriptor, rest, fields + wordAt(header, 4)) ? wordAt(header, 8) : 0;
}

std::string marshal(std::uint32_t replySerial, const RawReply& reply) {
    Bytes fields;
    fields.byte(5).signature("u").word(replySerial);
    fields.align(8).byte(8).signature("g").signature(reply.signature);
    Bytes message;
    message.append("l\2\1\1");  // little-endian, method return, no reply expected, version 1
    message.word(static_cast<std::uint32_t>(reply.body.size())).word(replySerial + 1);
    message.word(static_cast<std::uint32_t>(fields.get().size()));
    return message.append(fields.get()).align(8).append(reply.body).get();
}

}  // namespace

Bytes& Bytes::align(std::size_t boundary) {
    bytes_.resize((bytes_.size() + boundary - 1) / boundary * boundary, '\0');
    return *this;
}

Bytes& Bytes::byte(std::uint8_t value) {
    bytes_ += static_cast<char>(value);
    return *this;
}

Bytes& Bytes::word(std::uint32_t value) {
    align(sizeof(value));
    return append(std::string(reinterpret_cast<const char*>(&value), sizeof(value)));
}

Bytes& Bytes::real(double value) {
    align(sizeof(value));
    return append(std::string(reinterpret_cast<const char*>(&value), sizeof(value)));
}

Bytes& Bytes::string(const std::string& value) {
    return word(static_cast<std::uint32_t>(value.size())).append(value).byte(0);
}

Bytes& Bytes::signature(const std::string& value) {
    return byte(static_cast<std::uint8_t>(value.size())).append(value).byte(0);
}

Bytes& Bytes::append(const std::string& value) {
    bytes_ += value;
    return *this;
}

RawBus::RawBus(std::vector<RawReply> replies)
    : replies_(std::move(replies)),
      listener_(must(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket")) {
    std::string pattern = "/tmp/veskar-raw-bus-XXXXXX";
    must(mkdtemp(pattern.data()) == nullptr ? -1 : 0, "mkdtemp");
    directory_ = pattern;
    const std::string path = directory_ + "/bus";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    must(bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), "bind");
    must(listen(listener_, 1), "listen");
    must(setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + path).c_str(), 1), "setenv");
    thread_ = std::thread([this] { serve(); });
}

RawBus::~RawBus() {
    thread_.join();
    close(listener_);
    unlink((directory_ + "/bus").c_str());
    rmdir(directory_.c_str());
}

void RawBus::serve() const {
    const int peer = must(accept(listener_, nullptr, nullptr), "accept");
    if (authenticate(peer)) {
        writeAll(peer, marshal(readCall(peer), {"s", Bytes().string(":1.1").get()}));
        std::uint32_t serial = 0;
        for (const RawReply& reply : replies_) {
            if ((serial = readCall(peer)) == 0) {
                break;
            }
            writeAll(peer, marshal(serial, reply));
        }
    }
    close(peer);
}

}  // namespace VeskarTest
