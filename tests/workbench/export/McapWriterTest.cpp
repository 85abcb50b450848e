// SPDX-License-Identifier: Apache-2.0
// Reads what is written record by record, as the format describes it; e2e/mcap.e2e.ts of the
// report's page reads it with the format's own reader.
#include "Process.h"
#include "export/McapWriter.h"
#include "support/TemporaryDirectory.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <zlib.h>
#include <zstd.h>

using testing::ElementsAre;
using testing::Pair;

namespace {

constexpr std::string_view magic = "\x89MCAP0\r\n";

std::uint32_t checksumOf(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())));
}

/// Little-endian fields, from the first to the last.
class Cursor {
public:
    explicit Cursor(std::string_view bytes) : rest_(bytes) {}

    /// The numbers of these tests are small.
    std::size_t number(std::size_t bytes) {
        std::size_t value = 0;
        for (std::size_t i = bytes; i-- > 0;) {
            value = value << 8 | static_cast<std::uint8_t>(rest_.at(i));
        }
        rest_.remove_prefix(bytes);
        return value;
    }
    std::string_view bytes(std::size_t size) {
        const std::string_view taken = rest_.substr(0, size);
        EXPECT_EQ(taken.size(), size);
        rest_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view text() { return bytes(number(4)); }
    std::string_view rest() const { return rest_; }

private:
    std::string_view rest_;
};

struct Record {
    int opcode;
    std::string_view content;
    std::size_t begin;  ///< place in the bytes that were read
    std::size_t end;    ///< place behind it
};

std::vector<Record> recordsOf(std::string_view bytes) {
    std::vector<Record> records;
    Cursor cursor(bytes);
    while (!cursor.rest().empty()) {
        const std::size_t begin = bytes.size() - cursor.rest().size();
        const int opcode = static_cast<int>(cursor.number(1));
        const std::string_view content = cursor.bytes(cursor.number(8));
        records.push_back({opcode, content, begin, bytes.size() - cursor.rest().size()});
    }
    return records;
}

class Mcap : public testing::Test {
protected:
    void write(const std::function<void(Workbench::McapWriter&)>& fill) {
        Workbench::OutputFile output(directory / "out");
        Workbench::McapWriter writer(output, "test");
        fill(writer);
        writer.finish();
        output.commit();
        file = VeskarTest::slurp(directory / "out");
        ASSERT_EQ(file.substr(0, magic.size()), magic);
        ASSERT_EQ(file.substr(file.size() - magic.size()), magic);
        body = std::string_view(file).substr(0, file.size() - magic.size());
        records = recordsOf(body.substr(magic.size()));
        for (Record& record : records) {
            record.begin += magic.size();
            record.end += magic.size();
        }
    }

    std::vector<Record> ofKind(int opcode) const {
        std::vector<Record> found;
        for (const Record& record : records) {
            if (record.opcode == opcode) {
                found.push_back(record);
            }
        }
        return found;
    }

    static std::string unpacked(const Record& chunk) {
        Cursor cursor(chunk.content);
        cursor.number(8);
        cursor.number(8);
        std::string bytes(cursor.number(8), '\0');
        const std::size_t checksum = cursor.number(4);
        EXPECT_EQ(cursor.text(), "zstd");
        const std::string_view packed = cursor.bytes(cursor.number(8));
        EXPECT_TRUE(cursor.rest().empty());
        EXPECT_EQ(::ZSTD_decompress(bytes.data(), bytes.size(), packed.data(), packed.size()),
                  bytes.size());
        EXPECT_EQ(checksumOf(bytes), checksum);
        return bytes;
    }

