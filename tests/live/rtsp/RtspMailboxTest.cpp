// SPDX-License-Identifier: Apache-2.0
#include "live/rtsp/RtspMailbox.h"
#include "live/support/LoopUntil.h"
#include "live/support/Received.h"

#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Veskar::Live::EventLoop;
using Veskar::Live::Framing;
using Veskar::Live::RtspMailbox;
using VeskarTest::loopUntil;
using VeskarTest::ToldFaults;

namespace {

std::string document(int number) {
    return "<MetadataStream>" + std::to_string(number) + "</MetadataStream>";
}

}  // namespace

TEST(RtspMailbox, HandsDocumentsFromThreadToThread) {
    constexpr int count = 20000;
    ToldFaults log;
    RtspMailbox mailbox({"camera", Framing::XmlDocuments}, {count, std::size_t{1} << 30},
                        log.faults);
    EventLoop loop;
    std::vector<std::string> texts;
    bool hasStarted = false;
    std::string end;
    const EventLoop::Watch watch = loop.watch(mailbox.descriptor(), EPOLLIN, [&](std::uint32_t) {
        const RtspMailbox::News news = mailbox.take();
        hasStarted = hasStarted || news.hasStarted;
        if (news.document) {
            EXPECT_LE(news.document->arrived, EventLoop::Clock::now());
            texts.push_back(news.document->text);
        }
        end = news.end.value_or(end);
    });
    std::thread session([&] {
        mailbox.start();
        for (int i = 0; i < count; ++i) {
            mailbox.add({static_cast<std::uint16_t>(i), true, document(i)});
        }
        mailbox.end("that was all");
    });
    EXPECT_TRUE(loopUntil(loop, [&] { return !end.empty(); }));
    session.join();
    EXPECT_TRUE(hasStarted);
    EXPECT_EQ(end, "that was all");
    ASSERT_EQ(texts.size(), std::size_t{count}) << "the end comes behind the last document";
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(texts[static_cast<std::size_t>(i)], document(i));
    }
    VeskarTest::loopUntilIdle(loop);
}

TEST(RtspMailbox, DropsTheOldestWhenTooManyWait) {
    ToldFaults log;
    RtspMailbox mailbox({"camera", Framing::XmlDocuments}, {3, 10000}, log.faults);
    for (int i = 0; i < 5; ++i) {
        mailbox.add({static_cast<std::uint16_t>(i), true, document(i)});
    }
    const RtspMailbox::News news = mailbox.take();
    EXPECT_EQ(news.document->text, document(2));
    EXPECT_EQ(news.lost.overflowed, 2U);
    EXPECT_TRUE(news.hasStarted) << "packets come: the server plays";
    mailbox.start();
    EXPECT_FALSE(mailbox.take().hasStarted) << "as was told";
}

TEST(RtspMailbox, CutsWhatIsUnfinishedAtTheEnd) {
    ToldFaults log;
    RtspMailbox mailbox({"camera", Framing::XmlDocuments}, {}, log.faults);
    mailbox.add({9, false, "<MetadataStream>"});
    mailbox.end("gone");
    const RtspMailbox::News news = mailbox.take();
    EXPECT_EQ(news.end, "gone");
    EXPECT_EQ(news.lost.cut, 1U);
    mailbox.add({70, false, document(1)});
    EXPECT_EQ(mailbox.take().document->text, document(1)) << "numbers begin anew";
    EXPECT_EQ(mailbox.take().lost.cut, 1U);
}
