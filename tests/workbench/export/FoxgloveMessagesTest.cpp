// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>

#include "HostLibrary.h"
#include "Installation.h"
#include "export/FoxgloveMessages.h"
#include "export/FoxgloveSchemas.h"

#include <cmath>
#include <limits>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Workbench::FoxgloveMessages;
using Workbench::FusedFrame;
using Workbench::FusedTrack;
using Workbench::Json;

namespace {

FusedTrack car() {
    FusedTrack track;
    track.id = 7;
    track.confirmed = true;
    track.probability = 0.5;
    track.labels.objectClass = {"car", 1.0};
    Eigen::Matrix2d covariance;
    covariance << 4.0, 0.0, 0.0, 1.0;
    track.ground = Workbench::GroundPosition{{30.0, 0.0}, covariance, {0.0, -8.0}, covariance};
    track.speed = 8.0;
    track.direction = 90.0;  // to the right
    track.box = {-0.5, 0.0, 0.5, 0.5};
    return track;
}

/// Whether a message has the members of its schema, with their types.
void expectConforms(const Json& value, const Json& schema, const std::string& place) {
    const std::string type = schema["type"];
    if (type == "object") {
        ASSERT_TRUE(value.is_object()) << place;
        if (!schema.contains("properties")) {
            return;
        }
        EXPECT_EQ(value.size(), schema["properties"].size()) << place;
        for (const auto& [name, part] : schema["properties"].items()) {
            ASSERT_TRUE(value.contains(name)) << place << name;
            expectConforms(value[name], part, place + name + ".");
        }
    } else if (type == "array") {
        ASSERT_TRUE(value.is_array()) << place;
        for (const Json& item : value) {
            expectConforms(item, schema["items"], place + "[].");
        }
    } else {
        EXPECT_TRUE(type == "string"    ? value.is_string()
                    : type == "boolean" ? value.is_boolean()
                    : type == "integer" ? value.is_number_integer()
                                        : value.is_number())
            << place << value;
    }
}

class Foxglove : public testing::Test {
protected:
    Workbench::RecordingHeader header = VeskarTest::installation();
    const FoxgloveMessages messages{header};
    const FusedFrame frame{2.5, 2.75, Veskar::Radar, {car()}};
};

TEST_F(Foxglove, MessagesHaveTheMembersOfTheirSchemas) {
    header.site = Workbench::Site{55.7, 13.2, 0.0};
    FusedFrame placed = frame;
    placed.tracks[0].geo = ::Dbus::GeoLocation::Position{};
    const auto expectKnown = [](const char* name, const Json& message) {
        const Json schema = Workbench::foxgloveSchema(name);
        EXPECT_EQ(schema["title"], std::string("foxglove.") + name);
        expectConforms(message, schema, std::string(name) + ": ");
    };
    expectKnown("SceneUpdate", messages.sceneOf("fused", placed));
    expectKnown("LocationFixes", messages.locationsOf("fused", placed));
    expectKnown("ImageAnnotations", messages.annotationsOf("fused", placed));
    expectKnown("FrameTransforms", messages.mountings(2.5));
    expectKnown("GeoJSON", messages.map());
}

TEST_F(Foxglove, TimesAreWholeMicroseconds) {
    EXPECT_EQ(messages.nanoseconds(2.5), 2'500'000'000);
    header.epoch = 1777636800.25;
    EXPECT_EQ(messages.nanoseconds(0.000001), 1777636800250001000);
    const Json stamp = messages.sceneOf("fused", frame)["deletions"][0]["timestamp"];
    EXPECT_EQ(stamp, Json::parse(R"({"sec":1777636802,"nsec":750000000})"));
    header.epoch.reset();
    EXPECT_THROW(messages.nanoseconds(-0.5), Workbench::InputError);
    EXPECT_THROW(messages.nanoseconds(5e9), Workbench::InputError);
    EXPECT_THROW(messages.nanoseconds(std::nan("")), Workbench::InputError);
}

TEST_F(Foxglove, ScenesShowWhereTracksAreAndWhereTheyGo) {
    const Json entity = messages.sceneOf("fused", frame)["entities"].at(0);
    EXPECT_EQ(entity["id"], "fused 7");
    const Json cube = entity["cubes"].at(0);
    EXPECT_GT(cube["pose"]["position"]["x"], 30.5);  // behind the point that is nearest
    EXPECT_LT(cube["pose"]["position"]["x"], 33.0);
    EXPECT_NEAR(cube["pose"]["orientation"]["z"], -std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(cube["pose"]["orientation"]["w"], std::sqrt(0.5), 1e-9);
    const Json arrow = entity["arrows"].at(0);
    EXPECT_EQ(arrow["shaft_length"], 8.0);
    EXPECT_NEAR(arrow["pose"]["orientation"]["z"], -std::sqrt(0.5), 1e-9);
    EXPECT_EQ(entity["texts"].at(0)["text"], "7 car");
}

TEST_F(Foxglove, WhatIsUnknownIsLeftOut) {
    constexpr double unstated = std::numeric_limits<double>::quiet_NaN();
    FusedFrame bare = frame;
    FusedTrack& track = bare.tracks[0];
    track.probability = unstated;
    track.ground->velocity.setConstant(unstated);
    track.box = {unstated, unstated, unstated, unstated};
    EXPECT_TRUE(messages.annotationsOf("fused", bare)["points"].empty());
    EXPECT_TRUE(messages.locationsOf("fused", bare)["fixes"].empty());
    const Json entity = messages.sceneOf("fused", bare)["entities"].at(0);
    EXPECT_TRUE(entity["arrows"].empty());
    EXPECT_THAT(entity["metadata"].dump(), testing::Not(testing::HasSubstr("probability")));
    track.ground.reset();
    EXPECT_TRUE(messages.sceneOf("fused", bare)["entities"].empty());
}

TEST_F(Foxglove, BoxesAreInPixels) {
    header.camera.resolution = {1000, 800};
    const Json outline = messages.annotationsOf("fused", frame)["points"].at(0);
    EXPECT_EQ(outline["points"],
              Json::parse(R"([{"x":250.0,"y":200.0},{"x":750.0,"y":200.0},{"x":750.0,"y":400.0},
                              {"x":250.0,"y":400.0}])"));
}

TEST_F(Foxglove, CovariancesAreEastAndNorth) {
    header.site = Workbench::Site{55.7, 13.2, 90.0};  // forward is east
    FusedFrame placed = frame;
    placed.tracks[0].geo = ::Dbus::GeoLocation::Position{};
    const Json covariance =
        messages.locationsOf("fused", placed)["fixes"].at(0)["position_covariance"];
    ASSERT_EQ(covariance.size(), 9);
    EXPECT_NEAR(covariance[0], 4.0, 1e-9);  // along the sight, which is east
    EXPECT_NEAR(covariance[4], 1.0, 1e-9);
    EXPECT_NEAR(covariance[1], 0.0, 1e-9);
}

TEST_F(Foxglove, TheMapShowsTheDeviceAndItsSight) {
    header.site = Workbench::Site{55.7, 13.2, 90.0};
    const Json map = Json::parse(messages.map()["geojson"].get<std::string>());
    ASSERT_EQ(map["features"].size(), 3);
    EXPECT_EQ(map["features"][0]["geometry"]["coordinates"], Json::parse("[13.2,55.7]"));
    for (const std::size_t sector : {1, 2}) {
        const Json ring = map["features"][sector]["geometry"]["coordinates"].at(0);
        EXPECT_EQ(ring.front(), ring.back());
        double twiceArea = 0.0;
        for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
            const auto at = [&](std::size_t point, std::size_t axis) {
                return ring[point][axis].get<double>() - ring[0][axis].get<double>();
            };
            twiceArea += at(i, 0) * at(i + 1, 1) - at(i + 1, 0) * at(i, 1);
        }
        EXPECT_GT(twiceArea, 0.0) << "counter-clockwise";
        EXPECT_GT(ring[8][0], 13.2) << "to the east";
    }
}

TEST_F(Foxglove, MountingsAreThoseOfTheSensors) {
    header.camera.mounting.position = {0.5, 0.25, 5.0};
    header.camera.mounting.yaw = 90.0;
    header.camera.mounting.pitch = 0.0;
    header.camera.mounting.roll = 0.0;
    const Json camera = messages.mountings(1.0)["transforms"].at(0);
    EXPECT_EQ(camera["child_frame_id"], "camera");
    EXPECT_EQ(camera["translation"], Json::parse(R"({"x":0.5,"y":0.25,"z":5.0})"));
    EXPECT_NEAR(camera["rotation"]["z"], std::sqrt(0.5), 1e-9);  // to the left
    EXPECT_NEAR(camera["rotation"]["w"], std::sqrt(0.5), 1e-9);
}

}  // namespace
