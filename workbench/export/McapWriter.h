// SPDX-License-Identifier: Apache-2.0
// Writes the container format MCAP (https://mcap.dev, version 0).
#pragma once

#include "io/McapRecords.h"
#include "io/OutputFile.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Workbench {

/// Channels of messages in chunks, which are compressed with Zstandard, and indexes for readers
/// that seek. Everything has a CRC-32. Memory is that of a chunk and of the indexes of chunks.
class McapWriter {
public:
    /// Begins the file.
    /// @param output receives it; must outlive this
    /// @param library what writes the messages
    McapWriter(OutputFile& output, const std::string& library);

    /// @param name of the schema
    /// @param encoding of the schema
    /// @param text the schema
    /// @return its id
    std::uint16_t addSchema(const std::string& name, const std::string& encoding,
                            const std::string& text);
    /// @param schema id of a schema
    /// @param topic name of the channel
    /// @param encoding of the messages
    /// @return its id
    std::uint16_t addChannel(std::uint16_t schema, const std::string& topic,
                             const std::string& encoding);
    /// @param channel id of a channel
    /// @param logTime when it was recorded, ns
    /// @param publishTime what it is about, ns
    /// @param data the message
    /// @throw InputError when the output cannot be written
    void addMessage(std::uint16_t channel, std::uint64_t logTime, std::uint64_t publishTime,
                    std::string_view data);
    /// Ends the file. Must be the last call.
    /// @throw InputError as addMessage
    void finish();

private:
    struct IndexEntry {
        std::uint64_t time;    ///< ns
        std::uint64_t offset;  ///< in the uncompressed chunk
    };
    /// Times of messages from the first to the last, ns.
    struct Span {
        std::uint64_t start = 0;
        std::uint64_t end = 0;
        std::uint64_t count = 0;

        void extend(std::uint64_t time);
    };
    struct Channel {
        std::uint32_t sequence = 0;     ///< number of messages
        std::vector<IndexEntry> index;  ///< in the current chunk
    };

    void write(std::string_view bytes);
    void writeChunk();
    /// Writes records of one kind to the summary, and their place to the offsets behind it.
    void writeSummaryGroup(McapRecord opcode, std::string_view records);

    OutputFile& output_;
    std::uint64_t position_ = 0;
    std::uint32_t checksum_ = 0;  ///< of the section that is being written
    std::string chunk_;           ///< records, not compressed
    Span chunkSpan_;
    Span span_;  ///< of all messages
    std::map<std::uint16_t, Channel> channels_;
    std::uint16_t schemaCount_ = 0;
    std::uint32_t chunkCount_ = 0;
    // For the summary:
    std::string schemaRecords_;
    std::string channelRecords_;
    std::string chunkIndexes_;
    std::string summaryOffsets_;
};

}  // namespace Workbench
