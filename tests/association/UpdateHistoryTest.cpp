// SPDX-License-Identifier: Apache-2.0
#include "association/UpdateHistory.h"
#include "support/TrackFactory.h"

#include <algorithm>
#include <deque>
#include <random>
#include <set>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::Source;
using Veskar::UpdateHistory;

namespace {

using Tracks = std::vector<std::shared_ptr<Veskar::Track>>;

std::shared_ptr<Veskar::Track> track(int id, double coastingTime = 0.0) {
    auto made = makeTrack(Source::Radar, id);
    made->coastingTime = coastingTime;
    return made;
}

TEST(UpdateHistory, KnowsNothingAtFirst) {
    EXPECT_TRUE(UpdateHistory().areExclusive(Source::Radar, 1, 2));
}

TEST(UpdateHistory, TellsTracksThatWereUpdatedInOneFrame) {
    UpdateHistory history;
    history.add(Source::Radar, {track(2), track(1)});
    history.add(Source::Radar, {track(3)});
    EXPECT_FALSE(history.areExclusive(Source::Radar, 1, 2));
    EXPECT_TRUE(history.areExclusive(Source::Radar, 1, 3));
    EXPECT_TRUE(history.areExclusive(Source::Radar, 3, 2));
}

TEST(UpdateHistory, TakesACoastingReportForNone) {
    UpdateHistory history;
    history.add(Source::Radar, {track(1), track(2, 0.011)});
    EXPECT_TRUE(history.areExclusive(Source::Radar, 1, 2));
    history.add(Source::Radar, {track(1), track(2, 0.01)});
    EXPECT_FALSE(history.areExclusive(Source::Radar, 1, 2)) << "stamps are rounded";
}

TEST(UpdateHistory, RemembersThirtyTwoFrames) {
    UpdateHistory history;
    history.add(Source::Radar, {track(1), track(2)});
    for (int frame = 1; frame < 32; ++frame) {
        history.add(Source::Radar, {});
    }
    EXPECT_FALSE(history.areExclusive(Source::Radar, 1, 2));
    history.add(Source::Radar, {});
    EXPECT_TRUE(history.areExclusive(Source::Radar, 1, 2));
}

TEST(UpdateHistory, KeepsTheSensorsApart) {
    UpdateHistory history;
    history.add(Source::Radar, {track(1), track(2)});
    history.add(Source::VideoObject, {track(2), track(3)});
    EXPECT_TRUE(history.areExclusive(Source::VideoObject, 1, 2));
    EXPECT_FALSE(history.areExclusive(Source::VideoObject, 2, 3));
    for (int frame = 0; frame < 40; ++frame) {
        history.add(Source::VideoObject, {});
    }
    EXPECT_FALSE(history.areExclusive(Source::Radar, 1, 2)) << "frames of another sensor";
}

TEST(UpdateHistory, IgnoresOtherSources) {
    UpdateHistory history;
    history.add(Source::VideoVura, {track(1), track(2)});
    EXPECT_TRUE(history.areExclusive(Source::VideoObject, 1, 2));
}

TEST(UpdateHistory, ForgetsWhenCleared) {
    UpdateHistory history;
    history.add(Source::Radar, {track(1), track(2)});
    history.clear();
    EXPECT_TRUE(history.areExclusive(Source::Radar, 1, 2));
}

/// Against the frames themselves.
TEST(UpdateHistory, AgreesWithTheListOfFrames) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> id(0, 9);
    UpdateHistory history;
    std::deque<std::set<int>> frames;
    for (int frame = 0; frame < 500; ++frame) {
        Tracks reports;
        std::set<int> updated;
        for (int count = id(random) / 3; count > 0; --count) {
            const bool coasts = id(random) < 3;
            reports.push_back(track(id(random), coasts ? 0.1 : 0.0));
            if (!coasts) {
                updated.insert(reports.back()->id);
            }
        }
        history.add(Source::Radar, reports);
        frames.push_front(updated);
        if (frames.size() > 32) {
            frames.pop_back();
        }
        for (int a = 0; a < 10; ++a) {
            for (int b = 0; b < 10; ++b) {
                const bool areTogether = std::any_of(
                    frames.begin(), frames.end(),
                    [&](const std::set<int>& f) { return f.count(a) != 0 && f.count(b) != 0; });
                ASSERT_EQ(history.areExclusive(Source::Radar, a, b), !areTogether)
                    << frame << ": " << a << ", " << b;
            }
        }
    }
}

}  // namespace
