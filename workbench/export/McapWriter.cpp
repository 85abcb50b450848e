// SPDX-License-Identifier: Apache-2.0
#include "export/McapWriter.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"

#include <algorithm>
#include <limits>

#include <zlib.h>
#include <zstd.h>

namespace Workbench {
namespace {

constexpr const char* compression = "zstd";
/// Large enough to compress well, small enough to be read at once.
constexpr std::size_t chunkSize = std::size_t{1} << 20;

/// Little-endian fields of a record.
class RecordFields {
public:
    template <typename Number>
    RecordFields& add(Number value) {
        static_assert(std::numeric_limits<Number>::is_integer && !std::is_signed_v<Number>);
        for (std::size_t byte = 0; byte < sizeof(Number); ++byte) {
            bytes_ += static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * byte) & 0xff);
        }
        return *this;
    }
    RecordFields& addText(std::string_view text) {
        add(static_cast<std::uint32_t>(text.size()));
        bytes_ += text;
        return *this;
    }
    RecordFields& addBytes(std::string_view bytes) {
        bytes_ += bytes;
        return *this;
    }
    const std::string& bytes() const { return bytes_; }
    std::string record(McapRecord opcode) const {
        RecordFields whole;
        whole.add(static_cast<std::uint8_t>(opcode));
        whole.add(static_cast<std::uint64_t>(bytes_.size()));
        return whole.addBytes(bytes_).bytes();
    }

private:
    std::string bytes_;
};

std::uint32_t checksumOf(std::string_view bytes, std::uint32_t before = 0) {
    return static_cast<std::uint32_t>(::crc32_z(
        before, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<z_size_t>(bytes.size())));
}

std::string compressed(const std::string& bytes) {
    std::string result(::ZSTD_compressBound(bytes.size()), '\0');
    const std::size_t size = ::ZSTD_compress(result.data(), result.size(), bytes.data(),
                                             bytes.size(), ZSTD_CLEVEL_DEFAULT);
    if (::ZSTD_isError(size) != 0) {
        throw InputError(std::string("cannot compress a chunk: ") + ::ZSTD_getErrorName(size));
    }
    result.resize(size);
    return result;
}

}  // namespace

void McapWriter::Span::extend(std::uint64_t time) {
    start = count == 0 ? time : std::min(start, time);
    end = count == 0 ? time : std::max(end, time);
    ++count;
}

McapWriter::McapWriter(OutputFile& output, const std::string& library) : output_(output) {
    write(mcapMagic);
    constexpr std::string_view profile;
    write(RecordFields().addText(profile).addText(library).record(McapRecord::Header));
}

void McapWriter::write(std::string_view bytes) {
    output_.write(bytes);
    checksum_ = checksumOf(bytes, checksum_);
    position_ += bytes.size();
}

std::uint16_t McapWriter::addSchema(const std::string& name, const std::string& encoding,
                                    const std::string& text) {
    const std::uint16_t id = ++schemaCount_;  // 0 stands for none
    const std::string record =
        RecordFields().add(id).addText(name).addText(encoding).addText(text).record(
            McapRecord::Schema);
    chunk_ += record;
    schemaRecords_ += record;
    return id;
}

std::uint16_t McapWriter::addChannel(std::uint16_t schema, const std::string& topic,
                                     const std::string& encoding) {
    const auto id = static_cast<std::uint16_t>(channels_.size());
    channels_[id] = {};
    constexpr std::string_view metadata;
    const std::string record = RecordFields()
                                   .add(id)
                                   .add(schema)
                                   .addText(topic)
                                   .addText(encoding)
                                   .addText(metadata)
                                   .record(McapRecord::Channel);
    chunk_ += record;
    channelRecords_ += record;
    return id;
}

