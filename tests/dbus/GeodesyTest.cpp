// SPDX-License-Identifier: Apache-2.0
// The client's geodesy, compared with closed formulas and with GeographicLib.
#include <veskar/GeoLocation.h>

#include "dbus/LocalMessage.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"

#include <cmath>
#include <random>
#include <vector>

#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/Geodesic.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace VeskarTest;
using Dbus::GeoLocation::Position;

namespace {

constexpr double degree = 3.14159265358979323846 / 180.0;

class Geodesy : public testing::Test {
protected:
    Geodesy() { leaveSystemBus(); }

    /// Sets position and heading of the device; the heading is in degrees clockwise from north.
    void place(double latitude, double longitude, double heading) {
        const LocalMessage message(
            dictionary({number("latitude", latitude), number("longitude", longitude),
                        number("heading", heading), truth("valid_pos", true)}));
        ASSERT_GE(client.parse(message.get()), 0);
    }

    /// Metres per degree of latitude or longitude, derived from the client's results.
    double metersNorth(double latitude) {
        place(latitude, 0.0, 0.0);
        return 1.0 / (client.getPosition(1.0, 90.0).latitude - latitude);
    }
    double metersEast(double latitude) {
        place(latitude, 0.0, 0.0);
        return 1.0 / client.getPosition(1.0, 0.0).longitude;
    }

    Position validated(double latitude, double longitude) {
        Position position{longitude, latitude, 5.0, true};
        client.validatePosition(position);
        EXPECT_EQ(position.altitude, 5.0);
        EXPECT_TRUE(position.valid);
        return position;
    }

    SyslogCapture log;
    Impl::GeoLocation client;
};

MATCHER_P2(IsAt, latitude, longitude, "") {
    return arg.latitude == latitude && arg.longitude == longitude;
}

/// Metres per degree of latitude and longitude on the WGS84 ellipsoid, accurate to about a metre.
struct Ellipsoid {
    explicit Ellipsoid(double latitude) {
        const GeographicLib::Geodesic& earth = GeographicLib::Geodesic::WGS84();
        constexpr double step = 1e-3;
        double distance = 0.0;
        earth.Inverse(latitude - step, 0.0, latitude + step, 0.0, distance);
        north = distance / (2.0 * step);
        earth.Inverse(latitude, -step, latitude, step, distance);
        east = distance / (2.0 * step);
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        GeographicLib::Geocentric::WGS84().Forward(latitude, 0.0, 0.0, x, y, z);
        radius = std::hypot(x, z);
    }

    double north = 0.0;
    double east = 0.0;
    double radius = 0.0;  // from the Earth's centre, m
};

}  // namespace

TEST_F(Geodesy, ScalesAsGivenAtTheEquatorAndInTheMiddle) {
    client.calculateDegreePerMeter(0.0);
    EXPECT_NEAR(client.getPosition(110758.496, 90.0).latitude, 1.0, 1e-8);
    EXPECT_NEAR(client.getPosition(111226.109, 0.0).longitude, 1.0, 1e-8);
    client.calculateDegreePerMeter(45.0);
    EXPECT_NEAR(client.getPosition(111134.833, 90.0).latitude, 1.0, 1e-8);
    EXPECT_NEAR(client.getPosition(78649.394, 0.0).longitude, 1.0, 1e-8);
}

// The formulas term by term, in higher precision and with multiple angles written out.
TEST_F(Geodesy, ScalesByItsSeriesToTheLastTerm) {
    for (int half = -178; half <= 178; ++half) {
        const double latitude = 0.5 * half;
        client.calculateDegreePerMeter(latitude);
        const long double phi = static_cast<long double>(latitude) * 0.017453292519943295;
        const long double s = std::sin(phi);
        const long double c = std::cos(phi);
        const long double R = 6378137.0L * std::sqrt(c * c + s * s * 0.9866560547430581L) /
                              std::sqrt(1.0L - s * s * 0.006694379990197619L) *
                              0.017453292519943295L;
        const long double north = R - 1.175L * std::cos(4.0L * phi) -
                                  559.822L * std::cos(2.0L * phi) + 0.0023L * std::cos(6.0L * phi);
        const long double east =
            c * R - 93.5L * std::cos(3.0L * phi) + 0.118L * std::cos(5.0L * phi);
        const double oneNorth = client.getPosition(1.0, 90.0).latitude;
        const double oneEast = client.getPosition(1.0, 0.0).longitude;
        EXPECT_NEAR(oneNorth * static_cast<double>(north), 1.0, 1e-13) << latitude;
        EXPECT_NEAR(oneEast * static_cast<double>(east), 1.0, 1e-13) << latitude;
    }
}

