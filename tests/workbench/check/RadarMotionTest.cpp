// SPDX-License-Identifier: Apache-2.0
// Radar tracks that move as reported, and others.
#include <veskar-host/Projection.h>

#include "check/RadarMotion.h"

#include <cmath>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

/// Thirty objects that walk at 2 m/s for three seconds each, at different places and in different
/// directions; @p change introduces a fault.
template <typename Change>
RadarMotion watched(Change change) {
    RecordingHeader header;
    header.radar.mounting.position = {0.0, 0.0, 4.0};
    RadarMotion motion(header);
    for (int frame = 0; frame < 30; ++frame) {
        const double time = 0.1 * frame;
        SensorFrame radar{Veskar::Radar, time, time, {}};
        for (int id = 0; id < 30; ++id) {
            const double course = radians(37.0 * id + 20.0);
            const Eigen::Vector2d velocity(2.0 * std::cos(course), 2.0 * std::sin(course));
            const Eigen::Vector2d place =
                Eigen::Vector2d(15.0 + id, -10.0 + 0.7 * id) + time * velocity;
            RadarReport report;
            report.id = id;
            report.range = std::hypot(place.norm(), 4.0);
            report.azimuth = -degrees(std::atan2(place[1], place[0]));
            report.speed = 2.0;
            report.direction = -degrees(course);
            report.radialSpeed = place.normalized().dot(velocity);
            // A missed detection does not interrupt the track.
            report.coasting = frame % 7 == 3 ? 0.1 : 0.0;
            change(report);
            radar.tracks.emplace_back(report);
        }
        motion.add(radar);
    }
    return motion;
}

TEST(RadarMotion, AgreesWithTracksThatMoveAsTheySay) {
    const RadarMotion motion = watched([](RadarReport&) {});
    EXPECT_EQ(motion.ways(AzimuthForm::Stated), 60U);
    EXPECT_GT(motion.share(AzimuthForm::Stated, DirectionForm::Stated), 0.99);
    EXPECT_NEAR(motion.speedFactor(AzimuthForm::Stated).value(), 1.0, 0.02);
    EXPECT_NEAR(motion.radialSpeedFactor().value(), 1.0, 0.1);
}

TEST(RadarMotion, TellsWhatADirectionMeans) {
    const auto expect = [](DirectionForm form, auto change) {
        const RadarMotion motion = watched(change);
        EXPECT_GT(motion.share(AzimuthForm::Stated, form), 0.99) << static_cast<int>(form);
        EXPECT_LT(motion.share(AzimuthForm::Stated, DirectionForm::Stated), 0.4);
    };
    expect(DirectionForm::Turned, [](RadarReport& r) { r.direction = *r.direction + 180.0; });
    expect(DirectionForm::Mirrored, [](RadarReport& r) { r.direction = -*r.direction; });
    expect(DirectionForm::Radians, [](RadarReport& r) { r.direction = radians(*r.direction); });
}

TEST(RadarMotion, TellsWhatAnAzimuthMeans) {
    const RadarMotion motion = watched([](RadarReport& r) { r.azimuth *= -1.0; });
    EXPECT_GT(motion.share(AzimuthForm::Mirrored, DirectionForm::Stated), 0.99);
    EXPECT_LT(motion.share(AzimuthForm::Stated, DirectionForm::Stated), 0.4);
}

TEST(RadarMotion, MeasuresTheUnitOfTheSpeed) {
    const RadarMotion motion = watched([](RadarReport& r) {
        r.speed = 3.6 * *r.speed;
        r.radialSpeed = -3.6 * *r.radialSpeed;
    });
    EXPECT_NEAR(motion.speedFactor(AzimuthForm::Stated).value(), 3.6, 0.1);
    EXPECT_NEAR(motion.radialSpeedFactor().value(), -3.6, 0.4);
}

TEST(RadarMotion, SaysNothingOfObjectsThatStand) {
    const RadarMotion motion = watched([](RadarReport& r) {
        r.range = 20.0;
        r.azimuth = 0.0;
    });
    EXPECT_EQ(motion.ways(AzimuthForm::Stated), 0U);
    EXPECT_FALSE(motion.speedFactor(AzimuthForm::Stated).has_value());
    EXPECT_FALSE(motion.radialSpeedFactor().has_value());
}

}  // namespace
}  // namespace Workbench
