// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>

#include "calibrate/Pairing.h"
#include "host/TestInstallation.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr double speed = 10.0;  // m/s

/// Of the radar, for a person who comes straight at it, on the ground, m.
double distanceAt(double time) {
    return 60.0 - speed * time;
}

Workbench::CalibrationScene approach(const Veskar::Host::Installation& installation) {
    const Veskar::Host::Projection camera(installation.camera.build());
    const Eigen::Vector3d& radar = installation.radar.mounting.position;
    Workbench::CalibrationScene scene;
    for (int i = 0; i < 46; ++i) {
        const double time = 0.1 * i;
        const double x = radar[0] + distanceAt(time);
        Veskar::Host::RadarReport heard;
        heard.id = 1;
        heard.range = std::hypot(distanceAt(time), radar[2]);
        Veskar::Host::VideoReport seen;
        seen.id = 1;
        const Eigen::Vector2d foot = camera.position({x, radar[1], 0.0});
        const double top = camera.position({x, radar[1], 1.75})[1];
        seen.box = {foot[0] - 0.01, foot[1], foot[0] + 0.01, top};
        seen.labels.objectClass = {"human", 0.9};
        scene.sightings.add({Veskar::Radar, time, time, {heard}});
        scene.sightings.add({Veskar::VideoObject, time, time, {seen}});
    }
    scene.moments = momentsOf(scene.sightings);
    return scene;
}

}  // namespace

TEST(Pairing, ExpectsTheAccelerationThatVideosTrackerHasFollowed) {
    const Veskar::Host::Installation installation = VeskarTest::testInstallation();
    std::vector<Workbench::CalibrationScene> scenes;
    scenes.push_back(approach(installation));
    const auto samples = Workbench::pairSamples(installation, Workbench::Placement::Zero(), scenes,
                                                Veskar::Host::radians(2.0));
    ASSERT_GE(samples.size(), 3U);
    const Veskar::Host::Projection camera(installation.camera.build());
    const Eigen::Vector3d& radar = installation.radar.mounting.position;
    const auto rowAt = [&](double time) {
        return camera.position({radar[0] + distanceAt(time), radar[1], 0.0})[1];
    };
    for (const Workbench::CalibrationSample& sample : samples) {
        const double before = sample.heard.time - 0.27;
        constexpr double step = 0.1;
        const double expected =
            (rowAt(before + step) + rowAt(before - step) - 2.0 * rowAt(before)) / (step * step);
        // The feet are centimetres in front of the reflection; in 0.27 s it grows by a third.
        EXPECT_NEAR(sample.acceleration[1] / expected, 1.0, 0.03) << sample.heard.time;
    }
}
