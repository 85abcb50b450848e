// SPDX-License-Identifier: Apache-2.0
// Input that would harm the fusion permanently is rejected and logged.
#include "fusion/FusionFixture.h"
#include "support/AllocationCounter.h"
#include "support/Constants.h"
#include "support/SyslogCapture.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <optional>
#include <ostream>
#include <utility>

#include <syslog.h>

namespace VeskarTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Veskar::FusionModule;
using Veskar::ObjectIdGenerator;
using Veskar::Radar;
using Veskar::Source;
using Veskar::StateMatrix;
using Veskar::StateVector;
using Veskar::Track;
using Veskar::VideoObject;

constexpr double unixTime = 1.7e9;

constexpr char areNotFinite[] = "FusionModule: Left out 1 tracks that are not finite\n";
constexpr char cannotBeFused[] = "FusionModule: Left out 1 tracks that cannot be fused\n";
constexpr char heldBack[] = "FusionModule: Held back a frame far from the others in time\n";
constexpr char restarted[] = "FusionModule: Restarted on a new time base\n";
constexpr char dropped[] = "FusionModule: Dropped radar frames that waited too long\n";
constexpr char zeroGain[] =
    "FusionModule: A track with probability 0 makes that of its system track NaN for good; set "
    "Track::probability to the gain of the report\n";
constexpr char radarWaits[] =
    "FusionModule: Radar frames have waited for video time for more than a minute; is radar "
    "stamped in UNIX time and video in uptime?\n";
constexpr char olderVideo[] = "FusionModule: A video frame is older than the one before it\n";
constexpr char olderRadar[] = "FusionModule: A radar frame is older than the one before it\n";

/// One object that both sensors see ten times a second, video track 1 and radar track 1.
class FusionGuards : public FusionTest {
protected:
    static std::shared_ptr<Track> make(Source source, int id, double time) {
        return source == VideoObject ? video(id, time) : radar(id, time);
    }

    void show(Source source, double time, const Tracks& tracks) {
        module().cycle(source, time, tracks);
    }

    /// Regular frames up to a time.
    void runUntil(double end) {
        for (; next < end; next += 0.05) {
            setClock(next);
            const Source source = isVideo ? VideoObject : Radar;
            isVideo = !isVideo;
            show(source, next, {make(source, 1, next)});
        }
    }

    /// @param turn the sensor whose frame comes next
    void startAfresh(Source turn = VideoObject) {
        restart();
        next = 10.0;
        isVideo = true;
        runUntil(11.0);
        if (isVideo != (turn == VideoObject)) {
            runUntil(next + 0.05);
        }
    }

    void expectOneSoundObject() {
        ASSERT_THAT(systemIds(), ElementsAre(1));
        const Veskar::SystemTrack& object = systemTrack(0);
        EXPECT_TRUE(object.isConfirmed);
        EXPECT_NEAR(object.getTrackProbability(), 1.0, 0.01);
        EXPECT_NEAR(object.state[0], 0.0, 1e-6);
        EXPECT_NEAR(object.covariance(0, 0), usualVariance / 2.0, 1e-4);
        EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
        EXPECT_THAT(heldIds(0, Radar), ElementsAre(1));
    }

    double next = 0.0;  ///< time of the next regular frame
    bool isVideo = true;
};

// --- Reports

/// A report that must be rejected, and the expected log line.
struct Poison {
    const char* what;
    std::function<void(Track&)> spoil;
    const char* line;
};

std::ostream& operator<<(std::ostream& out, const Poison& poison) {
    return out << poison.what;
}

StateMatrix rankOne() {
    StateVector x;
    x << 0.1, 0.2, 0.3, 0.1, 0.2, 0.3;
    return x * x.transpose();
}

StateMatrix indefinite() {
    StateMatrix P = usualVariance * StateMatrix::Identity();
    P(0, 1) = P(1, 0) = 2.0 * usualVariance;
    return P;
}

