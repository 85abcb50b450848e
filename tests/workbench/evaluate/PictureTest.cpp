// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Picture.h"

#include <gtest/gtest.h>

namespace Workbench {
namespace {

Picture::Reported reported(int id, double coasting) {
    Picture::Reported result;
    result.track.id = id;
    result.track.position = {10.0, 1.0};
    result.track.velocity = {2.0, -4.0};
    result.track.covariance << 1.0, 0.5, 0.5, 2.0;
    result.track.velocityCovariance << 4.0, 0.0, 0.0, 8.0;
    result.coasting = coasting;
    return result;
}

TEST(Picture, IsEmptyBeforeAnyReport) {
    EXPECT_TRUE(Picture(0.5).at(3.0).empty());
}

TEST(Picture, MovesTracksToTheMomentOfTheQuestion) {
    Picture picture(0.5);
    picture.replace(3.0, {reported(7, 0.0)});
    const std::vector<JudgedTrack> shown = picture.at(3.25);
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].id, 7);
    EXPECT_EQ(shown[0].position, Eigen::Vector2d(10.5, 0.0));
    // Without correlation of position and velocity: P + t^2 V, with t^2 = 1/16.
    EXPECT_EQ(shown[0].covariance, (Eigen::Matrix2d() << 1.25, 0.5, 0.5, 2.5).finished());
}

TEST(Picture, ShowsATrackUpToTheCoastingLimit) {
    Picture picture(0.5);
    picture.replace(3.0, {reported(7, 0.0), reported(8, 0.25)});
    EXPECT_EQ(picture.at(3.25).size(), 2U);
    EXPECT_EQ(picture.at(3.375).size(), 1U);
    EXPECT_EQ(picture.at(3.5).size(), 1U);
    EXPECT_EQ(picture.at(3.625).size(), 0U);
}

TEST(Picture, ForgetsWhatIsNoLongerReported) {
    Picture picture(0.5);
    picture.replace(3.0, {reported(7, 0.0)});
    picture.replace(3.125, {reported(8, 0.0)});
    const std::vector<JudgedTrack> shown = picture.at(3.125);
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].id, 8);
}

}  // namespace
}  // namespace Workbench
