// SPDX-License-Identifier: Apache-2.0
// Invalid input: times that jump, numbers that are not finite, and far too many tracks.
#include "fusion/FusionFixture.h"
#include "support/Constants.h"
#include "support/SyslogCapture.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <stdexcept>

namespace VeskarTest {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Gt;
using testing::IsEmpty;
using testing::Le;
using Veskar::Radar;
using Veskar::Source;
using Veskar::VideoObject;

constexpr double notFinite[] = {nan, infinite, -infinite};

// --- Times

class FusionTimes : public FusionTest {};

TEST_F(FusionTimes, IgnoresFramesWhoseTimeIsNotFinite) {
    makeFusedTrack();
    showRadar(10.5, {radar(9, 10.5, {2.0})});  // is held back
    setClock(1000.0);
    const SyslogCapture log;
    for (const double time : notFinite) {
        showVideo(time, {video(1, time, {0.1})});
        showRadar(time, {radar(1, time, {0.1})});
    }
    EXPECT_THAT(log.errors(),
                testing::ElementsAreArray(std::vector<std::string>(
                    6, "FusionModule: Ignored a frame with a time stamp that is not finite\n")));
    EXPECT_EQ(systemTrack(0).time, 10.0);
    EXPECT_EQ(systemTrack(0).state[0], 0.0);
    EXPECT_THAT(systemIds(), ElementsAre(1)) << "the waiting frame still waits";
}

TEST_F(FusionTimes, DoNotTellAFrameOfAnotherSensorThatItIsIgnored) {
    const SyslogCapture log;
    module().cycle(Veskar::VideoVura, nan, {});
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(FusionTimes, LeaveVideoTimeWhenTheyAreNotFinite) {
    showVideo(10.0, {});
    {
        const SyslogCapture log;
        showVideo(infinite, {});
    }
    showRadar(10.2, {radar(1, 10.2)});
    EXPECT_THAT(systemIds(), IsEmpty());
}

/// Whatever times both sensors have sent, later frames with plausible times fuse a new object.
class FusionOddTimes : public FusionTimes, public testing::WithParamInterface<double> {};

TEST_P(FusionOddTimes, PassAway) {
    const SyslogCapture log;
    makeFusedTrack();
    const double odd = GetParam();
    for (int i = 0; i < 3; ++i) {
        showRadar(odd, {radar(1, odd), radar(2, odd, {2.0})});
        showVideo(odd, {video(1, odd), video(2, odd, {2.0})});
    }
    for (const double time : {11.0, 11.1, 11.2}) {
        showVideo(time, {video(1, time), video(7, time, {-2.0})});
        showRadar(time, {radar(1, time), radar(7, time, {-2.0})});
    }
    const auto isTheObject = [](const std::shared_ptr<Veskar::SystemTrack>& track) {
        return track->getSensorTracks(VideoObject).count(7) == 1 &&
               track->getSensorTracks(Radar).count(7) == 1;
    };
    const auto& tracks = module().systemTracks;
    ASSERT_EQ(std::count_if(tracks.begin(), tracks.end(), isTheObject), 1);
    const auto& object = *std::find_if(tracks.begin(), tracks.end(), isTheObject);
    EXPECT_NEAR(object->state[0], -2.0, 1e-6);
    EXPECT_NEAR(object->covariance(0, 0), usualVariance / 2.0, 1e-6);
    EXPECT_EQ(object->time, 11.2);
}

INSTANTIATE_TEST_SUITE_P(Times, FusionOddTimes,
                         testing::Values(10.0, 9.0, 0.0, -50.0, 1e12, -1e12, nan, infinite));

TEST_F(FusionTimes, MayLeaveNoMarkInTheCalibrationsNanoseconds) {
    // Far outside 64-bit nanoseconds; the sanitizers check the conversion.
    for (const double time : {1e12, -1e12, 1e300, nan}) {
        module().handleAutocalibration(Radar, time);
    }
    EXPECT_THAT(systemIds(), IsEmpty());
}

// --- Numbers

class FusionNumbers : public FusionTest {
protected:
    /// Runs a scene of two objects; in its last frames a sensor sends other tracks beside the good
    /// ones, or nothing.
    Outcome run(Source source, const Tracks& added) {
        restart();
        makeFusedTrack();
        showVideo(10.1, {video(1, 10.1), video(2, 10.1, {1.0})});
        const auto good = source == VideoObject ? video(2, 10.15, {1.02}) : radar(2, 10.15, {1.02});
        Tracks frame = added;
        frame.insert(frame.begin() + static_cast<std::ptrdiff_t>(added.size() / 2), good);
        module().cycle(source, 10.15, frame);
        showVideo(10.3, {video(2, 10.3, {1.03})});
        return outcome();
    }

    static std::shared_ptr<Veskar::Track> make(Source source, int id) {
        return source == VideoObject ? video(id, 10.15) : radar(id, 10.15);
    }
};

TEST_F(FusionNumbers, StayOutsideWhereverTheyAreNotFinite) {
    for (const Source source : {VideoObject, Radar}) {
        const Outcome expected = run(source, {});
        ASSERT_EQ(module().systemTracks.size(), 2U);
        for (const double bad : notFinite) {
            for (int component = 0; component < 6 + 36; ++component) {
                // One held by a system track and one that would be new.
                const auto held = make(source, 1);
                const auto fresh = make(source, 5);
                for (const auto& track : {held, fresh}) {
                    (component < 6 ? track->state.data()[component]
                                   : track->covariance.data()[component - 6]) = bad;
                }
                const SyslogCapture log;
                EXPECT_EQ(run(source, {held, fresh}), expected) << component << " " << bad;
                EXPECT_THAT(log.errors(),
                            ElementsAre("FusionModule: Left out 2 tracks that are not finite\n"));
            }
        }
    }
}

TEST_F(FusionNumbers, AreLookedAtWhenAFrameArrivesNotWhenItIsFused) {
    const auto bad = radar(1, 4.5);
    bad->state[3] = nan;
    const SyslogCapture log;
    showRadar(4.5, {bad, radar(2, 4.5)});
    EXPECT_THAT(systemIds(), IsEmpty());
    EXPECT_THAT(log.errors(), ElementsAre("FusionModule: Left out 1 tracks that are not finite\n"));
    setClock(6.1);
    showRadar(100.0, {});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(2));
    EXPECT_EQ(log.errors().size(), 1U);
}

TEST_F(FusionNumbers, LeaveAnEmptyFrameWhenNoneIsFinite) {
    showVideo(10.0, {video(1, 10.0)});
    const auto bad = video(1, 10.1);
    bad->covariance(2, 2) = infinite;
    const SyslogCapture log;
    showVideo(10.1, {bad});
    EXPECT_NEAR(systemTrack(0).getSensorTracks(VideoObject).at(1)->coastingTime, 0.1, 1e-12);
    EXPECT_EQ(bad.use_count(), 1) << "it is not among the last sensor tracks either";
}

// --- Crowds

constexpr char tooBig[] = "One of the JVA costMatrix dimensions was too big (>512)";

class FusionCrowd : public FusionTest {
protected:
    /// Objects far from each other and from u = 0.
    static Tracks crowd(Source source, int count, double time) {
        Tracks tracks;
        for (int i = 0; i < count; ++i) {
            const Seen seen{10.0 + i};
            tracks.push_back(source == VideoObject ? video(1000 + i, time, seen)
                                                   : radar(1000 + i, time, seen));
        }
        return tracks;
    }

