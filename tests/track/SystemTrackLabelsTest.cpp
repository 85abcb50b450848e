// SPDX-License-Identifier: Apache-2.0
// Existence probability, confidence and labels of a system track.
#include <veskar/SystemTrack.h>

#include "support/EigenMatchers.h"
#include "support/TrackFactory.h"

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;
using VeskarTest::IsNearRelative;
using VeskarTest::makeSystemTrack;
using VeskarTest::makeTrack;
using VeskarTest::RandomEstimates;

TEST(TrackProbability, StartsAtOneHalf) {
    EXPECT_EQ(makeSystemTrack(makeTrack(Source::Radar, 1))->getTrackProbability(), 0.5);
}

TEST(TrackProbability, IsKeptByAGainOfOne) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateTrackProbability(1.0);
    EXPECT_EQ(system->getTrackProbability(), 0.5);
    EXPECT_THAT(system->trackProbabilityHistory, ElementsAre(0.5, 0.5, 0.5, 0.5, 0.5));
}

TEST(TrackProbability, IsTheMeanOfTheLastFivePosteriors) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateTrackProbability(3.0);
    EXPECT_THAT(system->trackProbabilityHistory,
                ElementsAre(testing::DoubleEq(0.75), 0.5, 0.5, 0.5, 0.5));
    EXPECT_DOUBLE_EQ(system->getTrackProbability(), 0.55);
}

TEST(TrackProbability, ShiftsTheHistoryByOne) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->trackProbabilityHistory = {0.1, 0.2, 0.3, 0.4, 0.5};
    system->updateTrackProbability(1.0);
    EXPECT_THAT(system->trackProbabilityHistory,
                ElementsAre(testing::DoubleEq(0.3), 0.1, 0.2, 0.3, 0.4));
}

TEST(TrackProbability, FollowsBayesInItsOddsForm) {
    RandomEstimates random(701);
    for (int i = 0; i < 200; ++i) {
        const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
        for (double& past : system->trackProbabilityHistory) {
            past = random.uniform(0.01, 0.99);
        }
        const double gain = random.uniform(0.05, 20.0);
        const double q = system->getTrackProbability();
        system->updateTrackProbability(gain);
        const double posterior = system->trackProbabilityHistory.front();
        EXPECT_THAT(posterior, IsNearRelative(gain * q / (1.0 - q + gain * q), 1e-12));
        EXPECT_EQ(posterior > q, gain > 1.0);
    }
}

TEST(TrackProbability, DividesByFiveWhateverTheLength) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->trackProbabilityHistory = {0.5, 0.5};
    EXPECT_EQ(system->getTrackProbability(), 0.2);
    system->updateTrackProbability(1.0);
    EXPECT_THAT(system->trackProbabilityHistory, ElementsAre(0.2, 0.5));
}

TEST(TrackProbability, OfAnEmptyHistoryIsZeroAndStaysEmpty) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->trackProbabilityHistory.clear();
    EXPECT_EQ(system->getTrackProbability(), 0.0);
    system->updateTrackProbability(2.0);
    EXPECT_TRUE(system->trackProbabilityHistory.empty());
}

TEST(TrackProbability, IsLostToAGainOfZero) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    system->updateTrackProbability(0.0);
    EXPECT_TRUE(std::isnan(system->trackProbabilityHistory.front()));
    EXPECT_TRUE(std::isnan(system->getTrackProbability()));
}

TEST(Confidence, ComesWithARadarTrack) {
    const auto system = makeSystemTrack(makeTrack(Source::Radar, 1));
    const auto video = makeTrack(Source::VideoObject, 1);
    video->isConfident = false;
    system->updateState(video);
    system->sensorTracks[Source::Radar][1]->isConfident = false;
    system->isConfident = false;
    system->updateIsConfident();
    EXPECT_TRUE(system->isConfident);
}