class FusionPoison : public FusionGuards, public testing::WithParamInterface<Poison> {};

/// The frame is processed as if the sensor had not sent the invalid report, with bit-identical
/// results.
TEST_P(FusionPoison, LeavesNoMark) {
    const Poison& poison = GetParam();
    for (const Source source : {VideoObject, Radar}) {
        for (const int id : {1, 5}) {  // one held by a system track, and a new one
            Outcome expected;
            for (const bool isSpoiled : {false, true}) {
                startAfresh(source);
                const SyslogCapture log;
                setClock(next);
                Tracks frame = {make(source, 2, next)};
                if (isSpoiled) {
                    frame.push_back(make(source, id, next));
                    poison.spoil(*frame.back());
                }
                show(source, next, frame);
                const Outcome atOnce = outcome();
                next += 0.05;
                isVideo = !isVideo;
                runUntil(21.0);
                expectOneSoundObject();
                if (isSpoiled) {
                    EXPECT_EQ(atOnce, expected);
                    EXPECT_THAT(log.errors(), ElementsAre(poison.line));
                } else {
                    expected = atOnce;
                    EXPECT_THAT(log.errors(), IsEmpty());
                }
            }
        }
    }
}

Poison covariancePoison(const char* what, const StateMatrix& P) {
    return {what, [P](Track& track) { track.covariance = P; }, cannotBeFused};
}

INSTANTIATE_TEST_SUITE_P(
    Reports, FusionPoison,
    testing::Values(
        Poison{"state NaN", [](Track& track) { track.state[3] = nan; }, areNotFinite},
        Poison{"time NaN", [](Track& track) { track.time = nan; }, areNotFinite},
        Poison{"time infinite", [](Track& track) { track.time = -infinite; }, areNotFinite},
        Poison{"UNIX time", [](Track& track) { track.time += unixTime; }, cannotBeFused},
        Poison{"time 10.01 s late", [](Track& track) { track.time -= 10.01; }, cannotBeFused},
        Poison{"coasting NaN", [](Track& track) { track.coastingTime = nan; }, areNotFinite},
        Poison{"coasting -inf", [](Track& track) { track.coastingTime = -infinite; }, areNotFinite},
        Poison{"coasting -1 s", [](Track& track) { track.coastingTime = -1.0; }, cannotBeFused},
        Poison{"coasting -1e9 s", [](Track& track) { track.coastingTime = -1e9; }, cannotBeFused},
        Poison{"gain NaN", [](Track& track) { track.probability = nan; }, areNotFinite},
        Poison{"gain infinite", [](Track& track) { track.probability = infinite; }, areNotFinite},
        Poison{"gain negative", [](Track& track) { track.probability = -2.0; }, cannotBeFused},
        covariancePoison("covariance zero", StateMatrix::Zero()),
        covariancePoison("covariance of rank one", rankOne()),
        covariancePoison("covariance denormal", 1e-310 * StateMatrix::Identity()),
        covariancePoison("covariance negative", -StateMatrix::Identity()),
        covariancePoison("covariance indefinite", indefinite())));

TEST_F(FusionGuards, LetAnIllConditionedCovarianceCount) {
    for (const Source source : {VideoObject, Radar}) {
        startAfresh(source);
        const auto report = make(source, 9, next);
        report->covariance(0, 0) = 1e-6;
        report->covariance(5, 5) = 1e6;
        report->covariance(0, 1) = report->covariance(1, 0) =
            (1.0 - 1e-6) * std::sqrt(1e-6 * usualVariance);
        report->state[0] = -2.0;
        const SyslogCapture log;
        show(source, next, {make(source, 1, next), report});
        ASSERT_THAT(systemIds(), ElementsAre(1, 2));
        EXPECT_THAT(heldIds(1, source), ElementsAre(9));
        EXPECT_THAT(log.lines(), SizeIs(0));
    }
}

