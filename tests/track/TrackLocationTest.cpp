// SPDX-License-Identifier: Apache-2.0
// Locations with a geolocation service simulated by the test.
#include <veskar/Track.h>

#include "support/TrackFactory.h"

#include <gtest/gtest.h>

namespace {

using Dbus::GeoLocation::Position;

/// The service's answer, and the arguments of the query.
struct Service {
    Position answer;
    double range = 0.0;
    double azimuth = 0.0;
};
Service service;

}  // namespace

// Replaces the system bus client in this program.
Dbus::GeoLocation::Position Dbus::GeoLocation::getPosition(double range, double azimuth) {
    service.range = range;
    service.azimuth = azimuth;
    return service.answer;
}

namespace {

class TrackLocation : public testing::Test {
protected:
    TrackLocation() { service = Service(); }

    std::shared_ptr<Veskar::Track> track = VeskarTest::makeTrack(Veskar::Source::Radar, 1);
};

TEST_F(TrackLocation, KeepsTheSphericalLocation) {
    track->setLocation({12.0, -30.0, 5.0});
    ASSERT_TRUE(track->getLocation().has_value());
    EXPECT_EQ(track->getLocation()->range, 12.0);
    EXPECT_EQ(track->getLocation()->azimuth, -30.0);
    EXPECT_EQ(track->getLocation()->elevation, 5.0);
}

TEST_F(TrackLocation, AsksForThePositionAtRangeAndAzimuth) {
    track->setLocation({12.0, -30.0, 5.0});
    EXPECT_EQ(service.range, 12.0);
    EXPECT_EQ(service.azimuth, -30.0);
}

TEST_F(TrackLocation, KeepsAPositionWithAFix) {
    service.answer = {13.25, 55.75, 20.0, true};
    track->setLocation({12.0, 0.0, 0.0});
    ASSERT_TRUE(track->getGeoLocation().has_value());
    EXPECT_EQ(track->getGeoLocation()->longitude, 13.25);
    EXPECT_EQ(track->getGeoLocation()->latitude, 55.75);
    EXPECT_EQ(track->getGeoLocation()->altitude, 20.0);
    EXPECT_TRUE(track->getGeoLocation()->valid);
}

TEST_F(TrackLocation, HasNoPositionBeforeTheFirstFix) {
    service.answer = {13.25, 55.75, 20.0, false};
    track->setLocation({12.0, 0.0, 0.0});
    EXPECT_TRUE(track->getLocation().has_value());
    EXPECT_FALSE(track->getGeoLocation().has_value());
}

TEST_F(TrackLocation, KeepsTheLastPositionWhenTheFixIsLost) {
    service.answer = {13.25, 55.75, 20.0, true};
    track->setLocation({12.0, 0.0, 0.0});
    service.answer = {0.0, 0.0, 0.0, false};
    track->setLocation({15.0, 0.0, 0.0});
    EXPECT_EQ(track->getLocation()->range, 15.0);
    ASSERT_TRUE(track->getGeoLocation().has_value());
    EXPECT_EQ(track->getGeoLocation()->longitude, 13.25);
}

}  // namespace
