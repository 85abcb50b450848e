// SPDX-License-Identifier: Apache-2.0
#include "live/support/Received.h"
#include "live/transport/MessageSplitter.h"

#include <chrono>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using namespace Veskar::Live;
using VeskarTest::ToldFaults;

namespace {

struct Stream {
    explicit Stream(Framing framing, std::size_t longest = 100)
        : options{"radar", framing, longest},
          splitter(options, counters, log.faults,
                   [this](std::string_view text) { messages.emplace_back(text); }) {}

    void feed(std::string_view bytes) { splitter.feed(bytes, now); }

    StreamOptions options;
    InputCounters counters;
    ToldFaults log;
    std::vector<std::string> messages;
    MessageSplitter splitter;
    MessageSplitter::Clock::time_point now;
};

/// @return the messages of a stream that arrives in pieces of random length
std::vector<std::string> inPieces(Framing framing, std::string_view text, unsigned seed,
                                  std::size_t longest = 100) {
    Stream stream(framing, longest);
    std::mt19937 random(seed);
    while (!text.empty()) {
        const std::size_t length = std::min<std::size_t>(text.size(), random() % 7 + 1);
        stream.feed(text.substr(0, length));
        text.remove_prefix(length);
    }
    stream.splitter.cut("reason");
    return stream.messages;
}

}  // namespace

TEST(MessageSplitter, EndsMessagesAtLineEnds) {
    Stream stream(Framing::Lines);
    stream.feed("one\ntwo\r\n\n\r\nthr");
    EXPECT_THAT(stream.messages, ElementsAre("one", "two"));
    stream.feed("ee\n");
    EXPECT_THAT(stream.messages, ElementsAre("one", "two", "three"));
    EXPECT_EQ(stream.counters.messages, 3U);
    EXPECT_EQ(stream.counters.bytes, 11U);
}

TEST(MessageSplitter, TakesTheRestAsAMessageOrAsCut) {
    Stream whole(Framing::Lines);
    whole.feed("one\ntwo");
    whole.splitter.end();
    EXPECT_THAT(whole.messages, ElementsAre("one", "two"));
    EXPECT_EQ(whole.counters.cut, 0U);

    Stream cut(Framing::Lines);
    cut.feed("one\ntwo");
    cut.splitter.cut("reason");
    EXPECT_THAT(cut.messages, ElementsAre("one"));
    EXPECT_EQ(cut.counters.cut, 1U);
    EXPECT_THAT(cut.log.told(), ElementsAre("input radar: dropped an unfinished message: reason"));

    Stream complete(Framing::Lines);
    complete.feed("one\n\r");
    complete.splitter.cut("reason");
    EXPECT_EQ(complete.counters.cut, 0U) << "an empty line is no message";
}

TEST(MessageSplitter, DropsALineThatIsTooLongAndGoesOnAtTheNext) {
    Stream stream(Framing::Lines, 5);
    stream.feed("12345\r\n123456\nsho");
    stream.feed("rt\n1234");
    for (int i = 0; i < 100; ++i) {
        stream.feed("567890");
    }
    stream.feed("1\nlast\n");
    EXPECT_THAT(stream.messages, ElementsAre("12345", "short", "last"));
    EXPECT_EQ(stream.counters.tooLong, 2U);
    EXPECT_THAT(stream.log.told(),
                ElementsAre("input radar: dropped a message: longer than 5 bytes"));
}

TEST(MessageSplitter, ForgetsALongMessageAtTheEndOfItsStream) {
    Stream stream(Framing::Lines, 5);
    stream.feed("1234567890");
    stream.splitter.end();
    EXPECT_THAT(stream.messages, IsEmpty());
    EXPECT_EQ(stream.counters.tooLong, 1U);
    EXPECT_EQ(stream.counters.cut, 0U);
    stream.feed("next\n");
    EXPECT_THAT(stream.messages, ElementsAre("next"));
}

