// SPDX-License-Identifier: Apache-2.0
#include "report/SceneOutline.h"

#include <veskar-host/GeographicPosition.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// Rounded to 1/steps, which keeps the text short: a centimetre, or 1e-4 of the image plane.
Json pointOf(const Eigen::Vector2d& point, double steps) {
    return Json{std::nearbyint(point[0] * steps) / steps, std::nearbyint(point[1] * steps) / steps};
}

Eigen::Vector2d polar(const Eigen::Vector2d& origin, double azimuth, double distance) {
    return origin + distance * Eigen::Vector2d(std::cos(azimuth), std::sin(azimuth));
}

bool seesGround(const Projection& camera, const Eigen::Vector2d& point) {
    return camera.sees({point[0], point[1], 0.0});
}

/// The distance at which visibility changes between a visible and an invisible point, to a
/// centimetre.
double borderBetween(const Projection& camera, const Eigen::Vector2d& origin, double azimuth,
                     double seen, double unseen) {
    while (std::abs(seen - unseen) > 0.01) {
        const double middle = 0.5 * (seen + unseen);
        (seesGround(camera, polar(origin, azimuth, middle)) ? seen : unseen) = middle;
    }
    return seen;
}

/// Searches outward in each direction: the nearest and the farthest visible points form the
/// polygon.
Json footprint(const Projection& camera, double maximumRange) {
    const Eigen::Vector2d origin = camera.origin().head<2>();
    constexpr int steps = 60;
    Json far = Json::array();
    std::vector<Json> near;
    for (int degree = -180; degree <= 180; ++degree) {
        const double azimuth = radians(degree);
        std::optional<double> first;
        double last = 0.0;
        double before = 0.0;
        bool wasSeen = false;
        for (int i = 1; i <= steps; ++i) {
            // Finer at short distance, where the lower edge of the image is.
            const double share = static_cast<double>(i) / steps;
            const double distance = maximumRange * share * share;
            const bool isSeen = seesGround(camera, polar(origin, azimuth, distance));
            if (isSeen && !first) {
                first = borderBetween(camera, origin, azimuth, distance, before);
            }
            if (isSeen) {
                last = distance;
            } else if (wasSeen) {
                last = borderBetween(camera, origin, azimuth, before, distance);
            }
            wasSeen = isSeen;
            before = distance;
        }
        if (first) {
            far.push_back(pointOf(polar(origin, azimuth, last), 100.0));
            near.push_back(pointOf(polar(origin, azimuth, *first), 100.0));
        }
    }
    std::for_each(near.rbegin(), near.rend(), [&](const Json& point) { far.push_back(point); });
    return far;
}

Json ringInImage(const Projection& camera, double distance) {
    Json line = Json::array();
    for (int angle = 180; angle >= -180; --angle) {
        const Eigen::Vector2d point = polar(camera.origin().head<2>(), radians(angle), distance);
        if (seesGround(camera, point)) {
            line.push_back(pointOf(camera.position({point[0], point[1], 0.0}), 1e4));
        }
    }
    return line;
}

Json earthAt(const Site& site) {
    // Facing north, x is north and y is west.
    const Site north{site.latitude, site.longitude, 0.0};
    const auto ahead = geographicPosition(north, {1.0, 0.0});
    const auto right = geographicPosition(north, {0.0, -1.0});
    return {{"latitude", site.latitude},
            {"longitude", site.longitude},
            {"heading", site.heading},
            {"latitudePerNorth", ahead.latitude - site.latitude},
            {"longitudePerEast", right.longitude - site.longitude}};
}

}  // namespace

std::vector<double> ringDistances(double maximumRange) {
    double spacing = 1.0;
    for (const double wider : {2.0, 5.0, 10.0, 20.0, 50.0, 100.0, 200.0, 500.0, 1000.0}) {
        if (maximumRange / spacing > 6.0) {
            spacing = wider;
        }
    }
    std::vector<double> distances;
    for (int i = 1; i * spacing <= maximumRange * (1.0 + 1e-9) && i <= 6; ++i) {
        distances.push_back(i * spacing);
    }
    return distances;
}

Json sceneOutline(const Projection& camera, const Installation& installation) {
    const CameraSetup& setup = installation.camera;
    const RadarSetup& radar = installation.radar;
    Json scene{{"aspect", static_cast<double>(setup.resolution[0]) / setup.resolution[1]},
               {"camera",
                {{"position", pointOf(camera.origin().head<2>(), 100.0)},
                 {"footprint", footprint(camera, radar.maximumRange)}}},
               {"radar",
                {{"position", pointOf(radar.mounting.position.head<2>(), 100.0)},
                 {"yaw", radar.mounting.yaw},
                 {"fieldOfView", radar.fieldOfView},
                 {"range", radar.maximumRange}}}};
    scene["rings"] = Json::array();
    for (const double distance : ringDistances(radar.maximumRange)) {
        scene["rings"].push_back(
            {{"distance", distance}, {"image", ringInImage(camera, distance)}});
    }
    scene["earth"] = installation.site ? earthAt(*installation.site) : Json(nullptr);
    return scene;
}

}  // namespace Workbench