TEST_F(Geodesy, TakesItsOwnLatitudeOnlyWhenAsked) {
    place(45.0, 0.0, 0.0);
    client.calculateDegreePerMeter(0.0);
    EXPECT_NEAR(client.getPosition(111226.109, 0.0).longitude, 1.0, 1e-8);
    EXPECT_NEAR(client.getPosition(0.0, 0.0).latitude, 45.0, 0.0) << "the latitude stays";
}

// The survey formulas give the length of a degree to 0.1 m:
//   north = 111132.92 - 559.822 cos 2p + 1.175 cos 4p - 0.0023 cos 6p
//   east  = 111412.84 cos p - 93.5 cos 3p + 0.118 cos 5p
// The client uses the length of a degree on the sphere through the device (R) instead of the
// leading constants, and the small terms with reversed signs. Its difference from the ellipsoid
// must consist of exactly these changes.
TEST_F(Geodesy, DiffersFromTheEllipsoidByItsLeadingTermsOnly) {
    for (int half = -178; half <= 178; ++half) {
        const double latitude = 0.5 * half;
        const Ellipsoid ellipsoid(latitude);
        const double p = latitude * degree;
        const double R = ellipsoid.radius * degree;
        const double northDifference =
            R - 111132.92 - 2.0 * 1.175 * std::cos(4.0 * p) + 2.0 * 0.0023 * std::cos(6.0 * p);
        const double eastDifference = std::cos(p) * (R - 111412.84);
        EXPECT_NEAR(metersNorth(latitude), ellipsoid.north + northDifference, 0.1) << latitude;
        EXPECT_NEAR(metersEast(latitude), ellipsoid.east + eastDifference, 0.1) << latitude;
    }
}

TEST_F(Geodesy, MeasuresTheAzimuthFromTheRightHandSideAgainstTheClock) {
    struct Case {
        double heading;
        double azimuth;
        double east;
        double north;
    };
    const std::vector<Case> cases = {
        {0.0, 90.0, 0.0, 1.0},    {0.0, 0.0, 1.0, 0.0},    {0.0, 180.0, -1.0, 0.0},
        {90.0, 90.0, 1.0, 0.0},   {90.0, 0.0, 0.0, -1.0},  {180.0, 90.0, 0.0, -1.0},
        {-90.0, 90.0, -1.0, 0.0}, {45.0, 135.0, 0.0, 1.0}, {720.0, 90.0, 0.0, 1.0},
        {0.0, -270.0, 0.0, 1.0},
    };
    for (const Case& c : cases) {
        place(0.0, 0.0, c.heading);
        const Position position = client.getPosition(1.0, c.azimuth);
        EXPECT_NEAR(position.longitude * 111226.109, c.east, 1e-6) << c.heading << " " << c.azimuth;
        EXPECT_NEAR(position.latitude * 110758.496, c.north, 1e-6) << c.heading << " " << c.azimuth;
    }
}

