// SPDX-License-Identifier: Apache-2.0
#include "export/LayerPictures.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using Workbench::FusedTrack;
using Workbench::LayerPictures;

namespace {

FusedTrack moving(std::int32_t id, bool confirmed = true) {
    FusedTrack track;
    track.id = id;
    track.confirmed = confirmed;
    const Eigen::Matrix2d covariance = Eigen::Matrix2d::Identity();
    track.ground = Workbench::GroundPosition{{10.0, 1.0}, covariance, {4.0, -2.0}, covariance};
    track.box = {0.0, 0.25, 0.5, 0.75};
    track.imageRate = {1.0, -0.5};
    return track;
}

TEST(LayerPictures, ShowConfirmedTracksAtTheMoment) {
    LayerPictures pictures;
    pictures.replace("fused", {1.0, 1.0, Veskar::Radar, {moving(9), moving(3), moving(5, false)}});
    pictures.replace("radar", {1.25, 1.25, Veskar::Radar, {}});
    EXPECT_THAT(pictures.layers(), ElementsAre("fused", "radar"));
    EXPECT_TRUE(pictures.at("radar", 1.25).empty());
    const auto tracks = pictures.at("fused", 1.25);
    ASSERT_EQ(tracks.size(), 2);
    EXPECT_EQ(tracks[0].id, 9);
    EXPECT_EQ(tracks[1].id, 3);
    EXPECT_EQ(tracks[1].ground->position, Eigen::Vector2d(11.0, 0.5));
    EXPECT_EQ(tracks[1].box.left, 0.25);
    EXPECT_EQ(tracks[1].box.right, 0.75);
    EXPECT_EQ(tracks[1].box.bottom, 0.125);
    EXPECT_EQ(tracks[1].box.top, 0.625);
}

TEST(LayerPictures, ShowTheLastFrameOnly) {
    LayerPictures pictures;
    pictures.replace("fused", {1.0, 1.0, Veskar::Radar, {moving(9)}});
    pictures.replace("fused", {1.1, 1.1, Veskar::Radar, {moving(3)}});
    const auto tracks = pictures.at("fused", 1.1);
    ASSERT_EQ(tracks.size(), 1);
    EXPECT_EQ(tracks[0].id, 3);
}

}  // namespace
