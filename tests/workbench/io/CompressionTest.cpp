// SPDX-License-Identifier: Apache-2.0
// Compressed files, against the programs gzip and zstd.
#include <veskar-host/InputError.h>

#include "Process.h"
#include "io/Compression.h"
#include "io/LineReader.h"
#include "io/OutputFile.h"
#include "support/TemporaryDirectory.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using testing::Values;
using VeskarTest::dataFile;
using VeskarTest::run;
using VeskarTest::slurp;
using VeskarTest::spill;
using VeskarTest::veskar;

struct Format {
    std::string program;
    std::string ending;
};

class Compressed : public testing::TestWithParam<Format> {
protected:
    std::string pack(const std::string& plain) {
        spill(directory / "text", plain);
        const VeskarTest::Outcome outcome = run({GetParam().program, "-c", directory / "text"});
        EXPECT_EQ(outcome.status, 0);
        return outcome.output;
    }
    std::string unpack(const std::string& path) {
        const VeskarTest::Outcome outcome = run({GetParam().program, "-d", "-c", path});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return outcome.output;
    }
    static std::string read(const std::string& path) {
        LineReader reader(path);
        std::string text;
        std::string_view line;
        while (reader.next(line)) {
            text += std::string(line) + (reader.lastLineIsOpen() ? "" : "\n");
        }
        return text;
    }
    /// The message when the file is read.
    static std::string faultOf(const std::string& path) {
        try {
            read(path);
        } catch (const Veskar::Host::InputError& error) {
            return error.what();
        }
        return "none";
    }

    VeskarTest::TemporaryDirectory directory;
    std::string file = directory / "file";
    /// Several pieces of any buffer, with lines that differ.
    const std::string text = [] {
        std::string lines;
        for (int i = 0; i < 200'000; ++i) {
            lines += std::to_string(i * 7919LL % 1'000'003) + "\n";
        }
        return lines;
    }();
};

TEST_P(Compressed, IsReadWhateverItsName) {
    spill(file, pack(text));
    EXPECT_EQ(read(file), text);
    spill(file, pack(""));
    EXPECT_EQ(read(file), "");
}

TEST_P(Compressed, PartsBehindEachOtherAreOneText) {
    spill(file, pack("one\n") + pack("two\nthr") + pack("ee"));
    EXPECT_EQ(read(file), "one\ntwo\nthree");
}

TEST_P(Compressed, DamageIsAFault) {
    const std::string packed = pack(text);
    spill(file, packed.substr(0, packed.size() / 2));
    EXPECT_THAT(faultOf(file), HasSubstr(": the compressed data end too early"));
    spill(file, packed.substr(0, packed.size() - 1));
    EXPECT_THAT(faultOf(file), HasSubstr(": the compressed data end too early"));
    std::string damaged = packed;
    damaged[packed.size() / 2] = static_cast<char>(damaged[packed.size() / 2] ^ 0x55);
    spill(file, damaged);
    EXPECT_THAT(faultOf(file), HasSubstr("data are damaged"));
    spill(file, packed + "no such data");
    EXPECT_THAT(faultOf(file), HasSubstr("data are damaged"));
}

TEST_P(Compressed, IsWrittenByName) {
    const std::string path = file + GetParam().ending;
    OutputFile output(path);
    for (std::size_t i = 0; i < text.size(); i += 1000) {
        output.write(std::string_view(text).substr(i, 1000));
    }
    output.commit();
    EXPECT_EQ(unpack(path), text);
    EXPECT_LT(slurp(path).size(), text.size() / 2);
}

// For those who follow a file.
TEST_P(Compressed, AFlushShowsEverythingUpToThere) {
    const std::unique_ptr<Encoder> encoder = encoderFor(file + GetParam().ending);
    ASSERT_NE(encoder, nullptr);
    const std::string packed = encoder->encode("so far", Encoder::Until::Now);
    const std::unique_ptr<Decoder> decoder = decoderOf(packed);
    ASSERT_NE(decoder, nullptr);
    std::string seen(100, '\0');
    std::size_t taken = 0;
    std::size_t written = 0;
    for (Decoder::Step step{1, 0}; step.taken + step.written > 0;) {
        step = decoder->decode(std::string_view(packed).substr(taken), seen.data() + written,
                               seen.size() - written);
        taken += step.taken;
        written += step.written;
    }
    EXPECT_EQ(seen.substr(0, written), "so far");
    EXPECT_FALSE(decoder->isAtEnd());
}

TEST_P(Compressed, EveryCommandTakesIt) {
    const std::string recording = directory / "tiny.jsonl" + GetParam().ending;
    const std::string fused = directory / "fused.jsonl" + GetParam().ending;
    spill(recording, pack(slurp(dataFile("tiny.jsonl"))));
    EXPECT_EQ(veskar({"replay", recording, "-o", fused}).status, 0);
    EXPECT_EQ(unpack(fused), veskar({"replay", dataFile("tiny.jsonl")}).output);
    EXPECT_EQ(veskar({"evaluate", recording, fused}).output,
              veskar({"evaluate", dataFile("tiny.jsonl")}).output);
    EXPECT_EQ(veskar({"replay", "-"}, slurp(recording)).output,
              veskar({"replay", dataFile("tiny.jsonl")}).output);
    EXPECT_THAT(veskar({"info", recording}).output, StartsWith(recording + ": recording \"tiny\""));
}

INSTANTIATE_TEST_SUITE_P(Formats, Compressed, Values(Format{"gzip", ".gz"}, Format{"zstd", ".zst"}),
                         [](const auto& one) { return one.param.program; });

TEST(Compression, OtherNamesAndTextsAreNotCompressed) {
    EXPECT_EQ(encoderFor("road.jsonl"), nullptr);
    EXPECT_EQ(encoderFor(".gz"), nullptr);
    EXPECT_EQ(encoderFor("gz"), nullptr);
    EXPECT_EQ(decoderOf("{\"format\""), nullptr);
    EXPECT_EQ(decoderOf("\x1f"), nullptr);
    EXPECT_EQ(decoderOf(""), nullptr);
}

}  // namespace
}  // namespace Workbench
