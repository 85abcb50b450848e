// SPDX-License-Identifier: Apache-2.0
#include "export/FoxgloveMessages.h"

#include <veskar-host/GeographicPosition.h>
#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>
#include <veskar-host/UsualSize.h>
#include <veskar/ImagePlane.h>

#include <cmath>
#include <limits>

#include <Eigen/Geometry>
#include <fmt/format.h>

namespace Workbench {
namespace {

constexpr const char* deviceFrame = "device";
constexpr double nanosPerSecond = 1e9;

Json colorOf(const std::string& layer, double opacity) {
    const auto color = [&](double r, double g, double b) {
        return Json{{"r", r}, {"g", g}, {"b", b}, {"a", opacity}};
    };
    if (layer == "truth") {
        return color(0.2, 0.8, 0.3);
    }
    if (layer == "video") {
        return color(0.3, 0.6, 1.0);
    }
    return layer == "radar" ? color(1.0, 0.6, 0.1) : color(0.9, 0.2, 0.7);
}

Json vectorOf(double x, double y, double z) {
    return {{"x", x}, {"y", y}, {"z", z}};
}

Json quaternionOf(const Eigen::Quaterniond& q) {
    return {{"x", q.x()}, {"y", q.y()}, {"z", q.z()}, {"w", q.w()}};
}

/// @param heading radians to the left of forward
Json poseOf(const Eigen::Vector2d& place, double height, double heading) {
    return {
        {"position", vectorOf(place[0], place[1], height)},
        {"orientation",
         quaternionOf(Eigen::Quaterniond(Eigen::AngleAxisd(heading, Eigen::Vector3d::UnitZ())))}};
}

std::string labelOf(const FusedTrack& track) {
    const std::string& name = track.labels.objectClass.name;
    return name == "unknown" ? std::to_string(track.id) : fmt::format("{} {}", track.id, name);
}

Json metadataOf(const FusedTrack& track) {
    Json metadata = Json::array();
    const auto add = [&](const char* key, const std::string& value) {
        metadata.push_back({{"key", key}, {"value", value}});
    };
    add("id", std::to_string(track.id));
    add("class", track.labels.objectClass.name);
    add("confirmed", track.confirmed ? "true" : "false");
    if (std::isfinite(track.probability)) {
        add("probability", fmt::format("{:.4g}", track.probability));
    }
    if (track.speed && std::isfinite(*track.speed)) {
        add("speed", fmt::format("{:.3g}", *track.speed));
    }
    return metadata;
}

double opacityOf(const FusedTrack& track) {
    return track.confirmed ? 0.8 : 0.3;
}

bool isPlaced(const FusedTrack& track) {
    return track.ground && track.ground->position.allFinite();
}

/// An arrow as long as the way of a second.
Json arrowOf(const FusedTrack& track, double height, const Json& color) {
    const Eigen::Vector2d& velocity = track.ground->velocity;
    constexpr double headLength = 0.5;  // m
    return {{"pose", poseOf(track.ground->position, height, std::atan2(velocity[1], velocity[0]))},
            {"shaft_length", velocity.norm()},
            {"shaft_diameter", 0.15},
            {"head_length", headLength},
            {"head_diameter", 0.4},
            {"color", color}};
}

}  // namespace

std::uint64_t FoxgloveMessages::nanoseconds(double time) const {
    const double unixTime = header_.epoch.value_or(0.0) + time;
    if (!(unixTime >= 0.0 && unixTime < std::numeric_limits<std::uint32_t>::max())) {
        throw InputError(fmt::format("the time {} s is not between 1970 and 2106", unixTime));
    }
    // Whole microseconds, as recordings have them: a double has no room for nanoseconds.
    return static_cast<std::uint64_t>(std::llround(unixTime * 1e6)) * 1000;
}

Json FoxgloveMessages::timestamp(double time) const {
    const std::uint64_t nanos = nanoseconds(time);
    constexpr auto second = static_cast<std::uint64_t>(nanosPerSecond);
    return {{"sec", nanos / second}, {"nsec", nanos % second}};
}

Json FoxgloveMessages::sceneOf(const std::string& layer, const FusedFrame& frame) const {
    const Json stamp = timestamp(frame.time);
    constexpr int all = 1;
    Json entities = Json::array();
    for (const FusedTrack& track : frame.tracks) {
        if (!isPlaced(track)) {
            continue;
        }
        const Eigen::Vector3d size = usualSize(track.labels.objectClass.name);
        const Eigen::Vector2d& place = track.ground->position;
        // Tracks are where the object is nearest to the device.
        const Eigen::Vector2d centre =
            place + 0.5 * size.head<2>().mean() * place.stableNormalized();
        const bool isMoving = track.direction && std::isfinite(*track.direction) &&
                              track.ground->velocity.allFinite();
        const double heading = isMoving ? -radians(*track.direction) : 0.0;
        const Json color = colorOf(layer, opacityOf(track));
        const Json cube{{"pose", poseOf(centre, 0.5 * size[2], heading)},
                        {"size", vectorOf(size[0], size[1], size[2])},
                        {"color", color}};
        const Json label{{"pose", poseOf(centre, size[2] + 0.5, 0.0)},
                         {"billboard", true},
                         {"font_size", 14},
                         {"scale_invariant", true},
                         {"color", colorOf(layer, 1.0)},
                         {"text", labelOf(track)}};
        const Json none = Json::array();
        Json entity{{"timestamp", stamp},
                    {"frame_id", deviceFrame},
                    {"id", fmt::format("{} {}", layer, track.id)},
                    {"lifetime", {{"sec", 0}, {"nsec", 0}}},
                    {"frame_locked", false},
                    {"metadata", metadataOf(track)},
                    {"arrows", none},
                    {"cubes", Json::array({cube})},
                    {"spheres", none},
                    {"cylinders", none},
                    {"lines", none},
                    {"triangles", none},
                    {"texts", Json::array({label})},
                    {"models", none}};
        if (isMoving) {
            entity["arrows"].push_back(arrowOf(track, 0.5 * size[2], color));
        }
        entities.push_back(std::move(entity));
    }
    return {{"deletions", Json::array({{{"timestamp", stamp}, {"type", all}, {"id", ""}}})},
            {"entities", entities}};
}

/// Row by row, east, north, up, m^2.
Json FoxgloveMessages::positionCovariance(const FusedTrack& track) const {
    Eigen::Matrix3d covariance = Eigen::Matrix3d::Zero();
    if (track.ground && track.ground->covariance.allFinite() && header_.site) {
        const double heading = radians(header_.site->heading);
        Eigen::Matrix2d toEarth;
        toEarth << std::sin(heading), -std::cos(heading), std::cos(heading), std::sin(heading);
        covariance.topLeftCorner<2, 2>() = toEarth * track.ground->covariance * toEarth.transpose();
    }
    Json rows = Json::array();
    for (Eigen::Index i = 0; i < covariance.size(); ++i) {
        rows.push_back(covariance(i / 3, i % 3));
    }
    return rows;
}

Json FoxgloveMessages::locationsOf(const std::string& layer, const FusedFrame& frame) const {
    constexpr int unknown = 0;
    constexpr int approximated = 1;
    Json fixes = Json::array();
    for (const FusedTrack& track : frame.tracks) {
        if (!track.geo || !std::isfinite(track.geo->latitude) ||
            !std::isfinite(track.geo->longitude)) {
            continue;
        }
        const bool isKnown = track.ground && track.ground->covariance.allFinite() && header_.site;
        fixes.push_back({{"timestamp", timestamp(frame.time)},
                         {"frame_id", deviceFrame},
                         {"latitude", track.geo->latitude},
                         {"longitude", track.geo->longitude},
                         {"altitude", 0.0},
                         {"position_covariance", positionCovariance(track)},
                         {"position_covariance_type", isKnown ? approximated : unknown},
                         {"color", colorOf(layer, opacityOf(track))},
                         {"metadata", metadataOf(track)}});
    }
    return {{"fixes", fixes}};
}

Json FoxgloveMessages::annotationsOf(const std::string& layer, const FusedFrame& frame) const {
    const Json stamp = timestamp(frame.time);
    const Veskar::Camera camera = header_.camera.build();
    const Json clear{{"r", 0}, {"g", 0}, {"b", 0}, {"a", 0}};
    constexpr int lineLoop = 2;
    Json outlines = Json::array();
    Json labels = Json::array();
    for (const FusedTrack& track : frame.tracks) {
        const ImageBox& box = track.box;
        Eigen::Vector4d pixels(box.left, box.right - box.left, box.top, box.bottom - box.top);
        Veskar::transformCameraToScreen(pixels, camera);
        if (!pixels.allFinite()) {
            continue;
        }
        const double right = pixels[0] + pixels[1];
        const double bottom = pixels[2] + pixels[3];
        const Json color = colorOf(layer, opacityOf(track));
        const auto point = [](double x, double y) { return Json{{"x", x}, {"y", y}}; };
        outlines.push_back(
            {{"timestamp", stamp},
             {"type", lineLoop},
             {"points", Json::array({point(pixels[0], pixels[2]), point(right, pixels[2]),
                                     point(right, bottom), point(pixels[0], bottom)})},
             {"outline_color", color},
             {"outline_colors", Json::array()},
             {"fill_color", clear},
             {"thickness", 2}});
        labels.push_back({{"timestamp", stamp},
                          {"position", point(pixels[0], pixels[2])},
                          {"text", labelOf(track)},
                          {"font_size", 16},
                          {"text_color", colorOf(layer, 1.0)},
                          {"background_color", clear}});
    }
    return {{"circles", Json::array()}, {"points", outlines}, {"texts", labels}};
}

Json FoxgloveMessages::mountings(double time) const {
    const auto transformOf = [&](const char* name, const Mounting& mounting) {
        const Eigen::Vector3d& place = mounting.position;
        return Json{{"timestamp", timestamp(time)},
                    {"parent_frame_id", deviceFrame},
                    {"child_frame_id", name},
                    {"translation", vectorOf(place[0], place[1], place[2])},
                    {"rotation", quaternionOf(Eigen::Quaterniond(mounting.rotation()))}};
    };
    return {{"transforms", Json::array({transformOf("camera", header_.camera.mounting),
                                        transformOf("radar", header_.radar.mounting)})}};
}

/// As far as the radar sees.
Json FoxgloveMessages::sectorOf(const Mounting& mounting, double fieldOfView,
                                const char* name) const {
    Json ring = Json::array();
    const auto add = [&](const Eigen::Vector2d& point) {
        const auto position = geographicPosition(*header_.site, point);
        ring.push_back({position.longitude, position.latitude});
    };
    const Eigen::Vector2d origin = mounting.position.head<2>();
    add(origin);
    constexpr int steps = 16;
    // Counter-clockwise, as outer rings are (RFC 7946, 3.1.6).
    for (int step = 0; step <= steps; ++step) {
        const double angle =
            radians(mounting.yaw + fieldOfView * (static_cast<double>(step) / steps - 0.5));
        add(origin +
            header_.radar.maximumRange * Eigen::Vector2d(std::cos(angle), std::sin(angle)));
    }
    add(origin);
    return {{"type", "Feature"},
            {"geometry", {{"type", "Polygon"}, {"coordinates", Json::array({ring})}}},
            {"properties", {{"name", name}}}};
}

Json FoxgloveMessages::map() const {
    const Json device{
        {"type", "Feature"},
        {"geometry",
         {{"type", "Point"},
          {"coordinates", Json::array({header_.site->longitude, header_.site->latitude})}}},
        {"properties", {{"name", header_.name}}}};
    const Json features = Json::array(
        {device,
         sectorOf(header_.camera.mounting, 2.0 * degrees(header_.camera.fieldOfView[0]), "camera"),
         sectorOf(header_.radar.mounting, header_.radar.fieldOfView, "radar")});
    return {{"geojson", Json{{"type", "FeatureCollection"}, {"features", features}}.dump()}};
}

}  // namespace Workbench