TEST(MessageSplitter, KnowsSinceWhenAMessageIsUnfinished) {
    using namespace std::chrono_literals;
    for (const Framing framing : {Framing::Lines, Framing::XmlDocuments}) {
        const std::string end = framing == Framing::Lines ? "\n" : "></a>";
        Stream stream(framing, 20);
        const auto start = stream.now;
        const auto feedAfter = [&](std::chrono::seconds time, const std::string& bytes) {
            stream.now = start + time;
            stream.feed(bytes);
            return stream.splitter.unfinishedSince();
        };
        EXPECT_EQ(stream.splitter.unfinishedSince(), std::nullopt);
        EXPECT_EQ(feedAfter(1s, "<a"), start + 1s);
        EXPECT_EQ(feedAfter(2s, " "), start + 1s);
        EXPECT_EQ(feedAfter(3s, end), std::nullopt);
        EXPECT_EQ(feedAfter(4s, "\r\n\r\n"), std::nullopt) << "no message";
        EXPECT_EQ(feedAfter(5s, "<a" + end + "<a"), start + 5s);
        EXPECT_EQ(feedAfter(6s, end + "<a"), start + 6s);
        EXPECT_EQ(feedAfter(7s, std::string(50, ' ')), start + 6s);
        EXPECT_EQ(stream.counters.tooLong, 1U);
        EXPECT_EQ(feedAfter(8s, " "), start + 6s) << "its end is not there yet";
        EXPECT_EQ(feedAfter(9s, end), std::nullopt);
        EXPECT_EQ(stream.counters.messages, 3U);
    }
}

TEST(MessageSplitter, KeepsNothingOfWhatIsNoMessage) {
    for (const Framing framing : {Framing::Lines, Framing::XmlDocuments}) {
        Stream stream(framing, 1000);
        const std::string nothing(10000, '\r');
        for (int i = 0; i < 100; ++i) {
            stream.feed(nothing);
        }
        EXPECT_LE(stream.splitter.memory(), 20000U);
        stream.feed("<a/>\n");
        EXPECT_THAT(stream.messages, ElementsAre("<a/>"));
    }
    Stream line(Framing::Lines, 1000);
    line.feed("a");
    for (int i = 0; i < 100; ++i) {
        line.feed(std::string(10000, '\r'));
    }
    EXPECT_LE(line.splitter.memory(), 30000U);
    EXPECT_EQ(line.counters.tooLong, 1U);
}

TEST(MessageSplitter, GivesTheMemoryOfALongMessageBack) {
    Stream stream(Framing::Lines, 1 << 22);
    stream.feed(std::string(1 << 22, 'x'));
    EXPECT_GE(stream.splitter.memory(), std::size_t{1} << 21);
    stream.feed("\n");
    EXPECT_EQ(stream.counters.messages, 1U);
    EXPECT_LE(stream.splitter.memory(), std::size_t{1} << 18);
}

TEST(MessageSplitter, HandsOnWhatStandsBehindAMessageThatWasRefused) {
    const StreamOptions options{"radar", Framing::Lines, 100};
    InputCounters counters;
    ToldFaults log;
    std::vector<std::string> messages;
    MessageSplitter splitter(options, counters, log.faults, [&](std::string_view text) {
        messages.emplace_back(text);
        if (text == "bad") {
            throw std::runtime_error("fault");
        }
    });
    EXPECT_THROW(splitter.feed("bad\ngood\nbet", {}), std::runtime_error);
    splitter.feed("ter\n", {});
    EXPECT_THAT(messages, ElementsAre("bad", "good", "better"));
}

TEST(MessageSplitter, SeparatesXmlDocuments) {
    const std::string first =
        "<?xml version=\"1.0\"?>\n<!-- </a> --><a b='>' c=\"/>\"><d/><![CDATA[</a>]]>"
        "<e>x</e></a>";
    const std::string second =
        "<!DOCTYPE f [<!ENTITY g \"h\"> ]><f><?pi <f> ?><f:i xmlns:f='x' /><!-- - -- --></f>";
    const std::string third = "<j/>";
    const std::string text = first + "\n" + second + third + " \t" + third + "\n";
    for (unsigned seed = 0; seed < 50; ++seed) {
        EXPECT_THAT(inPieces(Framing::XmlDocuments, text, seed),
                    ElementsAre(first, second, third, third))
            << seed;
    }
}

