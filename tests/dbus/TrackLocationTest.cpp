// SPDX-License-Identifier: Apache-2.0
// From the service on the bus to the geographic position of a track. The process-wide clients live
// until the program ends, so each test runs in its own process.
#include <veskar/GeoLocation.h>
#include <veskar/RadarStatus.h>
#include <veskar/Track.h>

#include "support/FakeService.h"
#include "support/MainLoop.h"
#include "support/OwnProcess.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <gtest/gtest.h>

using namespace VeskarTest;
using Veskar::Source;

namespace {

const FakeService::Member getAllGeo{"/com/nolt/GeoLocation1", "org.freedesktop.DBus.Properties",
                                    "GetAll"};
const FakeService::Member geoChanged{"/com/nolt/GeoLocation1", "org.freedesktop.DBus.Properties",
                                     "PropertiesChanged"};
const FakeService::Member getAllRadar{"/com/nolt/Radar1", "org.freedesktop.DBus.Properties",
                                      "GetAll"};
const FakeService::Member radarChanged{"/com/nolt/Radar1", "org.freedesktop.DBus.Properties",
                                       "PropertiesChanged"};

void locateTracks() {
    const PrivateBus bus;
    FakeService service("com.nolt.GeoLocation1");
    service.answer(getAllGeo, dictionary({number("latitude", 55.0), number("longitude", 13.0),
                                          number("heading", 0.0), truth("valid_pos", false)}));
    MainLoop loop;
    const auto change = [&](const Body& entry) {
        service.emit(geoChanged, changed("com.nolt.GeoLocation1", {entry}));
    };
    const auto isValid = [] { return Dbus::GeoLocation::getPosition(0.0, 0.0).valid; };
    const auto track = makeTrack(Source::Radar, 1);

    loop.asThreadDefault([&] { track->setLocation({100.0, 90.0, 2.0}); });
    ASSERT_TRUE(track->location.has_value());
    EXPECT_EQ(track->location->range, 100.0);
    EXPECT_EQ(track->location->azimuth, 90.0);
    EXPECT_EQ(track->location->elevation, 2.0);
    EXPECT_FALSE(track->geoLocation.has_value()) << "the device has no fix";

    change(truth("valid_pos", true));
    ASSERT_TRUE(loop.iterateUntil(isValid));
    track->setLocation({100.0, 90.0, 2.0});
    ASSERT_TRUE(track->geoLocation.has_value());
    EXPECT_TRUE(track->geoLocation->valid);
    // At 55 degrees the client uses 111259 m per degree to the north.
    EXPECT_NEAR(track->geoLocation->latitude, 55.0 + 100.0 / 111259.0, 1e-7);
    EXPECT_NEAR(track->geoLocation->longitude, 13.0, 1e-12);

    change(truth("valid_pos", false));
    ASSERT_TRUE(loop.iterateUntil([&] { return !isValid(); }));
    const double known = track->geoLocation->latitude;
    track->setLocation({900.0, 90.0, 2.0});
    EXPECT_EQ(track->location->range, 900.0);
    ASSERT_TRUE(track->geoLocation.has_value());
    EXPECT_EQ(track->geoLocation->latitude, known) << "the last known position stays";

    change(truth("valid_pos", true));
    ASSERT_TRUE(loop.iterateUntil(isValid));
    track->setLocation({900.0, 90.0, 2.0});
    EXPECT_GT(track->geoLocation->latitude, known);
}

void locateTracksWithoutBus() {
    leaveSystemBus();
    const SyslogCapture log;
    const auto track = makeTrack(Source::Radar, 1);
    track->setLocation({100.0, 90.0, 2.0});
    track->setLocation({200.0, 90.0, 2.0});
    EXPECT_EQ(track->location->range, 200.0);
    EXPECT_FALSE(track->geoLocation.has_value());
    EXPECT_EQ(log.errors().size(), 1U) << "the client is made once";
}

void readRadarStatus() {
    const PrivateBus bus;
    FakeService service("com.nolt.Radar1");
    service.answer(getAllRadar,
                   dictionary({truth("Enabled", false),
                               entries("FailureStatus", {status("blocked", 2, true)})}));
    MainLoop loop;
    loop.asThreadDefault([] { Dbus::RadarStatus::init(); });
    EXPECT_EQ(service.calls(getAllRadar), 1) << "init makes the client";
    EXPECT_FALSE(Dbus::RadarStatus::getIsEnabled());
    EXPECT_EQ(Dbus::RadarStatus::getFailure().at("blocked"), std::make_pair(2, true));
    EXPECT_EQ(Dbus::RadarStatus::getRadarProfile(), "area");
    loop.start();
    service.emit(radarChanged, changed("com.nolt.Radar1", {text("RadarProfile", "road")}));
    EXPECT_TRUE(loop.waitUntil([] { return Dbus::RadarStatus::getRadarProfile() == "road"; }));
    loop.stop();
    Dbus::RadarStatus::init();
    EXPECT_EQ(service.calls(getAllRadar), 1) << "there is one client";
}

}  // namespace

TEST_F(ProcessWideDeathTest, TracksTakeTheirGeographicPositionFromTheServiceAndKeepItOnLoss) {
    EXPECT_IN_OWN_PROCESS(locateTracks);
}

TEST_F(ProcessWideDeathTest, TracksHaveNoGeographicPositionWithoutABus) {
    EXPECT_IN_OWN_PROCESS(locateTracksWithoutBus);
}

TEST_F(ProcessWideDeathTest, TheRadarsStatusIsReadThroughOneClient) {
    EXPECT_IN_OWN_PROCESS(readRadarStatus);
}
