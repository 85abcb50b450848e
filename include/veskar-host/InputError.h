// SPDX-License-Identifier: Apache-2.0
// The error of faulty input, with a message for its author.
#pragma once

#include <veskar-host/ExportHost.h>

#include <stdexcept>
#include <string>

namespace Veskar::Host {

/// Faulty input, or an output file that cannot be written. The message is for users: "PLACE: KEY:
/// REASON", as in "walk.jsonl:3: tracks[0].range: missing", without the parts that are unknown.
///
/// For programs that sort or show faults, the parts can be had one by one; they are not parsed from
/// the message.
class VESKAR_HOST_EXPORT InputError : public std::runtime_error {
public:
    /// @param reason the fault, where neither place nor key are known
    explicit InputError(const std::string& reason);
    /// @param key the key with the fault, as "camera.position"
    /// @param reason what is wrong with it
    InputError(const std::string& key, const std::string& reason);
    /// @param place where the fault was found: "FILE" or "FILE:LINE"
    /// @param error the fault; if it has a place of its own, that comes behind this one
    InputError(const std::string& place, const InputError& error);

    /// @return "FILE" or "FILE:LINE"; empty when unknown
    const std::string& place() const noexcept { return place_; }
    /// @return the key, with dots and indices as in "tracks[3].box.top"; empty when the fault is
    ///         not that of a key
    const std::string& key() const noexcept { return key_; }
    /// @return the message without place and key
    const std::string& reason() const noexcept { return reason_; }

private:
    std::string place_;
    std::string key_;
    std::string reason_;
};

}  // namespace Veskar::Host
