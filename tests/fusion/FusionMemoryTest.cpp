// SPDX-License-Identifier: Apache-2.0
// For devices that never restart: memory that does not grow, and few allocations.
#include "fusion/FusionFixture.h"
#include "support/AllocationCounter.h"

#include <algorithm>

namespace VeskarTest {
namespace {

using Veskar::Radar;
using Veskar::VideoObject;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int longRun = 100'000;  // instrumented code is about ten times slower
#else
constexpr int longRun = 1'000'000;
#endif

class FusionMemory : public FusionTest {};

TEST_F(FusionMemory, StaysBoundedOverAMillionFramesWithChurningIds) {
    constexpr int warmUp = 20'000;
    std::int64_t bound = 0;
    for (int frame = 0; frame < longRun; ++frame) {
        const double time = 10.0 + 0.05 * frame;
        const bool isVideo = frame % 2 == 0;
        setClock(time);
        Tracks tracks;
        if (frame % 6 < 2) {  // one object, both sensors, always a new id
            tracks.push_back(isVideo ? video(frame, time) : radar(frame, time));
        }
        // Radar time is ahead, so that its frames are held back for video.
        module().cycle(isVideo ? VideoObject : Radar, isVideo ? time : time + 0.2, tracks);
        module().trackedOdHasMotion(frame, 0.0, 0.0);
        if (frame < warmUp) {
            bound = std::max(bound, liveAllocations());
        } else if (frame % 1000 < 8) {
            ASSERT_LE(liveAllocations(), bound + 16) << "frame " << frame;
        }
    }
    EXPECT_FALSE(module().systemTracks.empty());
}

TEST_F(FusionMemory, AllocatesInASteadyStateNoMoreThanTheFramesLists) {
    constexpr int objects = 64;
    for (const int variant : {0, 1, 2, 3}) {
        restart();
        config.module.useJVA = variant % 2 != 0;
        config.rules = variant < 2 ? Veskar::Config::Rules() : Veskar::Config::defaults().rules;
        const auto frame = [&](auto make, double time) {
            Tracks tracks;
            for (int id = 1; id <= objects; ++id) {
                tracks.push_back(make(id, time, Seen{1.0 * id}));
            }
            return tracks;
        };
        for (int i = 0; i < 10; ++i) {
            const double time = 10.0 + 0.1 * i;
            const Tracks videoTracks = frame(&video, time);
            const Tracks radarTracks = frame(&radar, time);
            const AllocationScope allocations;
            showVideo(time, videoTracks);
            showRadar(time, radarTracks);
            if (i >= 5) {
                EXPECT_LE(allocations.count(), 4U) << "two frames of 64 reports, " << variant;
            }
        }
        EXPECT_EQ(module().systemTracks.size(), static_cast<std::size_t>(objects));
    }
}

}  // namespace
}  // namespace VeskarTest
