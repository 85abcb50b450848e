// SPDX-License-Identifier: Apache-2.0
// Reads the container format MCAP (https://mcap.dev, version 0).
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace Workbench {

/// The messages of a file in the order in which they stand there. Indexes are not needed, so that
/// files without any, and such that a crash has left without an end, are read up to their last
/// whole chunk. Memory is that of a chunk.
class McapReader {
public:
    /// Describes messages.
    struct Schema {
        std::string name;      ///< as "radar_msgs/msg/RadarTracks"
        std::string encoding;  ///< of the text, as "ros2msg"
        std::string text;
    };
    /// Where messages come from.
    struct Channel {
        std::string topic;
        std::string encoding;            ///< of the messages, as "cdr"
        const Schema* schema = nullptr;  ///< none for messages that describe themselves
    };
    /// A message; valid until the next one is read.
    struct Message {
        const Channel* channel;
        std::uint64_t logTime;  ///< when it was recorded, ns
        std::string_view data;
    };

    /// @param path a file
    /// @throw InputError when it cannot be opened, or is none
    explicit McapReader(const std::string& path);

    /// @return the next message; nothing behind the last
    /// @throw InputError a fault of the file, behind its name: damaged or cut off, or compressed
    ///                   otherwise than with Zstandard
    std::optional<Message> next();

private:
    struct Record {
        std::uint8_t opcode;
        std::string_view content;
    };

    std::optional<Record> nextRecord();
    std::optional<Record> nextInChunk();
    std::string_view read(std::uint64_t size);
    void openChunk(std::string_view content);
    std::optional<Message> take(const Record& record);
    [[noreturn]] void refuse(const std::string& what) const;

    std::string path_;
    std::ifstream file_;
    std::uint64_t size_ = 0;
    std::string buffer_;  ///< the record that was read last
    std::string chunk_;   ///< records of the current chunk
    std::size_t inChunk_ = 0;
    bool isAtEnd_ = false;
    std::map<std::uint16_t, Schema> schemas_;
    std::map<std::uint16_t, Channel> channels_;
};

}  // namespace Workbench