    void expectTooBig(const std::function<void()>& frame) {
        try {
            frame();
            ADD_FAILURE() << "no error";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), tooBig);
        }
    }

    /// @return whether the error was thrown
    bool isTooBig(const std::function<void()>& frame) {
        try {
            frame();
            return false;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), tooBig);
            return true;
        }
    }
};

TEST_F(FusionCrowd, OfFiveHundredAndTwelveIsNotTooBig) {
    makeFusedTrack();
    showVideo(10.0, crowd(VideoObject, 512, 10.0));
    EXPECT_EQ(module().systemTracks.size(), 513U);
    restart();
    makeFusedTrack();
    expectTooBig([&] { showVideo(10.0, crowd(VideoObject, 513, 10.0)); });
}

TEST_F(FusionCrowd, DoesNotMatterToGreedyAssignment) {
    config.module.useJVA = false;
    makeFusedTrack();
    showVideo(10.0, crowd(VideoObject, 600, 10.0));
    showVideo(10.1, crowd(VideoObject, 600, 10.1));
    EXPECT_EQ(module().systemTracks.size(), 601U);
}

TEST_F(FusionCrowd, StillContinuesAndManagesWhatIsThere) {
    makeFusedTrack();
    Tracks frame = crowd(VideoObject, 600, 10.2);
    const auto report = video(1, 10.2, {0.1});
    frame.push_back(report);
    const std::weak_ptr<Veskar::Track> stored = frame.front();
    expectTooBig([&] { showVideo(10.2, frame); });
    frame.clear();

    ASSERT_THAT(systemIds(), ElementsAre(1)) << "no new system tracks";
    EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(1), report);
    EXPECT_FALSE(stored.expired()) << "the frame is remembered as the last one of its source";
    EXPECT_FALSE(isTooBig([&] { showVideo(10.2, {video(1, 10.2, {0.1})}); }));
    EXPECT_TRUE(stored.expired());
}

