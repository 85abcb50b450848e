// SPDX-License-Identifier: Apache-2.0
#include "import/Autoferry.h"

#include <veskar-host/GeographicPosition.h>
#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>
#include <veskar/Vocabulary.h>

#include "HostLibrary.h"
#include "import/TimeSeries.h"
#include "io/DocumentValue.h"
#include "io/Interruption.h"
#include "io/TextFile.h"
#include "simulate/tracker/SensorTrackers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr int radarSensor = 2;
constexpr int cameraSensor = 4;

// The virtual camera: omnidirectional, angle proportional to image radius, a metre above the water.
// It only represents the geometry of bearings; nothing is measured with it.
constexpr double cameraHeight = 1.0;
constexpr double pi = radians(180.0);

// Observed accuracy of the data: some metres for the radar, some degrees for a bearing.
constexpr double radarRangeStd = 4.0;
constexpr double radarAzimuthStd = 2.0;
constexpr double radarVelocityStd = 1.0;
constexpr double bearingStd = 1.5;  // degrees, of one detection

// A bearing measures neither row nor range: weak priors for both.
constexpr double unknownRow = -0.02;
constexpr double unknownRowStd = 0.1;
constexpr double unknownRange = 100.0;
constexpr double unknownRangeStd = 100.0;
constexpr double unknownRangeRateStd = 5.0;

// Origin of the data set's NED frame.
constexpr double originLatitude = 63.4389029083;
constexpr double originLongitude = 10.39908278;

// An entry of the detections, ordered by time.
struct Detection {
    int sensor = 0;
    double time = 0.0;  // seconds after the first one
    Eigen::Vector2d ownship{0.0, 0.0};
    nlohmann::json measurement;
};

struct Scene {
    double epoch = 0.0;
    std::vector<Detection> detections;
    TimeSeries ownship;
    std::map<int, TimeSeries> targets;
};

double wrap(double angle) {
    return angle - 360.0 * std::floor((angle + 180.0) / 360.0);
}

[[noreturn]] void refuse(const std::string& file, std::size_t index, const std::string& what) {
    throw InputError(fmt::format("{}: [{}]{}", file, index, what));
}

const nlohmann::json& listOf(const nlohmann::json& json, const std::string& file) {
    if (!json.is_array() || json.empty()) {
        throw InputError(file, InputError("expected a list of detections or targets"));
    }
    return json;
}

// Numbers of a measurement: an array, or a single number.
std::vector<double> numbersOf(const nlohmann::json& measurement) {
    if (measurement.is_number()) {
        return {measurement.get<double>()};
    }
    std::vector<double> numbers;
    for (const nlohmann::json& item : measurement) {
        if (!item.is_number()) {
            throw InputError("expected numbers");
        }
        numbers.push_back(item.get<double>());
    }
    return numbers;
}

// North and east of the radar detections: two arrays, or a flat pair when there is only one.
std::vector<Eigen::Vector2d> pointsOf(const nlohmann::json& measurement) {
    if (measurement.empty()) {
        return {};
    }
    if (!measurement.is_array() || measurement.size() != 2) {
        throw InputError("expected norths and easts");
    }
    const std::vector<double> north = numbersOf(measurement[0]);
    const std::vector<double> east = numbersOf(measurement[1]);
    if (north.size() != east.size()) {
        throw InputError("as many norths as easts are needed");
    }
    std::vector<Eigen::Vector2d> points;
    for (std::size_t i = 0; i < north.size(); ++i) {
        points.emplace_back(north[i], east[i]);
    }
    return points;
}

Detection readDetection(const nlohmann::json& json) {
    const Fields fields(json);
    Detection detection;
    detection.sensor = fields.integer("sensorID");
    detection.time = fields.number("time");
    fields.numbers("ownshipPosition", 2, detection.ownship.data());
    detection.measurement = fields.at("measurement").json();
    return detection;
}