    VeskarTest::TemporaryDirectory directory;
    std::string file;
    std::string_view body;  ///< without the magic at its end
    std::vector<Record> records;
};

void fillTwoChannels(Workbench::McapWriter& writer) {
    const auto schema = writer.addSchema("name", "jsonschema", "{}");
    const auto first = writer.addChannel(schema, "/first", "json");
    const auto second = writer.addChannel(schema, "/second", "json");
    writer.addMessage(first, 20, 19, "a");
    writer.addMessage(second, 10, 9, "bb");
    writer.addMessage(first, 30, 29, "ccc");
}

TEST_F(Mcap, HasItsRecordsInOrder) {
    write(fillTwoChannels);
    std::vector<int> opcodes;
    for (const Record& record : records) {
        opcodes.push_back(record.opcode);
    }
    // Header, chunk, message index per channel, end of data; schema, two channels, statistics,
    // chunk index, their four offsets; footer.
    EXPECT_THAT(opcodes, ElementsAre(1, 6, 7, 7, 15, 3, 4, 4, 11, 8, 14, 14, 14, 14, 2));
    std::vector<int> inner;
    const std::string chunk = unpacked(ofKind(6)[0]);
    for (const Record& record : recordsOf(chunk)) {
        inner.push_back(record.opcode);
    }
    EXPECT_THAT(inner, ElementsAre(3, 4, 4, 5, 5, 5));
}

TEST_F(Mcap, MessagesKeepTimesAndBytes) {
    write(fillTwoChannels);
    const std::string chunk = unpacked(ofKind(6)[0]);
    std::vector<std::vector<std::size_t>> numbers;
    std::string data;
    for (const Record& record : recordsOf(chunk)) {
        if (record.opcode == 5) {
            Cursor cursor(record.content);
            numbers.push_back(
                {cursor.number(2), cursor.number(4), cursor.number(8), cursor.number(8)});
            data += std::string(cursor.rest()) + ".";
        }
    }
    using Row = std::vector<std::size_t>;  // channel, sequence, logged, published
    EXPECT_THAT(numbers, ElementsAre(Row{0, 0, 20, 19}, Row{1, 0, 10, 9}, Row{0, 1, 30, 29}));
    EXPECT_EQ(data, "a.bb.ccc.");
}

TEST_F(Mcap, IndexesPointToTheMessages) {
    write(fillTwoChannels);
    const std::string chunk = unpacked(ofKind(6)[0]);
    std::size_t found = 0;
    for (const Record& index : ofKind(7)) {
        Cursor cursor(index.content);
        const std::size_t channel = cursor.number(2);
        Cursor entries(cursor.text());
        while (!entries.rest().empty()) {
            const std::size_t time = entries.number(8);
            const Record message =
                recordsOf(std::string_view(chunk).substr(entries.number(8))).front();
            EXPECT_EQ(message.opcode, 5);
            Cursor fields(message.content);
            EXPECT_EQ(fields.number(2), channel);
            fields.number(4);
            EXPECT_EQ(fields.number(8), time);
            ++found;
        }
    }
    EXPECT_EQ(found, 3);
}

TEST_F(Mcap, ChunkIndexesPointToChunks) {
    write([](Workbench::McapWriter& writer) {
        const auto channel = writer.addChannel(writer.addSchema("n", "", ""), "/t", "json");
        const std::string large(std::size_t{3} << 18, 'x');
        for (std::uint64_t time = 1; time <= 5; ++time) {
            writer.addMessage(channel, time, time, large);
        }
    });
    const auto chunks = ofKind(6);
    const auto indexes = ofKind(8);
    ASSERT_EQ(chunks.size(), 3);
    ASSERT_EQ(indexes.size(), 3);
    for (std::size_t i = 0; i < 3; ++i) {
        Cursor cursor(indexes[i].content);
        EXPECT_EQ(cursor.number(8), 2 * i + 1);
        EXPECT_EQ(cursor.number(8), i < 2 ? 2 * i + 2 : 5);
        EXPECT_EQ(cursor.number(8), chunks[i].begin);
        EXPECT_EQ(cursor.number(8), chunks[i].end - chunks[i].begin);
        Cursor offsets(cursor.text());
        EXPECT_EQ(offsets.number(2), 0);
        EXPECT_EQ(offsets.number(8), ofKind(7)[i].begin);
        EXPECT_EQ(cursor.number(8), ofKind(7)[i].end - ofKind(7)[i].begin);
        EXPECT_EQ(cursor.text(), "zstd");
        EXPECT_LT(cursor.number(8), 10000) << "compressed";
        EXPECT_EQ(cursor.number(8), unpacked(chunks[i]).size());
    }
}

TEST_F(Mcap, StatisticsCountEverything) {
    write(fillTwoChannels);
    Cursor cursor(ofKind(11)[0].content);
    EXPECT_EQ(cursor.number(8), 3);  // messages
    EXPECT_EQ(cursor.number(2), 1);  // schemas
    EXPECT_EQ(cursor.number(4), 2);  // channels
    EXPECT_EQ(cursor.number(4), 0);  // attachments
    EXPECT_EQ(cursor.number(4), 0);  // metadata
    EXPECT_EQ(cursor.number(4), 1);  // chunks
    EXPECT_EQ(cursor.number(8), 10);
    EXPECT_EQ(cursor.number(8), 30);
    std::map<std::size_t, std::size_t> counts;
    Cursor pairs(cursor.text());
    while (!pairs.rest().empty()) {
        const std::size_t channel = pairs.number(2);
        counts[channel] = pairs.number(8);
    }
    EXPECT_THAT(counts, ElementsAre(Pair(0, 2), Pair(1, 1)));
}

TEST_F(Mcap, ChecksumsAndOffsetsOfTheSummaryAreRight) {
    write(fillTwoChannels);
    const Record end = ofKind(15)[0];
    EXPECT_EQ(Cursor(end.content).number(4), checksumOf(body.substr(0, end.begin)));
    Cursor footer(ofKind(2)[0].content);
    const std::size_t summary = footer.number(8);
    EXPECT_EQ(summary, end.end);
    EXPECT_EQ(footer.number(8), ofKind(14)[0].begin);
    EXPECT_EQ(footer.number(4), checksumOf(body.substr(summary, body.size() - 4 - summary)));
    for (const Record& offset : ofKind(14)) {
        Cursor cursor(offset.content);
        const auto group = ofKind(static_cast<int>(cursor.number(1)));
        EXPECT_EQ(cursor.number(8), group.front().begin);
        EXPECT_EQ(cursor.number(8), group.back().end - group.front().begin);
    }
}

TEST_F(Mcap, WithoutMessagesIsValid) {
    write([](Workbench::McapWriter&) {});
    EXPECT_TRUE(ofKind(6).empty());
    EXPECT_EQ(Cursor(ofKind(11)[0].content).number(8), 0);
}

}  // namespace
