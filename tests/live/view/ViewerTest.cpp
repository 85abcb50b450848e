// SPDX-License-Identifier: Apache-2.0
// What is handed over, and what a viewer gets of it.
#include "States.h"
#include "live/view/StateText.h"
#include "live/view/Viewer.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>

namespace Veskar::Live {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;
using VeskarTest::stateAt;

bool isReadable(int descriptor) {
    pollfd watched{descriptor, POLLIN, 0};
    return ::poll(&watched, 1, 0) == 1;
}

std::string readAll(Viewer& viewer, const ViewNews& news) {
    std::string text;
    std::array<char, 100> buffer{};
    while (const std::size_t count = viewer.read(news, buffer.data(), buffer.size())) {
        text.append(buffer.data(), count);
    }
    return text;
}

TEST(StateText, HoldsWhatFilesOfFusedTracksHold) {
    const std::string text = textOf(stateAt(7.5));
    EXPECT_THAT(text, StartsWith(R"({"fused":{"source":"radar","time":7.5,"received":7.5,)"
                                 R"("tracks":[{"id":12,)"));
    EXPECT_THAT(text, HasSubstr(R"("video":null,"radar":{"source":"radar","time":7.5,)"));
    EXPECT_THAT(text, HasSubstr(R"({"id":3,"confirmed":true)"));
    EXPECT_THAT(text, Not(HasSubstr("\n")));
}

TEST(ViewMailbox, KeepsTheNewestStateAndWakesTheReader) {
    ViewMailbox mailbox;
    EXPECT_FALSE(isReadable(mailbox.descriptor()));
    mailbox.post(stateAt(1.0));
    mailbox.post(stateAt(2.0));
    mailbox.post(std::string("{}"));
    EXPECT_TRUE(isReadable(mailbox.descriptor()));
    const ViewMailbox::Contents contents = mailbox.take();
    EXPECT_FALSE(isReadable(mailbox.descriptor()));
    ASSERT_TRUE(contents.state);
    EXPECT_EQ(contents.state->fused.time, 2.0);
    EXPECT_EQ(contents.status, "{}");
    EXPECT_FALSE(mailbox.take().state);
}

TEST(ViewMailbox, IsBounded) {
    ViewMailbox mailbox;
    for (std::size_t i = 0; i < 2 * ViewMailbox::mostDecisions; ++i) {
        mailbox.post(Decision{{{}, 1}, "{}\n"});
    }
    EXPECT_THAT(mailbox.take().decisions, SizeIs(ViewMailbox::mostDecisions));
}

TEST(Viewer, IsToldTheLastPictureWheneverItComes) {
    ViewNews news("{}");
    ViewMailbox mailbox;
    mailbox.post(CameraPicture{nullptr, "no picture yet"});
    mailbox.post(CameraPicture{std::make_shared<const Picture>(Picture{"bytes", 2.0}), {}});
    news.add(mailbox.take());
    Viewer viewer(nullptr, {}, news);
    EXPECT_TRUE(viewer.isBehind(news));
    EXPECT_THAT(readAll(viewer, news),
                HasSubstr("event: picture\ndata: {\"number\":1,\"time\":2}\n\n"));
    EXPECT_FALSE(viewer.isBehind(news));
    news.add(mailbox.take());
    EXPECT_THAT(readAll(viewer, news), IsEmpty());
    EXPECT_EQ(news.picture()->bytes, "bytes");
}

TEST(Viewer, IsGreetedFirst) {
    const ViewNews news(R"({"a":1})");
    Viewer viewer(nullptr, {}, news);
    EXPECT_TRUE(viewer.isBehind(news));
    EXPECT_EQ(readAll(viewer, news), "retry: 1000\nevent: hello\ndata: {\"a\":1}\n\n");
    EXPECT_FALSE(viewer.isBehind(news));
    EXPECT_THAT(readAll(viewer, news), IsEmpty());
}

TEST(Viewer, IsNotToldWhatWasBefore) {
    ViewNews news("{}");
    ViewMailbox::Contents contents;
    contents.state = stateAt(1.0);
    contents.status = "{}";
    contents.decisions = {{{{}, 12}, "{}\n"}};
    news.add(contents);
    Viewer viewer(nullptr, Subject{{}, 12}, news);
    EXPECT_EQ(readAll(viewer, news), news.hello());
    contents.state = stateAt(2.0);
    news.add(contents);
    const std::string text = readAll(viewer, news);
    EXPECT_THAT(text, HasSubstr(R"("time":2,)"));
    EXPECT_THAT(text, HasSubstr("event: status"));
    EXPECT_THAT(text, HasSubstr("event: decision"));
}

TEST(Viewer, GetsWholeTextsAndThenTheNewestState) {
    ViewNews news("{}");
    Viewer viewer(nullptr, {}, news);
    readAll(viewer, news);
    ViewMailbox::Contents contents;
    contents.state = stateAt(1.0);
    news.add(contents);
    std::array<char, 100> buffer{};
    ASSERT_EQ(viewer.read(news, buffer.data(), buffer.size()), buffer.size());
    std::string first(buffer.data(), buffer.size());
    // While it reads the first one slowly, two more come.
    const std::string whole = news.state();
    for (const double time : {2.0, 3.0}) {
        contents.state = stateAt(time);
        news.add(contents);
    }
    while (first.size() < whole.size()) {
        const std::size_t count = viewer.read(news, buffer.data(), buffer.size());
        first.append(buffer.data(), count);
    }
    EXPECT_EQ(first, whole);
    const std::string rest = readAll(viewer, news);
    EXPECT_THAT(rest, HasSubstr(R"("time":3,)"));
    EXPECT_THAT(rest, Not(HasSubstr(R"("time":2,)")));
}

TEST(Viewer, GetsTheDecisionsAboutItsTrackOnly) {
    ViewNews news("{}");
    const Subject mine{{}, 12};
    Viewer viewer(nullptr, mine, news);
    Viewer other(nullptr, {}, news);
    readAll(viewer, news);
    readAll(other, news);
    ViewMailbox::Contents contents;
    contents.decisions = {
        {mine, "{\"n\":1}\n"}, {{Radar, 12}, "{\"n\":2}\n"}, {mine, "{\"n\":3}\n"}};
    news.add(contents);
    EXPECT_FALSE(other.isBehind(news));
    EXPECT_TRUE(viewer.isBehind(news));
    EXPECT_EQ(readAll(viewer, news),
              "event: decision\ndata: {\"n\":1}\n\nevent: decision\ndata: {\"n\":3}\n\n");
    EXPECT_FALSE(viewer.isBehind(news));
}

TEST(ViewNews, ForgetsOldDecisions) {
    ViewNews news("{}");
    ViewMailbox::Contents contents;
    contents.decisions.assign(ViewNews::mostDecisions, {{{}, 1}, "{}\n"});
    news.add(contents);
    news.add(contents);
    EXPECT_THAT(news.decisions(), SizeIs(ViewNews::mostDecisions));
    EXPECT_EQ(news.decisionNumber(), 2 * ViewNews::mostDecisions);
}

}  // namespace
}  // namespace Veskar::Live