TEST_F(FusionCrowd, LetsCoastingTracksDie) {
    makeFusedTrack();
    expectTooBig([&] { showVideo(10.5, crowd(VideoObject, 600, 10.5)); });
    EXPECT_THAT(systemIds(), IsEmpty());
}

TEST_F(FusionCrowd, ConfirmsInAFailingFrame) {
    makeFusedTrack();
    ASSERT_FALSE(systemTrack(0).isConfirmed);
    Tracks frame = crowd(VideoObject, 600, 10.2);
    frame.push_back(video(1, 10.2, {0.0, 0.0, 100.0}));
    expectTooBig([&] { showVideo(10.2, frame); });
    EXPECT_TRUE(systemTrack(0).isConfirmed);
}

TEST_F(FusionCrowd, LeavesTheProbabilityStepOfTheUntouchedOut) {
    fuseRadar(10.0, {radar(1, 10.0)});
    fuseRadar(10.1, {radar(1, 10.1)});
    const std::vector<double> before = systemTrack(0).trackProbabilityHistory;
    expectTooBig([&] { showVideo(10.2, crowd(VideoObject, 600, 10.2)); });
    EXPECT_EQ(systemTrack(0).trackProbabilityHistory, before);
}

TEST_F(FusionCrowd, StillAdvancesVideoTime) {
    makeFusedTrack();
    expectTooBig([&] { showVideo(20.0, crowd(VideoObject, 600, 20.0)); });
    showRadar(20.05, {radar(5, 20.05)});
    ASSERT_EQ(module().systemTracks.size(), 1U);
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(5));
}

TEST_F(FusionCrowd, OfRadarLeavesTheQueueAndTheOthersInIt) {
    makeFusedTrack();
    showRadar(10.2, crowd(Radar, 600, 10.2));
    showRadar(10.25, {radar(5, 10.25, {3.0})});
    ASSERT_THAT(systemIds(), ElementsAre(1)) << "both wait";
    showVideo(10.3, {video(1, 10.3)});
    expectTooBig([&] { showRadar(10.3, {radar(1, 10.3)}); });
    EXPECT_THAT(systemIds(), ElementsAre(1)) << "the others still wait";
    showRadar(10.35, {});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2)) << "the crowd is not tried again";
    EXPECT_THAT(heldIds(1, Radar), ElementsAre(5));
}

TEST_F(FusionCrowd, LeavesNoEmptyFrameInTheQueue) {
    showVideo(10.0, {video(1, 10.0)});
    showVideo(10.1, {video(1, 10.1, {0.0, 0.0, 5.0})});
    expectTooBig([&] { showRadar(10.1, crowd(Radar, 600, 10.1)); });
    const std::vector<double> before = systemTrack(0).trackProbabilityHistory;
    showRadar(99.0, {});  // is held back
    EXPECT_EQ(systemTrack(0).trackProbabilityHistory, before) << "no radar frame was fused";
}

TEST_F(FusionCrowd, PassesAwayWithoutHelp) {
    showVideo(10.0, crowd(VideoObject, 600, 10.0));
    ASSERT_EQ(module().systemTracks.size(), 600U) << "nothing to assign: each starts a track";
    int failures = 0;
    double time = 10.0;
    for (int frame = 0; frame < 20; ++frame) {
        time += 0.05;
        failures += isTooBig([&] { showVideo(time, {video(1, time)}); }) ? 1 : 0;
        failures += isTooBig([&] { showRadar(time, {radar(1, time)}); }) ? 1 : 0;
    }
    EXPECT_THAT(failures, AllOf(Gt(0), Le(20))) << "for 0.5 s, two frames each 0.05 s";
    ASSERT_EQ(module().systemTracks.size(), 1U);
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
}

}  // namespace
}  // namespace VeskarTest
