// SPDX-License-Identifier: Apache-2.0
// When a frame is fused, and the steps of every fused frame.
#include "fusion/FusionFixture.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace VeskarTest {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::FusionModule;
using Veskar::ObjectIdGenerator;
using Veskar::Radar;
using Veskar::VideoObject;
using Veskar::VideoVura;

class FusionCycle : public FusionTest {};

TEST_F(FusionCycle, FusesVideoAtOnce) {
    const auto track = video(7, 4.0);
    showVideo(4.0, {track});
    EXPECT_THAT(systemIds(), ElementsAre(1));
    EXPECT_EQ(systemTrack(0).getSensorTracks(VideoObject).at(7), track) << "shared, not copied";
}

TEST_F(FusionCycle, FusesRadarOnceItIsLessThanATenthOfASecondAheadOfVideo) {
    showVideo(4.0, {});
    const double limit = 4.0 + 0.1;
    showRadar(limit, {radar(1, limit)});
    EXPECT_THAT(systemIds(), IsEmpty()) << "exactly at the limit it waits";

    showVideo(std::nextafter(4.0, 5.0), {});
    showRadar(9.0, {});
    EXPECT_THAT(systemIds(), ElementsAre(1)) << "just below the limit it is fused";
}

TEST_F(FusionCycle, SaysWhetherRadarWouldWaitForVideo) {
    EXPECT_FALSE(module().waitsForVideo(0.05)) << "video time begins at 0";
    EXPECT_TRUE(module().waitsForVideo(0.1));
    showVideo(10.0, {video(1, 10.0)});
    EXPECT_FALSE(module().waitsForVideo(10.05));
    EXPECT_TRUE(module().waitsForVideo(10.1));
    EXPECT_TRUE(module().waitsForVideo(3610.0));
    // Held back, it waits for another frame.
    EXPECT_FALSE(module().isFarInTime(3610.0));
    EXPECT_TRUE(module().isFarInTime(3611.0));
    EXPECT_FALSE(module().waitsForVideo(3611.0));
}

TEST_F(FusionCycle, FusesRadarWithinTheCallThatDeliversIt) {
    showVideo(4.0, {});
    showRadar(4.05, {radar(1, 4.05)});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionCycle, StartsWithVideoTimeZero) {
    showRadar(0.1, {radar(1, 0.1)});
    EXPECT_THAT(systemIds(), IsEmpty());
    FusionModule fresh(config, [] { return std::chrono::nanoseconds(0); });
    fresh.cycle(Radar, 0.0999, {radar(1, 0.0999)});
    EXPECT_EQ(fresh.systemTracks.size(), 1U);
}

TEST_F(FusionCycle, KeepsRadarFramesInOrderOfArrival) {
    setClock(5.0);
    showVideo(4.5, {});
    showRadar(5.0, {radar(50, 5.0, {-0.9})});
    showRadar(4.0, {radar(40, 4.0, {0.9})});
    EXPECT_THAT(systemIds(), IsEmpty()) << "the first frame must wait and holds up the second";

    setClock(6.6);
    showRadar(6.5, {});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_THAT(heldIds(0, Radar), ElementsAre(50));
    EXPECT_THAT(heldIds(1, Radar), ElementsAre(40));
}

TEST_F(FusionCycle, LooksAtWaitingRadarOnlyWhenRadarArrives) {
    showVideo(4.0, {});
    showRadar(4.5, {radar(1, 4.5)});
    setClock(1000.0);
    showVideo(5.0, {video(2, 5.0)});
    ASSERT_THAT(systemIds(), ElementsAre(1));
    EXPECT_FALSE(systemTrack(0).hasTracks(Radar));
    showRadar(2000.0, {});
    EXPECT_TRUE(systemTrack(0).hasTracks(Radar));
}

