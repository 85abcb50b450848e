// SPDX-License-Identifier: Apache-2.0
#include "KeptOutput.h"
#include "host/TestInstallation.h"
#include "live/onvif/SceneCodec.h"
#include "live/service/TrackOutput.h"
#include "live/support/LoopUntil.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Texts = std::vector<std::string>;

const UtcTime noon = std::chrono::seconds(1'777'636'800);

Host::FusedTrack trackOf(std::int32_t id, const std::string& className, bool isConfirmed) {
    Host::FusedTrack track;
    track.id = id;
    track.confirmed = isConfirmed;
    track.labels.objectClass = {className, 0.9};
    track.box = {-0.1, -0.1, 0.1, 0.1};
    return track;
}

Host::FusedFrame frameOf(std::vector<Host::FusedTrack> tracks) {
    return {12.5, 12.6, VideoObject, std::move(tracks)};
}

class TrackOutputTest : public testing::Test {
protected:
    const Host::Installation installation_ = VeskarTest::testInstallation();
    EventLoop loop_;
    Texts sent_;
    OutputSettings settings_;
};

TEST_F(TrackOutputTest, WritesLines) {
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    const Host::FusedFrame frame = frameOf({trackOf(1, "car", false)});
    output.offer(frame, noon);
    EXPECT_THAT(sent_, ElementsAre(toJsonLine(frame)));
}

TEST_F(TrackOutputTest, SaysThatAllTracksAreGone) {
    // Their ids may occur again.
    const auto saidAtTheEnd = [&](TrackFormat format) {
        settings_.format = format;
        TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
        output.offer(frameOf({trackOf(1, "car", true), trackOf(2, "bus", true)}), noon);
        sent_.clear();
        output.endTracks(noon + std::chrono::seconds(1));
        Texts said = sent_;
        output.offer(frameOf({trackOf(1, "car", true)}), noon + std::chrono::seconds(2));
        return said;
    };
    EXPECT_THAT(saidAtTheEnd(TrackFormat::JsonLines), IsEmpty());
    EXPECT_THAT(saidAtTheEnd(TrackFormat::Text), IsEmpty());
    EXPECT_THAT(saidAtTheEnd(TrackFormat::Events),
                ElementsAre(HasSubstr(R"("event":"disappeared","time":"2026-05-01T12:00:01)"),
                            HasSubstr(R"("event":"disappeared")")));
    EXPECT_THAT(sent_.at(2), HasSubstr(R"("event":"appeared")"));
    EXPECT_THAT(saidAtTheEnd(TrackFormat::OnvifJson),
                ElementsAre(testing::AllOf(HasSubstr("Delete"), Not(HasSubstr("Appearance")))));
    EXPECT_THAT(saidAtTheEnd(TrackFormat::OnvifXml), ElementsAre(HasSubstr("Delete")));
}

TEST_F(TrackOutputTest, DeletesNothingWhereNothingWas) {
    settings_.format = TrackFormat::OnvifJson;
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    output.endTracks(noon);
    EXPECT_THAT(sent_, IsEmpty());
}

TEST_F(TrackOutputTest, SendsWhatTheRateHeldBackBeforeTheEnd) {
    settings_.format = TrackFormat::Events;
    settings_.interval = 100.0;
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    output.offer(frameOf({}), noon);
    output.offer(frameOf({trackOf(1, "car", true)}), noon);
    output.endTracks(noon);
    EXPECT_THAT(sent_, testing::Contains(HasSubstr("appeared")));
    EXPECT_THAT(sent_.back(), HasSubstr("disappeared"));
}

TEST_F(TrackOutputTest, WritesTextForPeople) {
    settings_.format = TrackFormat::Text;
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    Host::FusedTrack track = trackOf(7, "human", true);
    track.ground = Host::GroundPosition{
        {12.34, -4.56}, Eigen::Matrix2d::Identity(), {0.0, 0.0}, Eigen::Matrix2d::Identity()};
    track.speed = 1.25;
    track.direction = 143.6;
    track.sensors = {{Radar, 3, 0.0}, {VideoObject, 12, 0.0}};
    output.offer(frameOf({track, trackOf(8, "unknown", false)}), noon);
    output.offer(frameOf({}), noon + std::chrono::milliseconds(250));
    EXPECT_THAT(
        sent_, ElementsAre("12:00:00.000      7  human 0.90               x 12.3 m, y -4.6 m       "
                           "1.2 m/s to 144°    radar 3, video 12\n"
                           "12:00:00.000      8  unknown 0.90             -                        "
                           "-                  - (unconfirmed)\n",
                           "12:00:00.250  no tracks\n"));
}

TEST_F(TrackOutputTest, MessagesOfBrokersHaveNoLineEnd) {
    settings_.to = BrokerTopic{"site", "tracks"};
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    const Host::FusedFrame frame = frameOf({});
    output.offer(frame, noon);
    EXPECT_THAT(sent_, ElementsAre(toJsonLine(frame).substr(0, toJsonLine(frame).size() - 1)));
}

TEST_F(TrackOutputTest, LeavesOutWhatIsNotAskedFor) {
    settings_.isConfirmedOnly = true;
    settings_.classes = {"car", "bus"};
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    Host::FusedTrack wanted = trackOf(3, "bus", true);
    wanted.tags = {"longlived"};
    output.offer(frameOf({trackOf(1, "car", false), trackOf(2, "human", true), wanted}), noon);
    wanted.tags.reset();
    EXPECT_THAT(sent_, ElementsAre(toJsonLine(frameOf({wanted}))));
}

TEST_F(TrackOutputTest, KeepsToItsRateWithTheLatestFrame) {
    settings_.interval = 1.0;
    settings_.format = TrackFormat::OnvifJson;
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    output.offer(frameOf({trackOf(1, "car", true)}), noon);
    output.offer(frameOf({trackOf(2, "car", true)}), noon + std::chrono::milliseconds(1));
    output.offer(frameOf({trackOf(3, "car", true)}), noon + std::chrono::milliseconds(2));
    EXPECT_THAT(sent_, SizeIs(1));
    EXPECT_EQ(output.replaced(), 1U);
    EXPECT_TRUE(VeskarTest::loopUntil(loop_, [&] { return sent_.size() == 2; }));
    // What was held back and replaced was never there; what was told is deleted.
    LeftOut leftOut;
    const Scene scene = SceneReader().readJson(sent_[1], leftOut);
    ASSERT_THAT(scene, SizeIs(1));
    ASSERT_THAT(scene[0].objects, SizeIs(1));
    EXPECT_EQ(scene[0].objects[0].name.id, "3");
    ASSERT_THAT(scene[0].deletes, SizeIs(1));
    EXPECT_EQ(scene[0].deletes[0].id, "1");
}

TEST_F(TrackOutputTest, WritesXml) {
    settings_.format = TrackFormat::OnvifXml;
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    output.offer(frameOf({trackOf(1, "car", true)}), noon);
    LeftOut leftOut;
    ASSERT_THAT(sent_, SizeIs(1));
    EXPECT_EQ(SceneReader().readXml(sent_[0], leftOut)[0].objects[0].name.id, "1");
}

TEST_F(TrackOutputTest, TellsEvents) {
    settings_.format = TrackFormat::Events;
    settings_.withTags = true;
    TrackOutput output(settings_, installation_, loop_, std::make_unique<KeptOutput>(sent_));
    const auto eventsOf = [&](std::vector<Host::FusedTrack> tracks) {
        sent_.clear();
        output.offer(frameOf(std::move(tracks)), noon);
        return sent_;
    };
    EXPECT_THAT(
        eventsOf({trackOf(7, "car", false)}),
        ElementsAre("{\"event\":\"appeared\",\"time\":\"2026-05-01T12:00:00.000000Z\",\"id\":7,"
                    "\"class\":\"car\",\"confirmed\":false}\n"));
    EXPECT_THAT(eventsOf({trackOf(7, "car", false)}), IsEmpty());
    EXPECT_THAT(eventsOf({trackOf(7, "car", true), trackOf(8, "bus", true)}),
                ElementsAre(HasSubstr("\"confirmed\",\"time\""), HasSubstr("\"appeared\""),
                            HasSubstr("\"confirmed\",\"time\"")));
    Host::FusedTrack tagged = trackOf(7, "car", true);
    tagged.tags = {"a", "b"};
    EXPECT_THAT(eventsOf({tagged, trackOf(8, "bus", true)}),
                ElementsAre(HasSubstr("\"tagged\",\"time\"")));
    EXPECT_THAT(sent_[0], HasSubstr("\"tags\":[\"a\",\"b\"]}"));
    EXPECT_THAT(eventsOf({tagged}),
                ElementsAre(testing::AllOf(HasSubstr("\"disappeared\""), HasSubstr("\"id\":8"),
                                           HasSubstr("\"bus\""), Not(HasSubstr("tags")))));
}

}  // namespace
}  // namespace Veskar::Live