TEST(Confidence, IsThatOfTheFirstVideoObjectWithoutRadar) {
    const auto first = makeTrack(Source::VideoObject, 3);
    const auto system = makeSystemTrack(first);
    system->updateState(makeTrack(Source::VideoObject, 8));
    system->updateIsConfident();
    EXPECT_TRUE(system->isConfident);
    first->isConfident = false;
    system->updateIsConfident();
    EXPECT_FALSE(system->isConfident);
}

TEST(Confidence, IsLostWithoutRadarAndVideoObjects) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoVura, 1));
    EXPECT_TRUE(system->isConfident);
    system->updateIsConfident();
    EXPECT_FALSE(system->isConfident);
}

/// One of the four labels, accessed through the public interface.
struct Label {
    const char* kind;
    bool SystemTrack::*voted;
    std::string Track::*name;
    double Track::*probability;
    void (SystemTrack::*update)(const Track&);
    std::string (Track::*getName)() const;
    double (Track::*getProbability)() const;
    double radarScale;  ///< factor of a probability returned for radar
};

std::ostream& operator<<(std::ostream& out, const Label& label) {
    return out << label.kind;
}

class SystemTrackLabel : public testing::TestWithParam<Label> {
protected:
    std::shared_ptr<Track> track(Source source, int id, const std::string& name,
                                 double probability) const {
        auto result = makeTrack(source, id);
        (*result).*GetParam().name = name;
        (*result).*GetParam().probability = probability;
        return result;
    }

    void update(SystemTrack& system, const Track& track) const {
        (system.*GetParam().update)(track);
    }
    bool voted(const SystemTrack& system) const { return system.*GetParam().voted; }
    std::string name(const Track& system) const { return (system.*GetParam().getName)(); }
    double probability(const Track& system) const { return (system.*GetParam().getProbability)(); }

    double scale = GetParam().radarScale;
};

TEST_P(SystemTrackLabel, IsTakenFromAVideoObject) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    EXPECT_FALSE(voted(*system));
    EXPECT_EQ(name(*system), "unknown");
    update(*system, *track(Source::VideoObject, 1, "first", 0.75));
    EXPECT_TRUE(voted(*system));
    EXPECT_EQ(name(*system), "first");
    EXPECT_EQ(probability(*system), 0.75);
    EXPECT_EQ((*system).*GetParam().name, "first");
    EXPECT_EQ((*system).*GetParam().probability, 0.75);
}

TEST_P(SystemTrackLabel, LeavesTheOtherLabelsAlone) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    const auto all = makeTrack(Source::VideoObject, 1);
    all->className = all->colorName = all->upperClothingColorName = all->lowerClothingColorName =
        "named";
    update(*system, *all);
    EXPECT_EQ(system->classVoted + system->colorVoted + system->upperClothingColorVoted +
                  system->lowerClothingColorVoted,
              1);
    EXPECT_EQ(name(*system), "named");
    int named = 0;
    for (const std::string& label :
         {system->className, system->colorName, system->upperClothingColorName,
          system->lowerClothingColorName}) {
        named += label == "named" ? 1 : 0;
    }
    EXPECT_EQ(named, 1);
}

TEST_P(SystemTrackLabel, IsTheLatestKnownOne) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    update(*system, *track(Source::VideoObject, 1, "first", 0.75));
    update(*system, *track(Source::VideoObject, 1, "second", 0.25));
    EXPECT_EQ(name(*system), "second");
    EXPECT_EQ(probability(*system), 0.25);
    update(*system, *track(Source::VideoObject, 1, "unknown", 0.9));
    EXPECT_EQ(name(*system), "second");
    EXPECT_EQ(probability(*system), 0.25);
}

TEST_P(SystemTrackLabel, IsUnknownOnlyByTheExactWord) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    update(*system, *track(Source::VideoObject, 1, "unknown", 0.5));
    EXPECT_FALSE(voted(*system));
    EXPECT_EQ(probability(*system), 0.0);
    update(*system, *track(Source::VideoObject, 1, "Unknown", 0.5));
    EXPECT_TRUE(voted(*system));
    update(*system, *track(Source::VideoObject, 1, "", 0.5));
    EXPECT_EQ(name(*system), "");
}