TEST_F(FusionGuards, CountEachCauseOncePerCall) {
    Tracks frame;
    for (int id = 1; id <= 5; ++id) {
        frame.push_back(video(id, 10.0));
    }
    frame[0]->time = nan;
    frame[0]->covariance.setZero();
    frame[1]->coastingTime = infinite;
    frame[2]->covariance.setZero();
    frame[3]->probability = -1.0;
    frame.push_back(video(6, 20.01));
    const SyslogCapture log;
    showVideo(10.0, frame);
    EXPECT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(5));
    EXPECT_THAT(log.errors(),
                ElementsAre("FusionModule: Left out 2 tracks that are not finite\n",
                            "FusionModule: Left out 3 tracks that cannot be fused\n"));
}

TEST_F(FusionGuards, StandAtCycleAlone) {
    const auto late = video(1, -1000.0);
    const SyslogCapture log;
    module().cycleFrame(VideoObject, 10.0, {late});
    EXPECT_THAT(systemIds(), ElementsAre(1));
    module().cycleFrame(VideoObject, unixTime, {video(2, unixTime)});
    EXPECT_THAT(systemIds(), ElementsAre(2));
    EXPECT_THAT(log.lines(), SizeIs(0));
}

TEST_F(FusionGuards, StopAtANullTrack) {
    EXPECT_DEATH(showVideo(10.0, {nullptr}), "get\\(\\) != nullptr");
}

TEST_F(FusionGuards, AllocateNothingForASoundVideoFrame) {
    const Tracks frame = {video(1, 10.0)};
    for (int i = 0; i < 10; ++i) {
        showVideo(10.0, frame);
    }
    const AllocationScope allocations;
    for (int i = 0; i < 10; ++i) {
        showVideo(10.0, frame);
    }
    EXPECT_EQ(allocations.count(), 0U);
}

// --- Time bases

TEST_F(FusionGuards, DropASingleFrameOfAnotherTimeBase) {
    for (const Source source : {VideoObject, Radar}) {
        Outcome expected;
        for (const bool isSpoiled : {false, true}) {
            startAfresh();
            const auto report = make(source, 1, unixTime);
            const SyslogCapture log;
            if (isSpoiled) {
                show(source, unixTime, {report});
            }
            runUntil(21.0);
            EXPECT_EQ(report.use_count(), 1) << "it is let go";
            expectOneSoundObject();
            if (isSpoiled) {
                EXPECT_EQ(outcome(), expected);
                EXPECT_THAT(log.errors(), ElementsAre(heldBack));
            } else {
                expected = outcome();
            }
        }
    }
}

TEST_F(FusionGuards, FollowAChangeOfTheTimeBase) {
    for (const double change : {unixTime, -7200.0}) {
        startAfresh();
        const auto first = make(VideoObject, 1, next + change);
        const SyslogCapture log;
        showVideo(first->time, {first});
        EXPECT_THAT(systemIds(), ElementsAre(1)) << "nothing is fused yet";
        showRadar(first->time, {make(Radar, 1, first->time)});
        ASSERT_THAT(systemIds(), ElementsAre(2)) << "afresh, with the next id";
        EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(1));
        EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(1), first);
        EXPECT_THAT(heldIds(0, Radar), ElementsAre(1)) << "both frames are fused";
        EXPECT_THAT(log.errors(), ElementsAre(heldBack, restarted));
        next += change + 0.05;
        runUntil(next + 10.0);
        ASSERT_THAT(systemIds(), ElementsAre(2));
        EXPECT_TRUE(systemTrack(0).isConfirmed);
        EXPECT_THAT(log.texts(LOG_ERR), SizeIs(2));
    }
}

TEST_F(FusionGuards, ForgetWaitingRadarWithTheTimeBase) {
    startAfresh();
    const auto waiting = make(Radar, 7, next + 1.0);
    showRadar(next + 1.0, {waiting});
    EXPECT_EQ(waiting.use_count(), 2);
    const SyslogCapture log;
    showVideo(unixTime, {});
    showVideo(unixTime + 0.1, {});
    EXPECT_EQ(waiting.use_count(), 1);
    showRadar(unixTime + 0.1, {});
    EXPECT_THAT(systemIds(), IsEmpty());
}