void McapWriter::addMessage(std::uint16_t channel, std::uint64_t logTime, std::uint64_t publishTime,
                            std::string_view data) {
    Channel& sender = channels_.at(channel);
    sender.index.push_back({logTime, chunk_.size()});
    chunkSpan_.extend(logTime);
    span_.extend(logTime);
    chunk_ += RecordFields()
                  .add(channel)
                  .add(sender.sequence++)
                  .add(logTime)
                  .add(publishTime)
                  .addBytes(data)
                  .record(McapRecord::Message);
    if (chunk_.size() >= chunkSize) {
        writeChunk();
    }
}

void McapWriter::writeChunk() {
    if (chunk_.empty()) {
        return;
    }
    const std::string records = compressed(chunk_);
    const std::uint64_t start = position_;
    write(RecordFields()
              .add(chunkSpan_.start)
              .add(chunkSpan_.end)
              .add(static_cast<std::uint64_t>(chunk_.size()))
              .add(checksumOf(chunk_))
              .addText(compression)
              .add(static_cast<std::uint64_t>(records.size()))
              .addBytes(records)
              .record(McapRecord::Chunk));
    const std::uint64_t end = position_;
    RecordFields offsets;
    for (auto& [id, channel] : channels_) {
        if (channel.index.empty()) {
            continue;
        }
        offsets.add(id).add(position_);
        RecordFields entries;
        for (const IndexEntry& entry : channel.index) {
            entries.add(entry.time).add(entry.offset);
        }
        write(RecordFields().add(id).addText(entries.bytes()).record(McapRecord::MessageIndex));
        channel.index.clear();
    }
    chunkIndexes_ += RecordFields()
                         .add(chunkSpan_.start)
                         .add(chunkSpan_.end)
                         .add(start)
                         .add(end - start)
                         .addText(offsets.bytes())
                         .add(position_ - end)
                         .addText(compression)
                         .add(static_cast<std::uint64_t>(records.size()))
                         .add(static_cast<std::uint64_t>(chunk_.size()))
                         .record(McapRecord::ChunkIndex);
    ++chunkCount_;
    chunk_.clear();
    chunkSpan_ = {};
}

void McapWriter::writeSummaryGroup(McapRecord opcode, std::string_view records) {
    if (!records.empty()) {
        summaryOffsets_ += RecordFields()
                               .add(static_cast<std::uint8_t>(opcode))
                               .add(position_)
                               .add(static_cast<std::uint64_t>(records.size()))
                               .record(McapRecord::SummaryOffset);
        write(records);
    }
}

void McapWriter::finish() {
    writeChunk();
    write(RecordFields().add(checksum_).record(McapRecord::DataEnd));

    RecordFields counts;
    for (const auto& [id, channel] : channels_) {
        counts.add(id).add(static_cast<std::uint64_t>(channel.sequence));
    }
    constexpr std::uint32_t none = 0;
    checksum_ = 0;
    const std::uint64_t summary = position_;
    writeSummaryGroup(McapRecord::Schema, schemaRecords_);
    writeSummaryGroup(McapRecord::Channel, channelRecords_);
    writeSummaryGroup(McapRecord::Statistics, RecordFields()
                                                  .add(span_.count)
                                                  .add(schemaCount_)
                                                  .add(static_cast<std::uint32_t>(channels_.size()))
                                                  .add(none)  // attachments
                                                  .add(none)  // metadata
                                                  .add(chunkCount_)
                                                  .add(span_.start)
                                                  .add(span_.end)
                                                  .addText(counts.bytes())
                                                  .record(McapRecord::Statistics));
    writeSummaryGroup(McapRecord::ChunkIndex, chunkIndexes_);
    const std::uint64_t offsets = position_;
    write(summaryOffsets_);
    // The checksum of the summary covers the footer up to the checksum itself.
    RecordFields footer;
    footer.add(summary).add(offsets);
    constexpr std::size_t checksumSize = 4;
    const std::string record = RecordFields(footer).add(none).record(McapRecord::Footer);
    const std::string_view covered(record.data(), record.size() - checksumSize);
    write(footer.add(checksumOf(covered, checksum_)).record(McapRecord::Footer));
    write(mcapMagic);
}

}  // namespace Workbench
