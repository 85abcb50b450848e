// SPDX-License-Identifier: Apache-2.0
#include "import/mcap/McapReader.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/McapRecords.h"
#include "io/Printable.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <zlib.h>
#include <zstd.h>

namespace Workbench {
namespace {

/// Larger records and chunks are taken for damage.
constexpr std::uint64_t largest = std::uint64_t{1} << 28;

/// The fields of a record, little-endian.
class RecordReader {
public:
    explicit RecordReader(std::string_view bytes) : rest_(bytes) {}

    template <typename Number>
    Number number() {
        std::uint64_t value = 0;
        const std::string_view digits = bytes(sizeof(Number));
        for (std::size_t i = sizeof(Number); i-- > 0;) {
            value = value << 8 | static_cast<std::uint8_t>(digits[i]);
        }
        return static_cast<Number>(value);
    }
    std::string_view bytes(std::uint64_t size) {
        if (size > rest_.size()) {
            throw InputError("a record ends within a field");
        }
        const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(size));
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string text() { return std::string(bytes(number<std::uint32_t>())); }
    std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
};

}  // namespace

McapReader::McapReader(const std::string& path) : path_(path), file_(path, std::ios::binary) {
    std::error_code fault;
    size_ = std::filesystem::file_size(path, fault);
    if (fault || !file_) {
        throw InputError(path, InputError("cannot read a file there"));
    }
    if (read(mcapMagic.size()) != mcapMagic) {
        refuse("is no MCAP file");
    }
}

std::optional<McapReader::Message> McapReader::next() {
    try {
        while (!isAtEnd_) {
            std::optional<Record> record = nextInChunk();
            if (!record) {
                record = nextRecord();
            }
            if (!record) {
                break;
            }
            if (std::optional<Message> message = take(*record)) {
                return message;
            }
        }
    } catch (const InputError& error) {
        refuse(error.what());
    }
    return std::nullopt;
}

/// @return the next record outside of chunks; nothing at the end of a file that has no footer
std::optional<McapReader::Record> McapReader::nextRecord() {
    constexpr std::size_t prefix = 9;
    const std::string_view begin = read(prefix);
    if (begin.empty()) {
        return std::nullopt;
    }
    if (begin.size() < prefix) {
        throw InputError("the file is cut off within a record");
    }
    RecordReader fields(begin);
    const auto opcode = fields.number<std::uint8_t>();
    const auto length = fields.number<std::uint64_t>();
    if (length > largest) {
        throw InputError(fmt::format("a record of {} bytes", length));
    }
    const std::string_view content = read(length);
    if (content.size() < length) {
        throw InputError("the file is cut off within a record");
    }
    return Record{opcode, content};
}

std::optional<McapReader::Record> McapReader::nextInChunk() {
    if (inChunk_ == chunk_.size()) {
        return std::nullopt;
    }
    RecordReader fields(std::string_view(chunk_).substr(inChunk_));
    const auto opcode = fields.number<std::uint8_t>();
    const std::string_view content = fields.bytes(fields.number<std::uint64_t>());
    inChunk_ = chunk_.size() - fields.rest().size();
    return Record{opcode, content};
}

std::string_view McapReader::read(std::uint64_t size) {
    buffer_.resize(static_cast<std::size_t>(std::min(size, size_)));
    file_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    const auto got = static_cast<std::size_t>(file_.gcount());
    return std::string_view(buffer_).substr(0, got);
}

void McapReader::openChunk(std::string_view content) {
    RecordReader fields(content);
    fields.bytes(16);  // the times of its messages
    const auto size = fields.number<std::uint64_t>();
    const auto checksum = fields.number<std::uint32_t>();
    const std::string compression = fields.text();
    const std::string_view records = fields.bytes(fields.number<std::uint64_t>());
    if (size > largest) {
        throw InputError(fmt::format("a chunk of {} bytes", size));
    }
    if (compression == "zstd") {
        chunk_.resize(static_cast<std::size_t>(size));
        const std::size_t got =
            ::ZSTD_decompress(chunk_.data(), chunk_.size(), records.data(), records.size());
        if (::ZSTD_isError(got) != 0 || got != size) {
            throw InputError("a chunk is damaged");
        }
    } else if (compression.empty()) {
        chunk_ = records;
    } else {
        throw InputError(
            fmt::format("its chunks are compressed with {}; only Zstandard is read: "
                        "\"mcap compress --compression zstd\" converts it",
                        printable(compression)));
    }
    inChunk_ = 0;
    const auto found = ::crc32_z(0, reinterpret_cast<const Bytef*>(chunk_.data()), chunk_.size());
    if (checksum != 0 && checksum != found) {
        throw InputError("a chunk is damaged: its checksum differs");
    }
}

std::optional<McapReader::Message> McapReader::take(const Record& record) {
    RecordReader fields(record.content);
    switch (static_cast<McapRecord>(record.opcode)) {
        case McapRecord::Schema: {
            const auto id = fields.number<std::uint16_t>();
            Schema schema;
            schema.name = fields.text();
            schema.encoding = fields.text();
            schema.text = fields.text();
            schemas_.insert_or_assign(id, std::move(schema));
            break;
        }
        case McapRecord::Channel: {
            const auto id = fields.number<std::uint16_t>();
            const auto schema = schemas_.find(fields.number<std::uint16_t>());
            Channel channel;
            channel.topic = fields.text();
            channel.encoding = fields.text();
            channel.schema = schema == schemas_.end() ? nullptr : &schema->second;
            channels_.insert_or_assign(id, std::move(channel));
            break;
        }
        case McapRecord::Message: {
            const auto channel = channels_.find(fields.number<std::uint16_t>());
            if (channel == channels_.end()) {
                throw InputError("a message has no channel");
            }
            fields.number<std::uint32_t>();  // its number
            const auto logTime = fields.number<std::uint64_t>();
            fields.number<std::uint64_t>();  // when it was published
            return Message{&channel->second, logTime, fields.rest()};
        }
        case McapRecord::Chunk:
            openChunk(record.content);
            break;
        case McapRecord::DataEnd:
        case McapRecord::Footer:
            isAtEnd_ = true;
            break;
        default:
            break;  // indexes, metadata, and what later versions add
    }
    return std::nullopt;
}

void McapReader::refuse(const std::string& what) const {
    throw InputError(path_, InputError(what));
}

}  // namespace Workbench