TEST_F(FusionGuards, ForgetVideoTimeWithTheTimeBase) {
    showVideo(unixTime, {});
    const SyslogCapture log;
    showRadar(50.0, {radar(1, 50.0)});
    showRadar(50.1, {radar(1, 50.1)});
    EXPECT_THAT(log.errors(), ElementsAre(heldBack, restarted));
    EXPECT_THAT(systemIds(), IsEmpty()) << "both wait for video";
    showVideo(50.2, {});
    showRadar(50.2, {radar(1, 50.2)});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionGuards, InspectAFrameHeldBackWhenItArrives) {
    startAfresh();
    const auto spoiled = make(VideoObject, 3, unixTime);
    spoiled->covariance.setZero();
    const SyslogCapture log;
    showVideo(unixTime, {spoiled, make(VideoObject, 2, unixTime)});
    showVideo(unixTime + 0.1, {});
    EXPECT_THAT(log.errors(), ElementsAre(cannotBeFused, heldBack, restarted));
    ASSERT_THAT(systemIds(), ElementsAre(2));
    EXPECT_THAT(heldIds(0, VideoObject), ElementsAre(2));
}

TEST_F(FusionGuards, DoNotCountFramesThatAreIgnored) {
    startAfresh();
    const SyslogCapture log;
    showVideo(unixTime, {});
    show(Veskar::VideoVura, 12.0, {});
    showVideo(nan, {});
    showVideo(unixTime, {});
    EXPECT_THAT(log.errors(), ElementsAre(heldBack, testing::_, restarted));
}

TEST_F(FusionGuards, ComeBackFromSeveralSpoiledStamps) {
    startAfresh();
    {
        const SyslogCapture log;
        showVideo(unixTime, {make(VideoObject, 1, unixTime)});
        showVideo(unixTime + 0.1, {make(VideoObject, 1, unixTime + 0.1)});
        runUntil(21.0);
        EXPECT_THAT(log.texts(LOG_ERR), ElementsAre(heldBack, restarted, heldBack, restarted));
    }
    ASSERT_THAT(systemIds(), ElementsAre(3));
    EXPECT_TRUE(systemTrack(0).isConfirmed);
    EXPECT_NEAR(systemTrack(0).covariance(0, 0), usualVariance / 2.0, 1e-4);
}

// --- Waiting radar frames

class FusionWaitingRadar : public FusionGuards {
protected:
    /// Frames far in the future, one track each.
    void showFuture(int count) {
        for (int i = 0; i < count; ++i) {
            const auto track = radar(1, unixTime);
            shown.push_back(track);
            showRadar(unixTime, {track});
        }
    }

    /// @return number of the shown frames that are still held back, and the first of them
    std::pair<std::size_t, std::size_t> waiting() const {
        std::size_t count = 0;
        std::optional<std::size_t> first;
        for (std::size_t i = 0; i < shown.size(); ++i) {
            if (!shown[i].expired()) {
                ++count;
                first = first.value_or(i);
            }
        }
        return {count, first.value_or(shown.size())};
    }

    std::vector<std::weak_ptr<Track>> shown;
};

TEST_F(FusionWaitingRadar, IsAtMostAThousandFrames) {
    const SyslogCapture log;
    showFuture(1000);
    EXPECT_EQ(waiting(), std::pair(std::size_t{1000}, std::size_t{0}));
    EXPECT_THAT(log.lines(), SizeIs(0));
    showFuture(1);
    EXPECT_EQ(waiting(), std::pair(std::size_t{1000}, std::size_t{1})) << "the oldest has left";
    EXPECT_THAT(log.errors(), ElementsAre(dropped));
    EXPECT_THAT(systemIds(), IsEmpty()) << "unfused";
    const std::int64_t memory = liveAllocations() - static_cast<std::int64_t>(shown.size());
    showFuture(5000);
    EXPECT_EQ(waiting(), std::pair(std::size_t{1000}, std::size_t{5001}));
    // Weak pointers keep the control blocks of the expired tracks allocated.
    EXPECT_LE(liveAllocations() - static_cast<std::int64_t>(shown.size()), memory + 16);
    EXPECT_THAT(log.errors(), ElementsAre(dropped));
}