TEST(MessageSplitter, FindsTheNextXmlDocumentBehindABrokenOne) {
    const std::string whole = "<?xml version='1.0'?><a><b/></a>";
    for (const std::string broken : {
             "<?xml version='1.0'?><a><b>",  // never closed
             "<a><b c=\"d",                  // within a value
             "<a",                           // within a tag
             "<a><b></",                     // within an end tag
         }) {
        Stream stream(Framing::XmlDocuments);
        const std::string text = std::string(broken).append(whole).append(whole);
        stream.feed(text);
        EXPECT_THAT(stream.messages, ElementsAre(whole, whole)) << broken;
        EXPECT_EQ(stream.counters.cut, 1U) << broken;
        for (unsigned seed = 0; seed < 20; ++seed) {
            EXPECT_THAT(inPieces(Framing::XmlDocuments, text, seed), ElementsAre(whole, whole))
                << broken << seed;
        }
    }
}

TEST(MessageSplitter, FindsTheNextSceneDescriptionBehindABrokenOne) {
    for (const std::string name : {"MetadataStream", "tt:MetadataStream"}) {
        const std::string whole =
            std::string("<").append(name).append(" xmlns:tt='u'><f/></").append(name).append(">");
        const std::string brief = "<" + name + "/>";
        const std::string rest = std::string(whole).append(brief).append(whole);
        for (const std::string& broken : {
                 "<" + name + "><f><o>",          // never closed
                 "<" + name + "><f><o></f></o>",  // closed too seldom
                 "<" + name + "><f>text ",        // within text
                 "<" + name + "><f a='b",         // within a value
                 std::string("<tt:Other><f>"),    // of another kind
             }) {
            for (unsigned seed = 0; seed < 20; ++seed) {
                EXPECT_THAT(inPieces(Framing::XmlDocuments, broken + rest, seed),
                            ElementsAre(whole, brief, whole))
                    << broken << seed;
            }
        }
    }
    Stream stream(Framing::XmlDocuments);
    stream.feed("<MetadataStream><f><MetadataStream><g/></MetadataStream>");
    EXPECT_EQ(stream.counters.cut, 1U);
}

TEST(MessageSplitter, TakesOnlyAStartTagForTheBeginOfASceneDescription) {
    const std::string whole =
        "<?xml version='1.0'?><!-- <MetadataStream> --><tt:MetadataStream><tt:MetadataStreams/>"
        "<MetadataStream.b/><MyMetadataStream/><![CDATA[<MetadataStream>]]><f>MetadataStream "
        "</f><f MetadataStream='MetadataStream '/><?p <MetadataStream> ?></tt:MetadataStream>";
    for (unsigned seed = 0; seed < 50; ++seed) {
        EXPECT_THAT(inPieces(Framing::XmlDocuments, whole + whole, seed, 1000),
                    ElementsAre(whole, whole))
            << seed;
    }
}

TEST(MessageSplitter, FindsASceneDescriptionBehindOneThatIsTooLong) {
    Stream stream(Framing::XmlDocuments, 50);
    stream.feed("<MetadataStream><f>");
    for (int i = 0; i < 100; ++i) {
        stream.feed("<c>1</c>");
    }
    stream.feed("<MetadataStream/>");
    EXPECT_THAT(stream.messages, ElementsAre("<MetadataStream/>"));
    EXPECT_EQ(stream.counters.tooLong, 1U);
    EXPECT_EQ(stream.counters.cut, 0U);
}

TEST(MessageSplitter, DropsAnXmlDocumentThatIsTooLong) {
    Stream stream(Framing::XmlDocuments, 20);
    stream.feed("<a><b>");
    for (int i = 0; i < 100; ++i) {
        stream.feed("<c>1</c>");
    }
    stream.feed("</b></a><d/>");
    EXPECT_THAT(stream.messages, ElementsAre("<d/>"));
    EXPECT_EQ(stream.counters.tooLong, 1U);
}

TEST(MessageSplitter, TakesXmlOfAnyDepthInConstantMemory) {
    Stream stream(Framing::XmlDocuments, 1000);
    std::string deep;
    for (int i = 0; i < 1000000; ++i) {
        deep += "<a>";
    }
    stream.feed(deep);
    for (int i = 0; i < 1000000; ++i) {
        stream.feed("</a>");
    }
    stream.feed("<b/>");
    EXPECT_THAT(stream.messages, ElementsAre("<b/>"));
}

TEST(MessageSplitter, HandsGarbageOnWithoutHangingOnIt) {
    // A decoder refuses it; here it must not swallow what follows.
    Stream stream(Framing::XmlDocuments);
    stream.feed("</a><b/>");
    EXPECT_THAT(stream.messages, ElementsAre("</a>", "<b/>"));
}
