// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Installation.h"
#include "Process.h"
#include "export/GeoJsonExport.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using Workbench::FusedFrame;
using Workbench::FusedTrack;
using Workbench::GeoJsonExport;

namespace {

FusedTrack trackAt(int id, double latitude, double longitude) {
    FusedTrack track;
    track.id = id;
    track.ground = Workbench::GroundPosition{Eigen::Vector2d::Zero(), Eigen::Matrix2d::Zero(),
                                             Eigen::Vector2d::Zero(), Eigen::Matrix2d::Zero()};
    track.geo = ::Dbus::GeoLocation::Position{};
    track.geo->latitude = latitude;
    track.geo->longitude = longitude;
    return track;
}

class GeoJson : public testing::Test {
protected:
    /// Adds a frame of the layer "radar".
    void add(double time, std::vector<FusedTrack> tracks) {
        frames.push_back({time, time, Veskar::Radar, std::move(tracks)});
    }

    /// @return the features of the frames
    json features() {
        const std::string path = directory / "out";
        Workbench::OutputFile output(path);
        GeoJsonExport format(output, header);
        for (const FusedFrame& frame : frames) {
            format.add("radar", frame);
        }
        format.finish();
        output.commit();
        const json document = json::parse(VeskarTest::slurp(path));
        EXPECT_EQ(document["type"], "FeatureCollection");
        return document["features"];
    }

    VeskarTest::TemporaryDirectory directory;
    Workbench::RecordingHeader header = VeskarTest::installation();
    std::vector<FusedFrame> frames;
};

TEST_F(GeoJson, ATrackIsALineWithTimesAndProperties) {
    FusedTrack first = trackAt(3, 55.7, 13.2);
    FusedTrack second = trackAt(3, 55.8, 13.3);
    second.confirmed = true;
    second.speed = 1.5;
    second.labels.objectClass = {"human", 0.75};
    add(1.0, {first});
    add(2.0, {second});
    add(2.5, {first});
    const json lines = features();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0]["type"], "Feature");
    EXPECT_EQ(lines[0]["geometry"],
              json::parse(R"({"type":"LineString","coordinates":[[13.2,55.7],[13.3,55.8],)"
                          R"([13.2,55.7]]})"));
    EXPECT_EQ(lines[0]["properties"],
              json::parse(R"({"layer":"radar","id":3,"class":"human","classProbability":0.75,)"
                          R"("confirmedAt":2,"times":[1,2,2.5],"speeds":[null,1.5,null]})"));
}

TEST_F(GeoJson, ATrackSeenOnceIsAPoint) {
    add(1.0, {trackAt(3, 55.7, 13.2)});
    const json lines = features();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_EQ(lines[0]["geometry"], json::parse(R"({"type":"Point","coordinates":[13.2,55.7]})"));
}

TEST_F(GeoJson, AnIdThatIsUsedAgainBeginsAnotherLine) {
    add(1.0, {trackAt(3, 55.7, 13.2)});
    add(1.0 + GeoJsonExport::longestGap, {trackAt(3, 55.7, 13.3)});
    add(1.1 + 2.0 * GeoJsonExport::longestGap, {trackAt(3, 55.7, 13.4)});
    const json lines = features();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0]["properties"]["times"], json::parse("[1, 3]"));
    EXPECT_EQ(lines[1]["properties"]["times"], json::parse("[5.1]"));
}

TEST_F(GeoJson, ALineThatHasEndedIsWrittenBeforeOthersEnd) {
    add(0.0, {trackAt(1, 55.7, 13.2), trackAt(2, 55.7, 13.2)});
    add(0.5, {trackAt(2, 55.7, 13.3)});
    for (const double time : {1.0, 2.0, 3.0, 4.0}) {
        add(time, {trackAt(1, 55.7, 13.3)});
    }
    const json lines = features();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0]["properties"]["id"], 2);
    EXPECT_EQ(lines[1]["properties"]["times"].size(), 5);
}

TEST_F(GeoJson, StatesUtcAndTheDeviceWhereTheyAreKnown) {
    header.epoch = 1777636800.0;
    header.site = Workbench::Site{55.7, 13.2, 140.0};
    header.name = "gate";
    add(1.0, {trackAt(3, 55.7, 13.2)});
    const json lines = features();
    ASSERT_EQ(lines.size(), 2);
    EXPECT_EQ(lines[0]["geometry"], json::parse(R"({"type":"Point","coordinates":[13.2,55.7]})"));
    EXPECT_EQ(lines[0]["properties"],
              json::parse(R"({"layer":"device","name":"gate","heading":140})"));
    EXPECT_EQ(lines[1]["properties"]["coordTimes"],
              json::parse(R"(["2026-05-01T12:00:01.000000Z"])"));
}

TEST_F(GeoJson, LeavesOutWhatIsNotOnTheGround) {
    FusedTrack track = trackAt(3, 55.7, 13.2);
    track.ground.reset();
    track.geo.reset();
    add(1.0, {track});
    EXPECT_EQ(features(), json::array());
}

TEST_F(GeoJson, RefusesGroundWithoutAPlaceOnEarth) {
    FusedTrack track = trackAt(3, 55.7, 13.2);
    track.geo.reset();
    add(1.0, {track});
    EXPECT_THROW(features(), Workbench::InputError);
}

}  // namespace