TEST_F(FusionCycle, FusesRadarThatIsOlderThanOneAndAHalfSeconds) {
    showRadar(10.0, {radar(1, 10.0)});
    setClock(11.5);
    showRadar(20.0, {});
    EXPECT_THAT(systemIds(), IsEmpty()) << "exactly 1.5 s old it waits";
    setClock(11.500001);
    showRadar(21.0, {});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionCycle, ReadsTheClockInWholeMicroseconds) {
    showRadar(10.0, {radar(1, 10.0)});
    now = std::chrono::nanoseconds(11'500'000'999);
    showRadar(20.0, {});
    EXPECT_THAT(systemIds(), IsEmpty());
    now = std::chrono::nanoseconds(11'500'001'000);
    showRadar(21.0, {});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionCycle, ReadsTheClockOncePerCall) {
    showVideo(1.0, {});
    EXPECT_EQ(clockReadings, 1);
    setClock(100.0);
    showRadar(1.0, {});
    showRadar(2.0, {});
    EXPECT_EQ(clockReadings, 3);
    module().cycle(VideoVura, 1.0, {});
    EXPECT_EQ(clockReadings, 4);
}

TEST_F(FusionCycle, FusesAFrameThatArrivesStale) {
    setClock(100.0);
    showRadar(98.4, {radar(1, 98.4)});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionCycle, GoesOnWithVideoPacedFramesBehindStaleOnes) {
    setClock(10.0);
    showRadar(9.0, {radar(1, 9.0, {-0.9})});
    showVideo(8.95, {});
    setClock(10.52);
    showRadar(9.04, {radar(2, 9.04, {0.9})});
    EXPECT_THAT(systemIds(), ElementsAre(1, 2)) << "one as stale, the other near to video time";
}

TEST_F(FusionCycle, FollowsVideoTimeBackwards) {
    showVideo(8.0, {});
    showVideo(4.0, {});
    showRadar(6.0, {radar(1, 6.0)});
    EXPECT_THAT(systemIds(), IsEmpty());
}

TEST_F(FusionCycle, IgnoresOtherSources) {
    showVideo(4.0, {});
    showRadar(4.5, {radar(1, 4.5)});
    setClock(1000.0);
    for (const Veskar::Source source :
         {VideoVura, Veskar::System, static_cast<Veskar::Source>(9)}) {
        module().cycle(source, 5.0, {video(3, 5.0)});
        EXPECT_THAT(systemIds(), IsEmpty());
    }
}

TEST_F(FusionCycle, KeepsItsOwnListOfAWaitingFramesTracks) {
    Tracks tracks = {radar(1, 10.0)};
    showRadar(10.0, tracks);
    tracks.clear();
    setClock(12.0);
    showRadar(30.0, {});
    EXPECT_THAT(systemIds(), ElementsAre(1));
}

TEST_F(FusionCycle, RunsOnTheSteadyClockByDefault) {
    const double time =
        std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    FusionModule onSteadyClock(config);
    onSteadyClock.cycle(Radar, time + 3600.0, {radar(1, time + 3600.0, {-0.9})});
    EXPECT_TRUE(onSteadyClock.systemTracks.empty());
    FusionModule another(config);
    another.cycle(Radar, time - 1.6, {radar(2, time, {0.9})});
    EXPECT_EQ(another.systemTracks.size(), 1U);
}

TEST_F(FusionCycle, PredictsSystemTracksToTheFramesTimeInBothDirections) {
    const auto track = video(1, 4.0, {0.0, 0.1});
    showVideo(4.0, {track});
    module().predictTracks(6.0);
    EXPECT_DOUBLE_EQ(systemTrack(0).time, 6.0);
    EXPECT_DOUBLE_EQ(systemTrack(0).state[0], 0.2);
    EXPECT_DOUBLE_EQ(track->coastingTime, 2.0);
    module().predictTracks(5.0);
    EXPECT_DOUBLE_EQ(systemTrack(0).time, 5.0);
    EXPECT_DOUBLE_EQ(systemTrack(0).state[0], 0.1);
    EXPECT_DOUBLE_EQ(track->coastingTime, 1.0);
}

/// A sensor track that counts its predictions.
class CountingTrack : public Veskar::Track {
public:
    explicit CountingTrack(const Veskar::Track& track) : Track(track) {}
    void predict(double t) override {
        ++predictions;
        Track::predict(t);
    }

    int predictions = 0;
};

TEST_F(FusionCycle, PredictsTheLastSensorTracksForwardsOnly) {
    for (const auto& [source, make] : {std::pair{VideoObject, &video}, std::pair{Radar, &radar}}) {
        // The second report with the same id joins no system track, so that nothing else predicts
        // it.
        const auto loose = std::make_shared<CountingTrack>(*make(1, 4.0, {0.0, 0.1}));
        module().cycleFrame(source, 4.0, {make(1, 4.0, {}), loose});
        module().predictTracks(4.0);
        EXPECT_EQ(loose->predictions, 0) << "it is there already";
        module().predictTracks(6.0);
        EXPECT_EQ(loose->predictions, 1);
        EXPECT_DOUBLE_EQ(loose->state[0], 0.2);
        EXPECT_EQ(loose->time, 6.0);
        module().predictTracks(5.0);
        EXPECT_EQ(loose->predictions, 1);
        module().clear();
    }
}

/// Records its name when it is predicted.
template <typename Base>
class NamedTrack : public Base {
public:
    template <typename... Arguments>
    NamedTrack(std::vector<std::string>& log, std::string name, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...), log_(log), name_(std::move(name)) {}
    void predict(double t) override {
        log_.push_back(name_);
        Base::predict(t);
    }

private:
    std::vector<std::string>& log_;
    std::string name_;
};

TEST_F(FusionCycle, PredictsSystemTracksBeforeRadarBeforeVideo) {
    std::vector<std::string> log;
    using Named = NamedTrack<Veskar::Track>;
    showVideo(4.0, {std::make_shared<Named>(log, "video", *video(1, 4.0))});
    fuseRadar(4.0, {std::make_shared<Named>(log, "radar", *radar(1, 4.0))});
    module().systemTracks = {
        std::make_shared<NamedTrack<Veskar::SystemTrack>>(log, "system", video(2, 4.0), 2)};
    log.clear();
    module().predictTracks(5.0);
    EXPECT_THAT(log, ElementsAre("system", "radar", "video"));
}

TEST_F(FusionCycle, DoesNotPredictTheLastTracksOfOtherSources) {
    auto loose = video(1, 4.0, {0.0, 0.1});
    loose->source = VideoVura;
    module().cycleFrame(VideoVura, 4.0, {loose});
    module().predictTracks(6.0);
    EXPECT_EQ(loose->time, 4.0);
}

TEST_F(FusionCycle, RemembersTheLastTracksOfEachSource) {
    const auto loose = video(1, 4.0);
    showVideo(4.0, {video(1, 4.0), loose});
    EXPECT_EQ(loose.use_count(), 2) << "held as one of the last video tracks";
    showRadar(4.0, {});
    EXPECT_EQ(loose.use_count(), 2) << "a radar frame leaves the video tracks";
    showVideo(4.1, {});
    EXPECT_EQ(loose.use_count(), 1) << "the next video frame takes their place";
}

TEST_F(FusionCycle, LetsTracksAgeAndDieInEmptyFrames) {
    showVideo(4.0, {video(1, 4.0)});
    showVideo(4.49, {});
    EXPECT_THAT(systemIds(), ElementsAre(1));
    showVideo(4.5, {});
    EXPECT_THAT(systemIds(), IsEmpty());
}

TEST_F(FusionCycle, ManagesTracksInTheFrameThatStartsThem) {
    const auto coasting = video(1, 4.0);
    coasting->coastingTime = 0.5;
    showVideo(4.0, {coasting});
    EXPECT_THAT(systemIds(), IsEmpty()) << "started and pruned";
    showVideo(4.0, {video(2, 4.0)});
    EXPECT_THAT(systemIds(), ElementsAre(2)) << "its id is spent";
}

TEST_F(FusionCycle, UpdatesBeforeItStartsTracks) {
    makeFusedTrack();
    const auto other = video(5, 10.1, {0.1});
    showVideo(10.1, {video(1, 10.1), other});
    ASSERT_THAT(systemIds(), ElementsAre(1, 2));
    EXPECT_EQ(systemTrack(1).getSensorTracks(VideoObject).at(5), other);
    EXPECT_EQ(systemTrack(1).getTrackProbability(), 0.5) << "the new one takes no step this frame";
}

TEST_F(FusionCycle, PublishesTheIdGeneratorOfTheNewestModule) {
    module();
    const ObjectIdGenerator* older = ObjectIdGenerator::instance;
    {
        const FusionModule newer(config);
        EXPECT_NE(ObjectIdGenerator::instance, older);
        older = ObjectIdGenerator::instance;
    }
    EXPECT_EQ(ObjectIdGenerator::instance, older) << "a module that dies leaves it";
}

TEST_F(FusionCycle, TellsWhetherADetectionHasMoved) {
    EXPECT_FALSE(module().trackedOdHasMotion(3, 0.0, 0.0));
    EXPECT_FALSE(module().trackedOdHasMotion(3, 0.2, 0.0));
    EXPECT_TRUE(module().trackedOdHasMotion(3, 0.0, 0.3));
}

}  // namespace
}  // namespace VeskarTest