void readDetections(const std::string& file, Scene& scene) {
    const nlohmann::json json = readJson(file);
    std::size_t index = 0;
    for (const nlohmann::json& item : listOf(json, file)) {
        try {
            scene.detections.push_back(readDetection(item));
        } catch (const InputError& error) {
            refuse(file, index, std::string(".") + error.what());
        }
        ++index;
    }
    std::stable_sort(scene.detections.begin(), scene.detections.end(),
                     [](const Detection& a, const Detection& b) { return a.time < b.time; });
    scene.epoch = scene.detections.front().time;
    for (Detection& detection : scene.detections) {
        detection.time -= scene.epoch;
        scene.ownship.add(detection.time, detection.ownship);
    }
}

void readTargets(const std::string& file, Scene& scene) {
    const nlohmann::json json = readJson(file);
    std::size_t index = 0;
    for (const nlohmann::json& moment : listOf(json, file)) {
        if (!moment.is_array()) {
            refuse(file, index, ": expected a list of targets");
        }
        for (const nlohmann::json& target : moment) {
            try {
                const Fields fields(target);
                std::array<double, 3> position{};
                fields.numbers("position", 3, position.data());
                scene.targets[fields.integer("targetID")].add(fields.number("time") - scene.epoch,
                                                              {position[0], position[1]});
            } catch (const InputError& error) {
                refuse(file, index, std::string(": ") + error.what());
            }
        }
        ++index;
    }
}

RecordingHeader headerOf(const Scene& scene, double forward) {
    RecordingHeader header;
    header.name = "autoferry";
    header.origin =
        "Autoferry sensor fusion data set; radar positions and camera bearings as measured, "
        "tracked; camera row and range are priors, the camera's geometry is virtual";
    header.licence = "CC0-1.0";
    header.camera.mounting.position = {0.0, 0.0, cameraHeight};
    header.camera.resolution = {3600, 900};
    header.camera.imageToRadians = {0.0, pi, 0.0, 0.0};
    header.camera.radiansToImage = {0.0, 1.0 / pi, 0.0, 0.0};
    header.camera.fieldOfView = {pi, pi / 4.0};
    header.radar.mounting.position = {0.0, 0.0, cameraHeight};
    header.radar.rangeStd = radarRangeStd;
    header.radar.azimuthStd = radarAzimuthStd;
    header.radar.velocityStd = radarVelocityStd;
    header.radar.fieldOfView = 360.0;
    header.radar.maximumRange = 400.0;
    const Eigen::Vector2d ownship = scene.ownship.at(0.0);
    const auto place =
        geographicPosition({originLatitude, originLongitude, 0.0}, {ownship[0], -ownship[1]});
    header.site = Site{place.latitude, place.longitude, forward};
    header.epoch = scene.epoch;
    header.truth = TruthKind::Incomplete;
    return header;
}

// The radar rotates once in 1.67 s.
TrackerParameters boatRadarTuning() {
    TrackerParameters tuning;
    tuning.accelerationStd = 0.3;
    tuning.initialVelocityStd = 4.0;
    tuning.tentativeCoasting = 2.5;
    tuning.confirmedCoasting = 8.0;
    return tuning;
}

// In image units: one unit is 180 degrees.
TrackerParameters bearingTuning() {
    TrackerParameters tuning;
    tuning.accelerationStd = 0.01;
    tuning.initialVelocityStd = 0.05;
    tuning.squaredGate = 9.0;
    tuning.tentativeCoasting = 0.5;
    tuning.confirmedCoasting = 1.0;
    return tuning;
}

SensorFrame radarFrame(const Detection& detection, double forward, RadarTracker& tracker) {
    std::vector<RadarDetection> points;
    for (const Eigen::Vector2d& point : pointsOf(detection.measurement)) {
        points.push_back({std::hypot(point.norm(), cameraHeight),
                          wrap(degrees(std::atan2(point[1], point[0])) - forward)});
    }
    SensorFrame frame{Veskar::Radar, detection.time, detection.time, {}};
    frame.tracks = tracker.update(detection.time, points);
    for (Report& report : frame.tracks) {
        // All moving objects in this data set are vessels.
        std::get<RadarReport>(report).objectClass = {Veskar::Vocabulary::vehicleOther, 0.5};
    }
    return frame;
}

