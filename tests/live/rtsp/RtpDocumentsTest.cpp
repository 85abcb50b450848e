// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/RtpDocuments.h"
#include "live/support/Received.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Veskar::Live::Framing;
using Veskar::Live::InputCounters;
using Veskar::Live::RtpDocuments;
using Veskar::Live::StreamOptions;
using VeskarTest::ToldFaults;

namespace {

class RtpDocumentsTest : public testing::Test {
protected:
    void add(std::uint16_t number, std::string_view payload, bool hasMarker = false) {
        documents.add({number, hasMarker, payload});
    }

    ToldFaults log;
    StreamOptions options{"camera", Framing::XmlDocuments, 100};
    InputCounters counters;
    std::vector<std::string> received;
    RtpDocuments documents{options, counters, log.faults,
                           [this](std::string_view text) { received.emplace_back(text); }};
};

}  // namespace

TEST_F(RtpDocumentsTest, AreJoinedAcrossTheEndOfTheNumbers) {
    add(65534, "<tt:MetadataStream><a>");
    add(65535, "1");
    add(0, "</a></tt:MetadataStream>", true);
    add(1, "<?xml version=\"1.0\"?><MetadataStream/>", true);
    EXPECT_THAT(received, ElementsAre("<tt:MetadataStream><a>1</a></tt:MetadataStream>",
                                      "<?xml version=\"1.0\"?><MetadataStream/>"));
    EXPECT_EQ(counters.cut, 0U);
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(RtpDocumentsTest, EndWithTheRootElementOrTheMarker) {
    add(1, "<MetadataStream/><MetadataStream>");
    EXPECT_THAT(received, ElementsAre("<MetadataStream/>"));
    add(2, "<a>", true);
    EXPECT_THAT(received, ElementsAre("<MetadataStream/>", "<MetadataStream><a>"))
        << "what is not well-formed is refused by its reader, who says why";
    add(3, "<any/>", true);
    EXPECT_THAT(received, SizeIs(3));
    EXPECT_EQ(counters.cut, 0U);
}

TEST_F(RtpDocumentsTest, BeginInTheMidstOfOne) {
    add(7, "<a/></MetadataStream>", true);
    add(8, "<MetadataStream>", false);
    add(9, "</MetadataStream>", true);
    EXPECT_THAT(received, ElementsAre("<MetadataStream></MetadataStream>"));
    EXPECT_EQ(counters.cut, 0U) << "nobody has lost anything";
    for (const std::string begin :
         {"\xef\xbb\xbf \n<?xml version=\"1.0\"?>", "<x:MetadataStream a=\"1\">",
          "<MetaDataStream\n>", "<MetadataStream/>"}) {
        documents.restart();
        received.clear();
        add(100, begin, true);
        EXPECT_THAT(received, SizeIs(1)) << begin;
    }
    for (const std::string other :
         {"", " ", "text", "</MetadataStream>", "<tt:Frame>", "<", "< "}) {
        documents.restart();
        received.clear();
        add(100, other, true);
        EXPECT_THAT(received, IsEmpty()) << other;
    }
}

TEST_F(RtpDocumentsTest, AreCutWhereAPacketIsMissing) {
    add(1, "<MetadataStream>");
    add(3, "<b/>");
    add(4, "</MetadataStream>", true);
    EXPECT_THAT(received, IsEmpty());
    EXPECT_EQ(counters.cut, 1U);
    add(5, "<MetadataStream>");
    EXPECT_EQ(counters.cut, 1U);
    add(7, "<MetadataStream/>", true);
    EXPECT_THAT(received, ElementsAre("<MetadataStream/>")) << "the missing one had the marker";
    EXPECT_EQ(counters.cut, 2U);
    add(10, "<MetadataStream/>", true);
    EXPECT_THAT(received, SizeIs(2));
    EXPECT_EQ(counters.cut, 3U) << "what was missing was a document of its own";
    EXPECT_EQ(log.faults.counts().at("input camera: lost packets"), 3U);
    EXPECT_THAT(log.told()[1], testing::StartsWith("input camera: lost packets: 1 at once"));
}

TEST_F(RtpDocumentsTest, AreDroppedWhenTooLong) {
    add(1, "<MetadataStream>" + std::string(60, 'a'));
    add(2, std::string(60, 'a'));
    add(3, "</MetadataStream>", true);
    EXPECT_THAT(received, IsEmpty());
    EXPECT_EQ(counters.tooLong, 1U);
    EXPECT_EQ(counters.cut, 0U);
    add(4, "<MetadataStream/>", true);
    EXPECT_THAT(received, SizeIs(1));
}
