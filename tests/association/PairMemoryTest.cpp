// SPDX-License-Identifier: Apache-2.0
#include "association/LineTracks.h"
#include "association/PairMemory.h"
#include "support/AllocationCounter.h"
#include "support/Constants.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <random>
#include <stdexcept>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::Config;
using Veskar::PairMemory;
using Veskar::Source;

namespace {

using Tracks = PairMemory::Tracks;

/// The distance of two tracks of LineTracks.h that are this far apart in u is 1.
const double unit = std::sqrt(2.0);

std::shared_ptr<Veskar::Track> radar(int id, double distance) {
    return trackAt(distance * unit, Source::Radar, id);
}
std::shared_ptr<Veskar::Track> video(int id, double distance) {
    return trackAt(distance * unit, Source::VideoObject, id);
}

/// The weight of a step of the memory.
double weight(double interval) {
    return 1.0 - std::exp(-interval);
}

class PairMemoryTest : public testing::Test {
protected:
    const PairMemory::Pair& pair(int radarId, int videoId) {
        const PairMemory::Pair* found = memory.find(radarId, videoId);
        if (found == nullptr) {
            throw std::runtime_error("the pair is not known");
        }
        return *found;
    }

    Config::Rules rules;
    PairMemory memory{rules};
};

TEST_F(PairMemoryTest, BeginsAtTheLimitAsIfAFrameHadPassed) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.5)});
    EXPECT_NEAR(pair(1, 7).squaredDistance, 1.5 + weight(0.1) * (0.25 - 1.5), 1e-12);
    EXPECT_EQ(pair(1, 7).rivals, 0.0);
    EXPECT_EQ(pair(1, 7).time, 10.0);
    EXPECT_EQ(memory.find(7, 1), nullptr) << "the radar track's id comes first";
}

TEST_F(PairMemoryTest, FollowsTheDistanceByTheTimeThatHasPassed) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.0)});
    const double first = pair(1, 7).squaredDistance;
    memory.update(10.3, {radar(1, 0.0)}, {video(7, 3.0)});
    EXPECT_NEAR(pair(1, 7).squaredDistance, first + weight(0.3) * (9.0 - first), 1e-12);
}

TEST_F(PairMemoryTest, TakesTheTimeConstantFromTheSettings) {
    rules.pairMemoryTime = 0.5;
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.0)});
    EXPECT_NEAR(pair(1, 7).squaredDistance, 1.5 * (1.0 - weight(0.2)), 1e-12);
}

TEST_F(PairMemoryTest, CountsNoFrameThatIsLate) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.0)});
    const double first = pair(1, 7).squaredDistance;
    memory.update(9.9, {radar(1, 0.0)}, {video(7, 3.0)});
    EXPECT_EQ(pair(1, 7).squaredDistance, first);
    EXPECT_EQ(pair(1, 7).time, 10.0);
}

TEST_F(PairMemoryTest, KnowsNoPairThatWasNeverNear) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 4.0)});
    EXPECT_EQ(memory.find(1, 7), nullptr);
    memory.update(10.1, {radar(1, 0.0)}, {video(7, 3.99)});
    EXPECT_NE(memory.find(1, 7), nullptr);
}

TEST_F(PairMemoryTest, CountsAPairThatHasPartedAsJustFar) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.0)});
    const double first = pair(1, 7).squaredDistance;
    memory.update(10.1, {radar(1, 0.0)}, {video(7, 5.0)});
    EXPECT_NEAR(pair(1, 7).squaredDistance, first + weight(0.1) * (16.0 - first), 1e-12);
}

TEST_F(PairMemoryTest, DoesNotCompareATrackThatIsNotANumber) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.0)});
    const double first = pair(1, 7).squaredDistance;
    memory.update(10.1, {radar(1, VeskarTest::nan)}, {video(7, 0.0)});
    EXPECT_EQ(pair(1, 7).squaredDistance, first);
    EXPECT_EQ(pair(1, 7).time, 10.0);
}

TEST_F(PairMemoryTest, LeavesOutATrackThatIsNotANumberAlone) {
    memory.update(10.0, {radar(1, 0.0)},
                  {video(5, 9.0), video(6, VeskarTest::nan), video(7, 0.0), video(8, 9.0)});
    EXPECT_EQ(memory.find(1, 6), nullptr);
    EXPECT_NE(memory.find(1, 7), nullptr);
}

TEST_F(PairMemoryTest, LeavesOutTracksThatCoast) {
    const auto lost = radar(1, 0.0);
    lost->coastingTime = 0.151;
    memory.update(10.0, {lost}, {video(7, 0.0)});
    EXPECT_EQ(memory.find(1, 7), nullptr);
    lost->coastingTime = 0.15;
    memory.update(10.0, {lost}, {video(7, 0.0)});
    EXPECT_NE(memory.find(1, 7), nullptr);
}

TEST_F(PairMemoryTest, KeepsAPairForASecondWithoutAComparison) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.0)});
    memory.update(11.0, {}, {});
    EXPECT_NE(memory.find(1, 7), nullptr);
    memory.update(11.01, {}, {});
    EXPECT_EQ(memory.find(1, 7), nullptr);
}

TEST_F(PairMemoryTest, BeginsAnewWithAPairThatItHasForgotten) {
    for (int frame = 0; frame < 20; ++frame) {
        memory.update(10.0 + 0.1 * frame, {radar(1, 0.0)}, {video(7, 0.0)});
    }
    memory.update(13.0, {radar(1, 0.0)}, {video(7, 0.0)});
    EXPECT_NEAR(pair(1, 7).squaredDistance, 1.5 * (1.0 - weight(0.1)), 1e-12);
}