ReadyEstimate bearingReport(const PlanarTracker& tracker, const PlanarTrack& track, double time) {
    // Tracking reduces the noise of a bearing, but the heading of the camera is wrong by some
    // degrees.
    constexpr double trackStd = 2.5 / 180.0;
    constexpr double rateStd = 0.02;  // image units per second
    ReadyEstimate report;
    report.id = track.id;
    report.coasting = time - track.seen;
    report.confirmed = tracker.isConfirmed(track);
    report.state << track.filter.position()[0], track.filter.velocity()[0], unknownRow, 0.0,
        unknownRange, 0.0;
    Veskar::StateVector std;
    std << trackStd, rateStd, unknownRowStd, rateStd, unknownRangeStd, unknownRangeRateStd;
    report.covariance = std.cwiseAbs2().asDiagonal();
    return report;
}

SensorFrame cameraFrame(const Detection& detection, double forward, PlanarTracker& tracker) {
    const double std = bearingStd / 180.0;
    std::vector<PlanarDetection> points;
    for (const double bearing : numbersOf(detection.measurement)) {
        points.push_back({{wrap(degrees(bearing) - forward) / 180.0, 0.0},
                          std * std * Eigen::Matrix2d::Identity(),
                          {}});
    }
    tracker.update(detection.time, points);
    SensorFrame frame{Veskar::VideoObject, detection.time, detection.time, {}};
    for (const PlanarTrack& track : tracker.tracks()) {
        frame.tracks.emplace_back(bearingReport(tracker, track, detection.time));
    }
    return frame;
}

// Rotates from north and east to the device frame.
Eigen::Vector2d toDevice(const Eigen::Vector2d& northEast, double forward) {
    const double angle = radians(forward);
    return {northEast[0] * std::cos(angle) + northEast[1] * std::sin(angle),
            northEast[0] * std::sin(angle) - northEast[1] * std::cos(angle)};
}

TruthFrame truthAt(const Scene& scene, double time, double forward) {
    constexpr double reach = 1.0;
    TruthFrame frame;
    frame.time = time;
    for (const auto& [id, target] : scene.targets) {
        if (time < target.begin() - 1.0 || time > target.end() + 1.0) {
            continue;
        }
        TruthObject object;
        object.id = id;
        object.className = Veskar::Vocabulary::vehicleOther;
        object.position = toDevice(target.at(time) - scene.ownship.at(time), forward);
        object.velocity =
            toDevice(target.rate(time, reach) - scene.ownship.rate(time, reach), forward);
        frame.objects.push_back(object);
    }
    return frame;
}

}  // namespace

ImportedRecording importAutoferry(const AutoferryOptions& options) {
    Scene scene;
    readDetections(options.detections, scene);
    readTargets(options.groundTruth, scene);
    ImportedRecording recording;
    recording.header = headerOf(scene, options.forward);
    RadarTracker radar(boatRadarTuning(), radarRangeStd, radarAzimuthStd);
    PlanarTracker camera(bearingTuning());
    for (std::size_t i = 0; i < scene.detections.size(); ++i) {
        const Detection& detection = scene.detections[i];
        throwIfInterrupted();
        try {
            if (detection.sensor == radarSensor) {
                recording.frames.push_back(radarFrame(detection, options.forward, radar));
            } else if (detection.sensor == cameraSensor) {
                recording.frames.push_back(cameraFrame(detection, options.forward, camera));
                recording.truth.push_back(truthAt(scene, detection.time, options.forward));
            }
        } catch (const InputError& error) {
            throw InputError(fmt::format("{}: measurement at {:.6f} s: {}", options.detections,
                                         scene.epoch + detection.time, error.what()));
        }
    }
    return recording;
}

}  // namespace Workbench