TEST_F(FusionWaitingRadar, IsDroppedWithALineAMinute) {
    const SyslogCapture log;
    const auto count = [&log] {
        const auto texts = log.texts(LOG_ERR);
        return std::count(texts.begin(), texts.end(), dropped);
    };
    setClock(100.0);
    showFuture(1002);
    EXPECT_EQ(count(), 1);
    setClock(159.999999);
    showFuture(1);
    EXPECT_EQ(count(), 1);
    setClock(160.0);
    showFuture(2);
    EXPECT_EQ(count(), 2);
}

TEST_F(FusionWaitingRadar, IsFusedRatherThanDropped) {
    const SyslogCapture log;
    for (int i = 0; i < 1000; ++i) {
        showRadar(20.0, {radar(1, 20.0)});
    }
    const double before = 20.0 + 1.5;
    setClock(before + 1.0);
    showRadar(before, {radar(2, before, {1.0})});
    ASSERT_THAT(systemIds(), ElementsAre(1)) << "a thousand stale ones, and one that waits";
    EXPECT_THAT(log.texts(LOG_ERR), IsEmpty());
}

// --- Warnings

class FusionWarnings : public FusionGuards {};

TEST_F(FusionWarnings, TellOfAGainOfZeroOnceAMinute) {
    const SyslogCapture log;
    const auto showZero = [this](double clock) {
        setClock(clock);
        showVideo(10.0, {video(1, 10.0, {0.0, 0.0, 0.0}), video(2, 10.0, {2.0, 0.0, 0.0})});
    };
    showZero(10.0);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].priority, LOG_WARNING);
    EXPECT_EQ(log.lines()[0].text, zeroGain);
    showZero(69.999999);
    EXPECT_THAT(log.lines(), SizeIs(1));
    showZero(70.0);
    EXPECT_THAT(log.texts(LOG_WARNING), ElementsAre(zeroGain, zeroGain));
    EXPECT_THAT(systemIds(), ElementsAre(1, 2)) << "it is fused all the same";
    EXPECT_TRUE(std::isnan(systemTrack(0).getTrackProbability()));
}

TEST_F(FusionWarnings, DoNotTellOfTheGainOfWhatIsLeftOut) {
    const auto spoiled = video(1, 10.0, {0.0, 0.0, 0.0});
    spoiled->covariance.setZero();
    const SyslogCapture log;
    showVideo(10.0, {spoiled, video(2, 10.0, {0.0, 0.0, 1e-300})});
    EXPECT_THAT(log.errors(), ElementsAre(cannotBeFused));
}

TEST_F(FusionWarnings, TellOfRadarThatWaitsForMoreThanAMinute) {
    setClock(1000.0);
    const SyslogCapture log;
    showRadar(unixTime, {radar(1, unixTime)});
    setClock(1060.0);
    showRadar(unixTime + 60.0, {});
    EXPECT_THAT(log.lines(), SizeIs(0)) << "exactly a minute";
    setClock(1060.000001);
    showRadar(unixTime + 60.1, {});
    EXPECT_THAT(log.texts(LOG_WARNING), ElementsAre(radarWaits));
    setClock(1120.0);
    showRadar(unixTime + 120.0, {});
    EXPECT_THAT(log.lines(), SizeIs(1));
    setClock(1120.000001);
    showRadar(unixTime + 120.1, {});
    EXPECT_THAT(log.texts(LOG_WARNING), ElementsAre(radarWaits, radarWaits));
    EXPECT_THAT(systemIds(), IsEmpty()) << "it waits all the same";
}

