// SPDX-License-Identifier: Apache-2.0
// The geographic position of a radar target on a device, from Track::setLocation and the
// geolocation service, and in a replay, from the site alone.
#include <veskar-host/FusionPipeline.h>
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/HostAdapter.h>

#include "host/TestInstallation.h"
#include "support/FakeService.h"
#include "support/MainLoop.h"
#include "support/PrivateBus.h"

#include <cmath>
#include <optional>
#include <random>

#include <gtest/gtest.h>

using namespace VeskarTest;
using Dbus::GeoLocation::Position;
using Veskar::Host::Site;

namespace {

const FakeService::Member getAll{"/com/nolt/GeoLocation1", "org.freedesktop.DBus.Properties",
                                 "GetAll"};
const FakeService::Member propertiesChanged{"/com/nolt/GeoLocation1",
                                            "org.freedesktop.DBus.Properties", "PropertiesChanged"};

/// A device whose position and heading the test sets. The underlying client lives as long as the
/// process, so only one test can create it.
class Device {
public:
    Device() : service_("com.nolt.GeoLocation1") {
        service_.answer(getAll, dictionary({truth("valid_pos", true)}));
        loop_.asThreadDefault([] { Dbus::GeoLocation::getPosition(0.0, 0.0); });
    }

    void place(const Site& site) {
        service_.emit(propertiesChanged,
                      changed("com.nolt.GeoLocation1", {number("latitude", site.latitude),
                                                        number("longitude", site.longitude),
                                                        number("heading", site.heading)}));
        ASSERT_TRUE(loop_.iterateUntil([&] {
            const Position here = Dbus::GeoLocation::getPosition(0.0, 0.0);
            return here.latitude == site.latitude && here.longitude == site.longitude;
        }));
    }

private:
    PrivateBus bus_;
    FakeService service_;
    MainLoop loop_;
};

/// A radar target as the adapter passes it to the fusion, from a report in the radar's own frame.
std::shared_ptr<Veskar::Track> targetAt(const Site& site, const Veskar::Host::Mounting& radar,
                                        double range, double azimuth) {
    Veskar::Host::Installation installation = testInstallation();
    installation.site = site;
    installation.radar.mounting = radar;
    Veskar::Host::RadarReport report;
    report.id = 1;
    report.range = range;
    report.azimuth = azimuth;
    report.radialSpeed = 0.0;
    const Veskar::Host::HostAdapter adapter(installation, configuration(), {});
    return adapter.convert({Veskar::Radar, 5.0, 5.1, {report}}, 0.0, 0.0).at(0);
}

/// The same target with a position from the device's service.
Position askDevice(const Veskar::Track& target) {
    Veskar::Track asked = target;
    asked.geoLocation.reset();
    asked.setLocation(*target.location);
    return asked.geoLocation.value_or(Position{});
}

/// A position's offset to the east and north of the site, on a scale in degrees per metre. The
/// device's scale differs by up to half a percent from the replay's, which is that of the
/// ellipsoid; the directions must agree.
Eigen::Vector2d offset(const Position& position, const Site& site, const Position& east,
                       const Position& north) {
    return {(position.longitude - site.longitude) / (east.longitude - site.longitude),
            (position.latitude - site.latitude) / (north.latitude - site.latitude)};
}

}  // namespace

TEST(DevicePosition, IsWhereAReplayPutsIt) {
    Device device;

    // Without a site, the pipeline uses the position from the device's service.
    device.place({55.0, 13.0, 0.0});
    std::optional<Position> told;
    const auto take = [&told](const Veskar::Host::FusedFrame& frame) {
        told = frame.tracks.empty() ? std::nullopt : frame.tracks.front().geo;
    };
    Veskar::Host::RadarReport report;
    report.id = 1;
    report.range = 100.0;
    report.radialSpeed = 0.0;
    const auto radarFrame = [&report](double time) {
        return Veskar::Host::SensorFrame{Veskar::Radar, time, time, {report}};
    };
    Veskar::Host::FusionPipeline live(testInstallation(), configuration(), take);
    live.push({Veskar::VideoObject, 500.0, 500.0, {}});
    live.push(radarFrame(500.05));
    ASSERT_TRUE(told);
    EXPECT_NEAR(told->latitude, 55.0 + 100.0 / 111300.0, 1e-5);
    EXPECT_NEAR(told->longitude, 13.0, 2e-5);
    // A replay does not query the machine that it runs on.
    Veskar::Host::FusionPipeline::Options options;
    options.asksForPosition = false;
    Veskar::Host::FusionPipeline replay(testInstallation(), configuration(), take, {}, options);
    replay.push({Veskar::VideoObject, 500.0, 500.0, {}});
    replay.push(radarFrame(500.05));
    EXPECT_FALSE(told);

    // Straight ahead of a device that heads north; report at 0 degrees.
    const Site northward{55.0, 13.0, 0.0};
    device.place(northward);
    const auto ahead = targetAt(northward, {}, 100.0, 0.0);
    EXPECT_NEAR(ahead->location->azimuth, 90.0, 1e-9);
    for (const Position& position : {askDevice(*ahead), *ahead->geoLocation}) {
        EXPECT_TRUE(position.valid);
        EXPECT_GT(position.latitude, 55.0 + 99.0 / 111400.0);
        EXPECT_NEAR(position.longitude, 13.0, 1e-9);
    }
    // To its right, clockwise from straight ahead, is east.
    const auto right = targetAt(northward, {}, 100.0, 90.0);
    EXPECT_NEAR(right->location->azimuth, 0.0, 1e-9);
    EXPECT_GT(askDevice(*right).longitude, 13.0 + 99.0 / 111400.0);

    std::mt19937 random(11);
    const auto anyOf = [&](double least, double most) {
        return std::uniform_real_distribution<double>(least, most)(random);
    };
    for (int i = 0; i < 500; ++i) {
        const Site site{anyOf(-80.0, 80.0), anyOf(-179.0, 179.0), anyOf(-360.0, 360.0)};
        Veskar::Host::Mounting radar;
        radar.position = {anyOf(-3.0, 3.0), anyOf(-3.0, 3.0), anyOf(0.5, 8.0)};
        radar.yaw = anyOf(-180.0, 180.0);
        radar.pitch = anyOf(-5.0, 15.0);
        device.place(site);
        const auto target = targetAt(site, radar, 100.0, anyOf(-60.0, 60.0));
        const Position located = askDevice(*target);
        ASSERT_TRUE(located.valid);
        const Eigen::Vector2d onDevice =
            offset(located, site, Dbus::GeoLocation::getPosition(1.0, site.heading),
                   Dbus::GeoLocation::getPosition(1.0, site.heading + 90.0));
        const Site unturned{site.latitude, site.longitude, 0.0};
        const Eigen::Vector2d inReplay = offset(
            *target->geoLocation, site, Veskar::Host::geographicPosition(unturned, {0.0, -1.0}),
            Veskar::Host::geographicPosition(unturned, {1.0, 0.0}));
        EXPECT_NEAR(inReplay.norm(), 100.0, 5.0);
        EXPECT_LT((onDevice - inReplay).norm(), 0.01)
            << "at " << site.latitude << ", heading " << site.heading;
    }
}