TEST_F(PairMemoryTest, ForgetsWhenCleared) {
    memory.update(10.0, {radar(1, 0.0)}, {video(7, 0.0)});
    memory.clear();
    EXPECT_EQ(memory.find(1, 7), nullptr);
}

TEST_F(PairMemoryTest, CountsRivalsOfBothTracks) {
    // Near radar 1 are video 7 and 8, near video 7 are radar 1, 2 and 3.
    memory.update(10.0, {radar(1, 0.0), radar(2, 0.5), radar(3, 1.0)},
                  {video(7, 0.2), video(8, -1.9)});
    EXPECT_NEAR(pair(1, 7).rivals, weight(0.1) * 3.0, 1e-12);
    EXPECT_NEAR(pair(1, 8).rivals, weight(0.1) * 1.0, 1e-12);
    // Farther than 2 it is no rival of others, but they are rivals of it.
    EXPECT_NEAR(pair(2, 8).rivals, weight(0.1) * 2.0, 1e-12);
}

TEST_F(PairMemoryTest, CountsNoMoreThanFourRivals) {
    memory.update(
        10.0, {radar(1, 0.0)},
        {video(1, 0.1), video(2, 0.2), video(3, 0.3), video(4, 0.4), video(5, 0.5), video(6, 0.6)});
    EXPECT_NEAR(pair(1, 1).rivals, weight(0.1) * 4.0, 1e-12);
}

TEST_F(PairMemoryTest, SeesDisagreementInACrowdOnly) {
    EXPECT_TRUE(memory.disagrees({1, 7, 1.501, 0.501, 10.0}));
    EXPECT_FALSE(memory.disagrees({1, 7, 1.5, 0.501, 10.0}));
    EXPECT_FALSE(memory.disagrees({1, 7, 1.501, 0.5, 10.0}));
}

TEST_F(PairMemoryTest, CountsTheLastOfSeveralTracksWithOneId) {
    memory.update(10.0, {radar(2, 9.0), radar(1, 1.0), radar(1, 0.0)}, {video(7, 0.0)});
    EXPECT_NEAR(pair(1, 7).squaredDistance, 1.5 * (1.0 - weight(0.1)), 1e-12);
    EXPECT_EQ(pair(1, 7).rivals, 0.0);
}

/// All pairs compared with each other, in a map.
class LiteralMemory {
public:
    void update(double time, const Tracks& radars, const Tracks& videos) {
        for (const auto& radar : radars) {
            for (const auto& video : videos) {
                const double x = std::min(squared(*radar, *video), 16.0);
                const std::pair<int, int> ids(radar->id, video->id);
                if (pairs.count(ids) == 0) {
                    if (x == 16.0) {
                        continue;
                    }
                    pairs[ids] = {1.5, 0.0, time - 0.1};
                }
                int rivals = 0;
                for (const auto& other : videos) {
                    rivals += other != video && squared(*radar, *other) < 4.0 ? 1 : 0;
                }
                for (const auto& other : radars) {
                    rivals += other != radar && squared(*other, *video) < 4.0 ? 1 : 0;
                }
                auto& [m, n, last] = pairs[ids];
                const double w = weight(std::min(time - last, 1.0));
                m += w * (x - m);
                n += w * (std::min(rivals, 4) - n);
                last = time;
            }
        }
    }

    std::map<std::pair<int, int>, std::array<double, 3>> pairs;

private:
    static double squared(const Veskar::Track& a, const Veskar::Track& b) {
        const double distance = a.positionStatisticalDistance(b);
        return distance * distance;
    }
};

TEST_F(PairMemoryTest, AgreesWithComparingAllPairs) {
    std::mt19937 random(3);
    std::normal_distribution<double> step(0.0, 0.2);
    std::uniform_real_distribution<double> place(0.0, 12.0);
    std::vector<double> at(16);
    std::generate(at.begin(), at.end(), [&] { return place(random); });
    LiteralMemory literal;
    double time = 10.0;
    std::size_t compared = 0;
    for (int frame = 0; frame < 200; ++frame) {
        time += frame % 7 == 0 ? 0.3 : 0.1;
        Tracks radars;
        Tracks videos;
        for (std::size_t i = 0; i < at.size(); ++i) {
            at[i] += step(random);
            // In no order, since nobody promises one.
            const int id = static_cast<int>(i * 5 % 16);
            (i % 2 == 0 ? radars : videos)
                .push_back(i % 2 == 0 ? radar(id, at[i]) : video(id, at[i]));
        }
        memory.update(time, radars, videos);
        literal.update(time, radars, videos);
        for (const auto& [ids, expected] : literal.pairs) {
            // A pair far beyond is not compared any more; its means do not matter then.
            const PairMemory::Pair* found = memory.find(ids.first, ids.second);
            if (found != nullptr && found->time == time && expected[0] < 8.0 &&
                found->squaredDistance < 8.0) {
                EXPECT_NEAR(found->squaredDistance, expected[0], 1e-9);
                EXPECT_NEAR(found->rivals, expected[1], 1e-9);
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 1000U);
}

TEST_F(PairMemoryTest, DoesNotAllocateOnceWarm) {
    Tracks radars;
    Tracks videos;
    for (int id = 0; id < 50; ++id) {
        radars.push_back(radar(id, 0.5 * id));
        videos.push_back(video(id, 0.5 * id + 0.1));
    }
    memory.update(10.0, radars, videos);
    memory.update(10.1, radars, videos);
    std::reverse(videos.begin(), videos.end());
    const AllocationScope scope;
    memory.update(10.2, radars, videos);
    EXPECT_EQ(scope.count(), 0U);
}

}  // namespace
