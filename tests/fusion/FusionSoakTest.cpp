// SPDX-License-Identifier: Apache-2.0
// Simulates months of operation within a minute: nothing may accumulate.
#include "fusion/FusionFixture.h"
#include "support/AllocationCounter.h"
#include "support/Constants.h"
#include "support/RandomEstimates.h"
#include "support/SyslogCapture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <set>
#include <string>

namespace VeskarTest {
namespace {

using Veskar::Radar;
using Veskar::Source;
using Veskar::VideoObject;

// A million frames where the code runs at full speed; sanitizers, emulators and builds without
// optimisation take at least ten times as long per frame. VESKAR_SOAK_FRAMES overrides both.
#if !defined(__OPTIMIZE__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || \
    defined(VESKAR_EMULATED)
constexpr int usualFrames = 50'000;
#else
constexpr int usualFrames = 1'000'000;
#endif

int frameCount() {
    const char* const wanted = std::getenv("VESKAR_SOAK_FRAMES");
    return wanted == nullptr ? usualFrames : std::atoi(wanted);
}

/// Up to six objects appear, move and disappear. Both sensors see them ten times a second, lose
/// them, and renumber them from a small set, so that ids recur. Clocks jump, sensors fall silent,
/// radar time runs ahead, and sometimes a report or a time stamp is invalid.
class FusionSoak : public FusionTest {
protected:
    struct Object {
        double u = 0.0;
        double velocity = 0.0;
        int videoId = 0;
        int radarId = 0;
    };

    bool chance(double probability) { return random.uniform(0.0, 1.0) < probability; }
    int anyId() { return random.integer(1, 30); }

    void changeObjects() {
        for (Object& object : objects) {
            object.u += 0.05 * object.velocity;
            if (chance(0.005)) {
                object.videoId = anyId();
            }
            if (chance(0.005)) {
                object.radarId = anyId();
            }
        }
        if (objects.size() < 6 && chance(0.02)) {
            objects.push_back(
                {random.uniform(-3.0, 3.0), random.uniform(-0.3, 0.3), anyId(), anyId()});
        }
        if (!objects.empty() && chance(0.02)) {
            objects.erase(objects.begin() +
                          random.integer(0, static_cast<int>(objects.size()) - 1));
        }
    }

    /// Advances time, mostly by a twentieth of a second; stamps may differ from it by an offset.
    void advance() {
        clock += chance(0.001) ? random.uniform(0.5, 100.0) : 0.05;
        setClock(clock);
        if (chance(0.0005)) {  // far enough for a new time base
            offset += (chance(0.5) ? 1.0 : -1.0) * random.uniform(3700.0, 1e6);
        } else if (chance(0.0005)) {
            offset += random.uniform(-5.0, 60.0);
        }
        for (int& silence : silences) {
            silence = silence > 0 ? silence - 1 : (chance(0.0005) ? random.integer(10, 2000) : 0);
        }
    }

    Tracks look(Source source, double time) {
        Tracks tracks;
        for (const Object& object : objects) {
            if (chance(0.1)) {
                continue;
            }
            const Seen seen{object.u + random.uniform(-0.1, 0.1), object.velocity,
                            random.uniform(0.5, 3.0), chance(0.1) ? "car" : "human"};
            tracks.push_back(source == VideoObject ? video(object.videoId, time, seen)
                                                   : radar(object.radarId, time, seen));
            if (chance(0.005)) {
                spoil(*tracks.back());
            }
        }
        return tracks;
    }

    void spoil(Veskar::Track& track) {
        switch (random.integer(0, 5)) {
            case 0:
                track.state[random.integer(0, 5)] = nan;
                break;
            case 1:
                track.time += random.uniform(-1e6, 1e6);
                break;
            case 2:
                track.coastingTime = -random.uniform(0.0, 1e6);
                break;
            case 3:
                track.probability = chance(0.5) ? nan : -1.0;
                break;
            case 4:
                track.covariance.setZero();
                break;
            default:
                track.covariance.setConstant(0.5);
                break;
        }
    }

    void showFrame(int number) {
        const Source source = number % 2 == 0 ? VideoObject : Radar;
        changeObjects();
        advance();
        if (silences[number % 2] > 0) {
            return;
        }
        double time = clock + offset;
        if (source == Radar) {
            time += random.uniform(-0.05, 0.15);
        }
        if (chance(0.0005)) {
            time += random.uniform(-1e9, 1e9);
        }
        module().cycle(source, time, look(source, time));
    }

    /// Half a minute without objects: all tracks are deleted, even those that live longer after a
    /// clock was set back, and no radar frame is held back any more.
    void fallQuiet() {
        for (int i = 0; i < 60; ++i) {
            clock += 0.5;
            setClock(clock);
            module().cycle(i % 2 == 0 ? VideoObject : Radar, clock + offset, {});
        }
    }

    void expectSoundTracks() {
        std::set<int> ids;
        for (const auto& track : module().systemTracks) {
            EXPECT_TRUE(ids.insert(track->id).second) << track->id << " twice";
            EXPECT_TRUE(track->state.allFinite() && track->covariance.allFinite()) << track->id;
            EXPECT_TRUE(std::isfinite(track->getTrackProbability())) << track->id;
        }
    }

    RandomEstimates random{7};
    std::vector<Object> objects;
    double clock = 1000.0;
    double offset = 0.0;
    int silences[2] = {0, 0};  ///< number of next frames that video and radar omit
};

TEST_F(FusionSoak, LeavesNothingBehind) {
    constexpr int rest = 2'000;        // frames between two pauses
    constexpr int warmUp = 10 * rest;  // until everything bounded has reached its limit
    const int frames = frameCount();
    std::size_t mostTracks = 0;
    std::int64_t allTracks = 0;
    std::int64_t blocks = 0;
    std::int64_t bytes = 0;
    std::size_t lines = 0;
    for (int frame = 0; frame < frames && !HasFailure(); ++frame) {
        {
            const SyslogCapture log;
            showFrame(frame);
            lines += log.lines().size();
        }
        mostTracks = std::max(mostTracks, module().systemTracks.size());
        allTracks += static_cast<std::int64_t>(module().systemTracks.size());
        if (frame % 50 == 0) {
            expectSoundTracks();
        }
        if (frame % rest == rest - 1) {
            const SyslogCapture log;
            fallQuiet();
            EXPECT_TRUE(module().systemTracks.empty()) << "frame " << frame;
            if (frame < warmUp) {
                blocks = std::max(blocks, liveAllocations());
                bytes = std::max(bytes, liveBytes());
            } else {
                EXPECT_LE(liveAllocations(), blocks + 16) << "frame " << frame;
                EXPECT_LE(liveBytes(), bytes + 16'384) << "frame " << frame;
            }
        }
    }
    EXPECT_GT(allTracks, 2 * frames) << "of more than two objects on average";
    EXPECT_LT(mostTracks, 200U);
    EXPECT_GT(mostTracks, 6U);
    EXPECT_GT(lines, static_cast<std::size_t>(frames) / 100) << "something was left out";
    RecordProperty("frames", frames);
    RecordProperty("tracks_per_frame", std::to_string(static_cast<double>(allTracks) / frames));
    RecordProperty("lines", static_cast<int>(lines));
    RecordProperty("most_tracks", static_cast<int>(mostTracks));
    RecordProperty("blocks", static_cast<int>(blocks));
    RecordProperty("bytes", static_cast<int>(bytes));
}

}  // namespace
}  // namespace VeskarTest
