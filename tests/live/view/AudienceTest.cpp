// SPDX-License-Identifier: Apache-2.0
#include "live/view/Audience.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Subject, IsAKindAndANumber) {
    EXPECT_EQ(Subject::parse("system:12"), (Subject{{}, 12}));
    EXPECT_EQ(Subject::parse("video:3"), (Subject{VideoObject, 3}));
    EXPECT_EQ(Subject::parse("radar:-4"), (Subject{Radar, -4}));
    for (const char* text : {"", "12", "system", "system:", "system:1x", "system: 1", "truth:1",
                             "system:99999999999", ":1"}) {
        EXPECT_FALSE(Subject::parse(text)) << text;
    }
}

TEST(Subject, KnowsTheDecisionsAboutIt) {
    const Subject system{{}, 12};
    EXPECT_TRUE(system.isAmong(12, Radar, 3));
    EXPECT_FALSE(system.isAmong(3, Radar, 12));
    const Subject radar{Radar, 3};
    EXPECT_TRUE(radar.isAmong(12, Radar, 3));
    EXPECT_FALSE(radar.isAmong(12, VideoObject, 3));
    EXPECT_FALSE(radar.isAmong(3, Radar, 12));
}

TEST(Audience, CountsViewersAndTellsEachSelectedTrackOnce) {
    Audience audience;
    EXPECT_FALSE(audience.isThere());
    audience.add(std::nullopt);
    EXPECT_TRUE(audience.isThere());
    const std::uint64_t before = audience.version();
    const Subject subject{{}, 12};
    audience.add(subject);
    audience.add(subject);
    audience.add(Subject{Radar, 3});
    EXPECT_NE(audience.version(), before);
    EXPECT_THAT(audience.subjects(), ElementsAre(subject, Subject{Radar, 3}));
    audience.remove(subject);
    EXPECT_THAT(audience.subjects(), ElementsAre(subject, Subject{Radar, 3}));
    audience.remove(subject);
    audience.remove(Subject{Radar, 3});
    EXPECT_THAT(audience.subjects(), IsEmpty());
    EXPECT_EQ(audience.size(), 1U);
}

}  // namespace
}  // namespace Veskar::Live
