// SPDX-License-Identifier: Apache-2.0
#include "support/TrackFactory.h"
#include "track/ClassLabel.h"

#include <gtest/gtest.h>

namespace {

using Veskar::ClassLabel;
using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;
using VeskarTest::makeSystemTrack;
using VeskarTest::makeTrack;

std::shared_ptr<Track> trackOf(Source source, const std::string& className) {
    VeskarTest::Report report;
    report.source = source;
    report.className = className;
    return makeTrack(report);
}

/// A track with a user's own class name.
class Renamed : public Track {
public:
    explicit Renamed(const Track& track) : Track(track) {}
    std::string getClassName() const override { return "renamed"; }
};

class RenamedSystem : public SystemTrack {
public:
    using SystemTrack::SystemTrack;
    std::string getClassName() const override { return "renamed system"; }
};

TEST(ClassLabel, RefersToTheClassOfASensorTrack) {
    const auto track = trackOf(Source::Radar, "car");
    EXPECT_EQ(&ClassLabel(*track).text(), &track->className);
}

TEST(ClassLabel, RefersToTheVotedClassOfASystemTrack) {
    const auto system = makeSystemTrack(trackOf(Source::VideoObject, "car"));
    system->updateState(trackOf(Source::Radar, "bus"));
    EXPECT_EQ(&ClassLabel(*system).text(), &system->className);
    EXPECT_EQ(ClassLabel(*system).text(), system->getClassName());
}

TEST(ClassLabel, RefersToTheRadarTrackBehindASystemTrack) {
    const auto radar = trackOf(Source::Radar, "bus");
    const auto system = makeSystemTrack(radar);
    EXPECT_EQ(&ClassLabel(*system).text(), &radar->className);
    EXPECT_EQ(ClassLabel(*system).text(), system->getClassName());
}

TEST(ClassLabel, RefersToTheOwnClassWithoutRadarAndVote) {
    const auto system = makeSystemTrack(trackOf(Source::VideoVura, "bus"));
    EXPECT_EQ(&ClassLabel(*system).text(), &system->className);
    EXPECT_EQ(ClassLabel(*system).text(), "unknown");
}

TEST(ClassLabel, AsksSubclassesOfUsers) {
    const Renamed renamed(*trackOf(Source::Radar, "car"));
    EXPECT_EQ(ClassLabel(renamed).text(), "renamed");
    const RenamedSystem system(trackOf(Source::Radar, "car"), 1);
    EXPECT_EQ(ClassLabel(system).text(), "renamed system");
    const SystemTrack behind(std::make_shared<Renamed>(renamed), 2);
    EXPECT_EQ(ClassLabel(behind).text(), "renamed");
    EXPECT_EQ(behind.getClassName(), "renamed");
}

}  // namespace