TEST_P(SystemTrackLabel, IsNotTakenFromOtherSources) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    for (const Source source : {Source::VideoVura, Source::Radar, Source::System}) {
        update(*system, *track(source, 1, "first", 0.75));
    }
    EXPECT_FALSE(voted(*system));
    EXPECT_EQ(name(*system), "unknown");
    EXPECT_EQ(probability(*system), 0.0);
}

TEST_P(SystemTrackLabel, ComesFromTheFirstRadarTrackUntilVideoNamesOne) {
    const auto system = makeSystemTrack(track(Source::Radar, 5, "of 5", 0.5));
    system->updateState(track(Source::Radar, 3, "of 3", 0.25));
    EXPECT_EQ(name(*system), "of 3");
    EXPECT_EQ(probability(*system), scale * 0.25);
    EXPECT_EQ((*system).*GetParam().name, "unknown");

    update(*system, *track(Source::VideoObject, 1, "seen", 0.75));
    EXPECT_EQ(name(*system), "seen");
    EXPECT_EQ(probability(*system), 0.75);
}

TEST_P(SystemTrackLabel, IsItsOwnWithoutARadarTrack) {
    const auto system = makeSystemTrack(makeTrack(Source::VideoVura, 1));
    (*system).*GetParam().name = "own";
    (*system).*GetParam().probability = 0.125;
    EXPECT_EQ(name(*system), "own");
    EXPECT_EQ(probability(*system), 0.125);
}

TEST_P(SystemTrackLabel, IsAskedOfTheTrackThroughItsGetters) {
    // A system track used as a sensor track returns the label of its radar track.
    const auto system = makeSystemTrack(makeTrack(Source::VideoObject, 1));
    SystemTrack layered(track(Source::Radar, 2, "layered", 0.5), 7);
    layered.source = Source::VideoObject;
    update(*system, layered);
    EXPECT_EQ(name(*system), "layered");
    EXPECT_EQ(probability(*system), scale * 0.5);
}

INSTANTIATE_TEST_SUITE_P(
    AllLabels, SystemTrackLabel,
    testing::Values(Label{"class", &SystemTrack::classVoted, &Track::className,
                          &Track::classProbability, &SystemTrack::updateClass, &Track::getClassName,
                          &Track::getClassProbability, 100.0},
                    Label{"color", &SystemTrack::colorVoted, &Track::colorName,
                          &Track::colorProbability, &SystemTrack::updateColor, &Track::getColorName,
                          &Track::getColorProbability, 1.0},
                    Label{"upperClothing", &SystemTrack::upperClothingColorVoted,
                          &Track::upperClothingColorName, &Track::upperClothingColorProbability,
                          &SystemTrack::updateUpperClothingColor, &Track::getUpperClothingColorName,
                          &Track::getUpperClothingColorProbability, 1.0},
                    Label{"lowerClothing", &SystemTrack::lowerClothingColorVoted,
                          &Track::lowerClothingColorName, &Track::lowerClothingColorProbability,
                          &SystemTrack::updateLowerClothingColor, &Track::getLowerClothingColorName,
                          &Track::getLowerClothingColorProbability, 1.0}),
    [](const auto& label) { return std::string(label.param.kind); });

TEST(SystemTrackClass, IsVotedByTheFirstTrackOfVideoObjects) {
    VeskarTest::Report report;
    report.className = "car";
    report.classProbability = 0.5;
    const auto seen = makeSystemTrack(makeTrack(report));
    EXPECT_TRUE(seen->classVoted);
    EXPECT_EQ(seen->getClassName(), "car");
    EXPECT_EQ(seen->getClassProbability(), 0.5);

    report.source = Source::Radar;
    const auto measured = makeSystemTrack(makeTrack(report));
    EXPECT_FALSE(measured->classVoted);
    EXPECT_EQ(measured->className, "unknown");
    EXPECT_EQ(measured->getClassName(), "car");
    EXPECT_EQ(measured->getClassProbability(), 50.0);
}

}  // namespace