TEST_F(FusionWarnings, DoNotTellOfRadarThatWasSilentForMoreThanAMinute) {
    setClock(1000.0);
    const SyslogCapture log;
    showRadar(1000.0, {radar(1, 1000.0)});
    setClock(1100.0);
    showRadar(1100.0, {});
    EXPECT_THAT(systemIds(), ElementsAre(1));
    EXPECT_THAT(log.lines(), SizeIs(0));
}

TEST_F(FusionWarnings, TellOfAFrameOlderThanTheOneBeforeIt) {
    showVideo(10.0, {});
    showRadar(10.05, {});
    const SyslogCapture log;
    showVideo(10.0, {});
    showRadar(10.05, {});
    EXPECT_THAT(log.lines(), SizeIs(0)) << "not older";
    showVideo(std::nextafter(10.0, 0.0), {});
    EXPECT_THAT(log.texts(LOG_WARNING), ElementsAre(olderVideo));
    showRadar(10.0, {});
    showVideo(9.5, {video(1, 9.5)});
    EXPECT_THAT(log.lines(), SizeIs(1)) << "once a minute";
    EXPECT_THAT(systemIds(), ElementsAre(1)) << "it is fused all the same";
    setClock(60.0);
    showRadar(9.9, {});
    EXPECT_THAT(log.texts(LOG_WARNING), ElementsAre(olderVideo, olderRadar));
}

TEST_F(FusionWarnings, CompareAFrameWithTheOneJustBeforeItAndNotWithTheLatest) {
    showVideo(10.0, {});
    const SyslogCapture log;
    showVideo(9.0, {});
    EXPECT_THAT(log.texts(LOG_WARNING), ElementsAre(olderVideo));
    setClock(60.0);
    showVideo(9.5, {});
    EXPECT_THAT(log.lines(), SizeIs(1));
}

TEST_F(FusionWarnings, CompareAFrameWithThoseOfItsSourceAndTimeBaseOnly) {
    showVideo(unixTime, {});
    const SyslogCapture log;
    showRadar(unixTime - 3.0, {});
    showVideo(50.0, {});
    showVideo(50.1, {});
    showRadar(50.0, {});
    EXPECT_THAT(log.errors(), ElementsAre(heldBack, restarted));
}

TEST_F(FusionWarnings, CountTheMinutesOfEachCauseForItself) {
    showVideo(10.0, {});
    const SyslogCapture log;
    showVideo(9.0, {video(1, 9.0, {0.0, 0.0, 0.0})});
    EXPECT_THAT(log.texts(LOG_WARNING), ElementsAre(zeroGain, olderVideo));
}

// --- Ids

TEST_F(FusionGuards, DrawIdsFromTheLatestModuleEvenWhenThatHasEnded) {
    startAfresh();
    const ObjectIdGenerator* latest = nullptr;
    {
        FusionModule newer(config, [] { return std::chrono::nanoseconds{}; });
        latest = ObjectIdGenerator::instance;
        newer.cycle(VideoObject, 10.0, {video(1, 10.0), video(2, 10.0, {2.0})});
        ASSERT_THAT(newer.systemTracks, SizeIs(2));
    }
    EXPECT_EQ(ObjectIdGenerator::instance, latest);
    showVideo(next, {video(8, next, {-3.0}), video(9, next, {-6.0})});
    EXPECT_THAT(systemIds(), ElementsAre(1, 3, 4));
    EXPECT_EQ(latest->lastId, 4);
}

TEST_F(FusionGuards, KeepOneGeneratorHoweverManyModulesEnd) {
    { const FusionModule first(config); }
    const std::int64_t before = liveAllocations();
    for (int i = 0; i < 100; ++i) {
        const FusionModule another(config);
    }
    EXPECT_EQ(liveAllocations(), before);
}

}  // namespace
}  // namespace VeskarTest