// Within radar range the flat step differs from the geodesic by the scale, at most 0.42 % to the
// east near the poles (466.55 of 111694 m per degree), and by the meridian convergence, which
// deflects a line of length d by d^2 tan(latitude) / 2R.
TEST_F(Geodesy, PutsRadarTargetsWhereTheGeodesicEnds) {
    std::mt19937 random(20);
    std::uniform_real_distribution<double> anyLatitude(-85.0, 85.0);
    std::uniform_real_distribution<double> anyLongitude(-179.0, 179.0);
    std::uniform_real_distribution<double> anyAngle(-360.0, 360.0);
    std::uniform_real_distribution<double> anyRange(0.0, 200.0);
    const GeographicLib::Geodesic& earth = GeographicLib::Geodesic::WGS84();
    for (int i = 0; i < 2000; ++i) {
        const double latitude = anyLatitude(random);
        const double longitude = anyLongitude(random);
        const double heading = anyAngle(random);
        const double azimuth = anyAngle(random);
        const double range = anyRange(random);
        place(latitude, longitude, heading);
        const Position position = client.getPosition(range, azimuth);
        double expectedLatitude = 0.0;
        double expectedLongitude = 0.0;
        earth.Direct(latitude, longitude, heading + 90.0 - azimuth, range, expectedLatitude,
                     expectedLongitude);
        double error = 0.0;
        earth.Inverse(position.latitude, position.longitude, expectedLatitude, expectedLongitude,
                      error);
        const double bend = range * range * std::tan(std::abs(latitude) * degree) / (2.0 * 6.35e6);
        EXPECT_LE(error, 0.0042 * range + bend + 1e-6)
            << latitude << " " << longitude << " " << heading << " " << azimuth << " " << range;
    }
}

TEST_F(Geodesy, TurnsBackAtThePoles) {
    EXPECT_THAT(validated(95.0, 10.0), IsAt(85.0, -170.0));
    EXPECT_THAT(validated(-95.0, 10.0), IsAt(-85.0, -170.0));
    EXPECT_THAT(validated(95.0, -10.0), IsAt(85.0, 170.0));
    EXPECT_THAT(validated(95.0, 0.0), IsAt(85.0, -180.0)) << "zero counts as east";
    EXPECT_THAT(validated(90.0, 10.0), IsAt(90.0, 10.0));
    EXPECT_THAT(validated(-90.0, 10.0), IsAt(-90.0, 10.0));
    EXPECT_THAT(validated(std::nextafter(90.0, 91.0), 10.0).longitude, -170.0);
}

TEST_F(Geodesy, WrapsTheLongitudeOnceAndGivesUpBeyondAWholeTurn) {
    EXPECT_THAT(validated(1.0, 180.0), IsAt(1.0, 180.0));
    EXPECT_THAT(validated(1.0, -180.0), IsAt(1.0, -180.0));
    EXPECT_THAT(validated(1.0, 181.0), IsAt(1.0, -179.0));
    EXPECT_THAT(validated(1.0, -181.0), IsAt(1.0, 179.0));
    EXPECT_THAT(validated(1.0, 360.0), IsAt(1.0, 0.0));
    EXPECT_THAT(validated(1.0, -360.0), IsAt(1.0, 0.0));
    EXPECT_THAT(validated(1.0, 400.0), IsAt(1.0, 0.0));
    EXPECT_THAT(validated(1.0, 360.25), IsAt(1.0, 0.0));
    EXPECT_THAT(validated(1.0, -360.25), IsAt(1.0, 0.0));
    EXPECT_THAT(validated(95.0, 400.0), IsAt(85.0, -140.0)) << "first the pole, then the wrap";
}

TEST_F(Geodesy, ValidatesWhatItReturns) {
    place(89.9999, 179.9999, 0.0);
    const Position acrossThePole = client.getPosition(1000.0, 90.0);
    EXPECT_LT(acrossThePole.latitude, 90.0);
    EXPECT_LT(acrossThePole.longitude, 0.0);
    place(0.0, 179.9999, 0.0);
    EXPECT_LT(client.getPosition(1000.0, 0.0).longitude, -179.9);
}

TEST_F(Geodesy, StandsAtZeroWithoutFactorsBeforeAnySettings) {
    EXPECT_THAT(client.getPosition(1000.0, 33.0), IsAt(0.0, 0.0));
    EXPECT_FALSE(client.getPosition(1000.0, 33.0).valid);
}
