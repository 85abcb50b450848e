// SPDX-License-Identifier: Apache-2.0
// What inputs and outputs count, for the status document.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Veskar::Live {

/// An input since it was made.
struct InputCounters {
    std::uint64_t messages = 0;     ///< handed on
    std::uint64_t bytes = 0;        ///< of these
    std::uint64_t tooLong = 0;      ///< dropped, because they were longer than allowed
    std::uint64_t cut = 0;          ///< dropped, because they broke off
    std::uint64_t overflowed = 0;   ///< RTSP: dropped, the oldest, because too many waited
    std::uint64_t retained = 0;     ///< MQTT: dropped, because the broker had kept them from before
    std::uint64_t connections = 0;  ///< publishers that came
    std::uint64_t refusedConnections = 0;  ///< publishers that came when there were too many
    std::size_t publishers = 0;            ///< connected now
};

/// An output since it was made. Each accepted message of one reader is written, dropped, failed or
/// waits.
struct OutputCounters {
    std::uint64_t accepted = 0;            ///< to be written; with several readers, for each
    std::uint64_t written = 0;             ///< handed to the system or acknowledged by the broker
    std::uint64_t dropped = 0;             ///< the oldest, because too much waited
    std::uint64_t failed = 0;              ///< could not be written
    std::size_t waiting = 0;               ///< messages that wait now
    std::size_t waitingBytes = 0;          ///< bytes of these
    std::uint64_t connections = 0;         ///< readers that came
    std::uint64_t refusedConnections = 0;  ///< readers that came when there were too many
    std::size_t readers = 0;               ///< connected now
};

/// The connection to an MQTT broker.
struct BrokerCounters {
    bool isConnected = false;
    std::string protocol;           ///< "5" or "3.1.1"; empty when not connected
    std::uint64_t connections = 0;  ///< that the broker accepted
    std::uint64_t refused = 0;      ///< attempts that the broker refused
    std::uint64_t failed = 0;       ///< attempts that came to nothing for another reason
    std::uint64_t lost = 0;         ///< connections that ended without being asked to
    std::string lastFault;          ///< the last reason for one of these
};

}  // namespace Veskar::Live
