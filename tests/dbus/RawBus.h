// SPDX-License-Identifier: Apache-2.0
// A bus connection that answers with raw bytes, which a message bus would reject.
#pragma once

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace VeskarTest {

/// Bytes in the wire format of D-Bus, little-endian.
class Bytes {
public:
    Bytes& align(std::size_t boundary);
    Bytes& byte(std::uint8_t value);
    Bytes& word(std::uint32_t value);
    Bytes& real(double value);
    /// A string with length and terminator.
    Bytes& string(const std::string& value);
    /// A signature with length and terminator.
    Bytes& signature(const std::string& value);
    Bytes& append(const std::string& value);
    const std::string& get() const { return bytes_; }

private:
    std::string bytes_;
};

/// The answer of a RawBus to a call.
struct RawReply {
    std::string signature;
    std::string body;
};

/// Acts as this process's system bus for one connection: accepts it, answers its calls in order and
/// closes it.
class RawBus {
public:
    explicit RawBus(std::vector<RawReply> replies);
    /// Waits until all calls have been answered or the connection has ended.
    ~RawBus();
    RawBus(const RawBus&) = delete;
    RawBus& operator=(const RawBus&) = delete;

private:
    void serve() const;

    std::string directory_;
    std::vector<RawReply> replies_;
    int listener_;
    std::thread thread_;
};

}  // namespace VeskarTest
