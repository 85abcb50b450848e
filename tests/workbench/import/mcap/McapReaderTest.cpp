// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "export/McapWriter.h"
#include "import/mcap/McapReader.h"
#include "io/OutputFile.h"
#include "support/TemporaryDirectory.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Workbench::McapReader;

/// A field of so many bytes, little-endian.
std::string number(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        text += static_cast<char>(value >> (8 * i) & 0xff);
    }
    return text;
}

std::string text(const std::string& contents) {
    return number(contents.size(), 4) + contents;
}

std::string record(int opcode, const std::string& content) {
    return number(static_cast<std::uint64_t>(opcode), 1) + number(content.size(), 8) + content;
}

const std::string magic = "\x89MCAP0\r\n";
const std::string header = record(1, text("ros2") + text("test"));
const std::string schema = record(3, number(1, 2) + text("a/msg/B") + text("ros2msg") + text("x"));
const std::string channel =
    record(4, number(7, 2) + number(1, 2) + text("/topic") + text("cdr") + number(0, 4));
const std::string message =
    record(5, number(7, 2) + number(0, 4) + number(1'000, 8) + number(900, 8) + "data");

std::string chunkOf(const std::string& compression, const std::string& records,
                    std::uint32_t checksum = 0) {
    return record(6, number(0, 8) + number(0, 8) + number(records.size(), 8) + number(checksum, 4) +
                         text(compression) + number(records.size(), 8) + records);
}

class McapReaderTest : public testing::Test {
protected:
    /// What a file says: a line per message, and the fault.
    std::vector<std::string> read(const std::string& contents) {
        VeskarTest::spill(path, contents);
        std::vector<std::string> said;
        try {
            McapReader reader(path);
            while (const auto one = reader.next()) {
                said.push_back(one->channel->topic + " " + std::to_string(one->logTime) + " " +
                               std::string(one->data));
            }
        } catch (const Veskar::Host::InputError& error) {
            said.emplace_back(error.what());
        }
        return said;
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "log.mcap";
};

TEST_F(McapReaderTest, ReadsWhatTheWriterWrites) {
    {
        Workbench::OutputFile output(path);
        Workbench::McapWriter writer(output, "test");
        const auto of = writer.addSchema("a/msg/B", "ros2msg", "uint8 x");
        const auto first = writer.addChannel(of, "/first", "cdr");
        const auto other = writer.addChannel(0, "/other", "json");
        for (int i = 0; i < 3000; ++i) {
            writer.addMessage(i % 2 == 0 ? first : other, static_cast<std::uint64_t>(i), 0,
                              std::string(1000, static_cast<char>('a' + i % 26)));
        }
        writer.finish();
        output.commit();
    }
    McapReader reader(path);
    for (int i = 0; i < 3000; ++i) {
        const auto one = reader.next();
        ASSERT_TRUE(one) << i;
        EXPECT_EQ(one->logTime, static_cast<std::uint64_t>(i));
        EXPECT_EQ(one->data, std::string(1000, static_cast<char>('a' + i % 26)));
        ASSERT_EQ(one->channel->topic, i % 2 == 0 ? "/first" : "/other");
        if (i % 2 == 0) {
            ASSERT_NE(one->channel->schema, nullptr);
            EXPECT_EQ(one->channel->schema->name, "a/msg/B");
            EXPECT_EQ(one->channel->schema->text, "uint8 x");
        } else {
            EXPECT_EQ(one->channel->schema, nullptr);
        }
    }
    EXPECT_FALSE(reader.next());
}

TEST_F(McapReaderTest, ChunksAndIndexesAreOptional) {
    const std::string plain = magic + header + schema + channel + message;
    EXPECT_THAT(read(plain), ElementsAre("/topic 1000 data"));
    EXPECT_THAT(read(plain + record(0x0f, number(0, 4)) + message), ElementsAre("/topic 1000 data"))
        << "nothing counts behind the end of the data";
    EXPECT_THAT(read(magic + header + chunkOf("", schema + channel + message + message) + message),
                ElementsAre("/topic 1000 data", "/topic 1000 data", "/topic 1000 data"));
    EXPECT_THAT(read(plain + record(0x90, "private") + message),
                ElementsAre("/topic 1000 data", "/topic 1000 data"));
}

TEST_F(McapReaderTest, NamesWhatItCannotRead) {
    EXPECT_THAT(read("no such file"), ElementsAre(path + ": is no MCAP file"));
    EXPECT_THAT(read(magic + header + message), ElementsAre(path + ": a message has no channel"));
    const std::string plain = magic + header + schema + channel + message;
    EXPECT_THAT(read(plain.substr(0, plain.size() - 1)),
                ElementsAre(path + ": the file is cut off within a record"));
    EXPECT_THAT(read(magic + chunkOf("lz4", "abc")),
                ElementsAre(HasSubstr("compressed with lz4; only Zstandard is read")));
    EXPECT_THAT(read(magic + chunkOf("zstd", "abc")), ElementsAre(path + ": a chunk is damaged"));
    EXPECT_THAT(read(magic + chunkOf("", schema, 1)),
                ElementsAre(path + ": a chunk is damaged: its checksum differs"));
    EXPECT_THAT(read(magic + number(5, 1) + number(1ULL << 40, 8)),
                ElementsAre(HasSubstr("a record of 1099511627776 bytes")));
    EXPECT_THAT(read(magic + record(3, number(1, 2) + number(1000, 4))),
                ElementsAre(path + ": a record ends within a field"));
    EXPECT_THROW(McapReader(directory / "none"), Veskar::Host::InputError);
}

}  // namespace
