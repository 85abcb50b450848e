// SPDX-License-Identifier: Apache-2.0
#include "scenario/Scenario.h"

#include <veskar-host/InputError.h>
#include <veskar-host/UsualSize.h>

#include "host/installation/InstallationFields.h"
#include "io/DocumentValue.h"
#include "io/TextFile.h"

#include <initializer_list>
#include <string_view>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double tiny = 1e-6;
/// Smaller steps and areas (m) are rejected: they would take a huge number of legs.
constexpr double shortestStep = 1e-3;
constexpr double smallestArea = 0.1;
constexpr std::size_t mostObjects = 10000;

Outage readOutage(const Fields& fields) {
    fields.allowOnly({"from", "to"});
    const double from = fields.numberWithin("from", 0.0, infinite);
    return {from, fields.numberWithin("to", from, infinite)};
}

PersistentFalse readPersistent(const Fields& fields) {
    fields.allowOnly({"position", "probability", "wander", "class", "from", "to"});
    PersistentFalse result;
    fields.numbers("position", 2, result.position.data());
    result.probability = fields.numberWithin("probability", 0.0, 1.0, result.probability);
    result.wander = fields.numberWithin("wander", 0.0, infinite, result.wander);
    result.className = fields.text("class", result.className);
    result.from = fields.numberWithin("from", 0.0, infinite, result.from);
    result.to = fields.numberWithin("to", result.from, infinite, result.to);
    return result;
}

Mounting readMountingError(const Fields& fields) {
    fields.allowOnly({"yaw", "pitch", "roll", "height"});
    Mounting error;
    error.yaw = fields.number("yaw", 0.0);
    error.pitch = fields.number("pitch", 0.0);
    error.roll = fields.number("roll", 0.0);
    error.position[2] = fields.number("height", 0.0);
    return error;
}

// The keys that both sensors have, and those of one sensor.
std::vector<std::string_view> sensorKeys(std::initializer_list<std::string_view> own) {
    std::vector<std::string_view> keys = {"rate",          "phase",          "latency",
                                          "jitter",        "timestampError", "detectionProbability",
                                          "maximumRange",  "falseAlarms",    "bursts",
                                          "burstDuration", "idChurn",        "emptyFrames",
                                          "mountingError", "outages",        "persistent"};
    keys.insert(keys.end(), own.begin(), own.end());
    return keys;
}

void readSensor(const Fields& fields, SensorTraits& sensor) {
    sensor.rate = fields.numberWithin("rate", 0.01, 1000.0, sensor.rate);
    sensor.phase = fields.numberWithin("phase", 0.0, infinite, sensor.phase);
    sensor.latency = fields.numberWithin("latency", 0.0, 10.0, sensor.latency);
    sensor.jitter = fields.numberWithin("jitter", 0.0, 10.0, sensor.jitter);
    sensor.timestampError = fields.numberWithin("timestampError", -10.0, 10.0, 0.0);
    sensor.detectionProbability =
        fields.numberWithin("detectionProbability", 0.0, 1.0, sensor.detectionProbability);
    sensor.maximumRange = fields.numberWithin("maximumRange", tiny, infinite, sensor.maximumRange);
    sensor.falseAlarms = fields.numberWithin("falseAlarms", 0.0, 100.0, sensor.falseAlarms);
    sensor.bursts = fields.numberWithin("bursts", 0.0, 6000.0, sensor.bursts);
    sensor.burstDuration =
        fields.numberWithin("burstDuration", tiny, infinite, sensor.burstDuration);
    sensor.idChurn = fields.numberWithin("idChurn", 0.0, 6000.0, sensor.idChurn);
    sensor.emptyFrames = fields.boolean("emptyFrames", sensor.emptyFrames);
    if (fields.has("mountingError")) {
        sensor.mountingError = readMountingError(fields.object("mountingError"));
    }
    if (fields.has("outages")) {
        fields.forEach("outages",
                       [&](const Fields& item) { sensor.outages.push_back(readOutage(item)); });
    }
    if (fields.has("persistent")) {
        fields.forEach("persistent", [&](const Fields& item) {
            sensor.persistent.push_back(readPersistent(item));
        });
    }
}

void readVideo(const Fields& fields, VideoTraits& video) {
    fields.allowOnly(sensorKeys({"minimumBoxHeight", "edgeStd", "footStd", "footTime",
                                 "classConfusion", "occlusionLimit"}));
    readSensor(fields, video);
    video.minimumBoxHeight =
        fields.numberWithin("minimumBoxHeight", 0.0, 2.0, video.minimumBoxHeight);
    video.edgeStd = fields.numberWithin("edgeStd", tiny, 1.0, video.edgeStd);
    video.footStd = fields.numberWithin("footStd", 0.0, 1.0, video.footStd);
    video.footTime = fields.numberWithin("footTime", tiny, infinite, video.footTime);
    video.classConfusion = fields.numberWithin("classConfusion", 0.0, 1.0, video.classConfusion);
    video.occlusionLimit = fields.numberWithin("occlusionLimit", 0.0, 1.0, video.occlusionLimit);
}

void readRadarSensor(const Fields& fields, RadarTraits& radar) {
    fields.allowOnly(sensorKeys({"rangeStd", "azimuthStd", "reflectionStd", "reflectionTime",
                                 "rangeResolution", "azimuthResolution", "hiddenFactor"}));
    readSensor(fields, radar);
    radar.rangeStd = fields.numberWithin("rangeStd", tiny, infinite, radar.rangeStd);
    radar.azimuthStd = fields.numberWithin("azimuthStd", tiny, 90.0, radar.azimuthStd);
    radar.reflectionStd = fields.numberWithin("reflectionStd", 0.0, 2.0, radar.reflectionStd);
    radar.reflectionTime =
        fields.numberWithin("reflectionTime", tiny, infinite, radar.reflectionTime);
    radar.rangeResolution =
        fields.numberWithin("rangeResolution", 0.0, infinite, radar.rangeResolution);
    radar.azimuthResolution =
        fields.numberWithin("azimuthResolution", 0.0, 180.0, radar.azimuthResolution);
    radar.hiddenFactor = fields.numberWithin("hiddenFactor", 0.0, 1.0, radar.hiddenFactor);
}

PathMode readMode(const Fields& fields) {
    const std::string mode = fields.text("mode", "once");
    if (mode == "once") {
        return PathMode::Once;
    }
    if (mode == "loop") {
        return PathMode::Loop;
    }
    if (mode != "backAndForth") {
        fields.refuse("mode", fmt::format("\"{}\" is not once, loop or backAndForth", mode));
    }
    return PathMode::BackAndForth;
}

void readPath(const Fields& fields, ObjectTraits& object) {
    const nlohmann::json& path = fields.array("path").json();
    if (path.size() < 2) {
        fields.refuse("path", "expected at least two points");
    }
    for (std::size_t i = 0; i < path.size(); ++i) {
        const bool isPoint = path[i].is_array() && path[i].size() == 2 && path[i][0].is_number() &&
                             path[i][1].is_number();
        if (!isPoint) {
            fields.refuse(fmt::format("path[{}]", i), "expected two numbers");
        }
        object.path.emplace_back(path[i][0].get<double>(), path[i][1].get<double>());
    }
    for (std::size_t i = 0; i < path.size(); ++i) {
        // A loop continues from the last point to the first.
        const std::size_t next = (i + 1) % path.size();
        const double step = (object.path[next] - object.path[i]).norm();
        const bool isStep = next != 0 || object.mode == PathMode::Loop;
        if (isStep && step > 0.0 && step < shortestStep) {
            fields.refuse(fmt::format("path[{}]", next),
                          fmt::format("is closer than {} m to the point before", shortestStep));
        }
    }
}

void readArea(const Fields& fields, ObjectTraits& object) {
    object.mode = PathMode::Wander;
    std::array<double, 4> area{};
    fields.numbers("area", 4, area.data());
    object.areaMinimum = {area[0], area[1]};
    object.areaMaximum = {area[2], area[3]};
    if (!(area[0] < area[2] && area[1] < area[3])) {
        fields.refuse("area", "expected [least x, least y, greatest x, greatest y]");
    }
    if ((object.areaMaximum - object.areaMinimum).minCoeff() < smallestArea) {
        fields.refuse("area", fmt::format("is narrower than {} m", smallestArea));
    }
    if (fields.has("count")) {
        object.count = fields.integer("count");
        if (object.count < 1 || object.count > static_cast<int>(mostObjects)) {
            fields.refuse("count", fmt::format("is not between 1 and {}", mostObjects));
        }
    }
}

void readSpeed(const Fields& fields, ObjectTraits& object) {
    if (fields.at("speed").kind() != JsonKind::Array) {
        object.minimumSpeed = object.maximumSpeed = fields.numberWithin("speed", tiny, 200.0);
        return;
    }
    std::array<double, 2> speeds{};
    fields.numbers("speed", 2, speeds.data());
    object.minimumSpeed = speeds[0];
    object.maximumSpeed = speeds[1];
    if (!(tiny <= speeds[0] && speeds[0] <= speeds[1] && speeds[1] <= 200.0)) {
        fields.refuse("speed", "expected [least, greatest] in m/s");
    }
}

ObjectTraits readObject(const Fields& fields) {
    fields.allowOnly({"class", "size", "color", "upperClothingColor", "lowerClothingColor", "mode",
                      "path", "area", "count", "speed", "start", "pause"});
    ObjectTraits object;
    object.className = fields.text("class");
    object.size = usualSize(object.className);
    if (fields.has("size")) {
        fields.numbers("size", 3, object.size.data());
        if (!(object.size.minCoeff() > 0.0)) {
            fields.refuse("size", "every extent must be positive");
        }
    }
    constexpr double colorProbability = 0.7;
    const auto color = [&](const char* name) {
        return fields.has(name) ? Label{fields.text(name), colorProbability} : Label{};
    };
    object.labels.color = color("color");
    object.labels.upperClothingColor = color("upperClothingColor");
    object.labels.lowerClothingColor = color("lowerClothingColor");
    if (fields.has("area") == fields.has("path")) {
        fields.refuse("path", "an object has either a path or an area");
    }
    if (fields.has("area")) {
        readArea(fields, object);
    } else {
        object.mode = readMode(fields);
        readPath(fields, object);
    }
    readSpeed(fields, object);
    object.start = fields.numberWithin("start", 0.0, infinite, object.start);
    object.pause = fields.numberWithin("pause", 0.0, infinite, object.pause);
    return object;
}

}  // namespace

Scenario scenarioOf(const nlohmann::json& json) {
    const Fields fields(json);
    fields.allowOnly({"name", "description", "duration", "camera", "radar", "site", "videoSensor",
                      "radarSensor", "objects"});
    Scenario scenario;
    scenario.name = fields.text("name");
    scenario.description = fields.text("description", "");
    scenario.duration = fields.numberWithin("duration", tiny, 1e6);
    scenario.camera = readCamera(fields.object("camera"));
    scenario.radar = readRadar(fields.object("radar"));
    if (fields.has("site")) {
        scenario.site = readSite(fields.object("site"));
    }
    if (fields.has("videoSensor")) {
        readVideo(fields.object("videoSensor"), scenario.video);
    }
    scenario.radarSensor.maximumRange = scenario.radar.maximumRange;
    if (fields.has("radarSensor")) {
        readRadarSensor(fields.object("radarSensor"), scenario.radarSensor);
    }
    std::size_t objects = 0;
    fields.forEach("objects", [&](const Fields& item) {
        scenario.objects.push_back(readObject(item));
        objects += static_cast<std::size_t>(scenario.objects.back().count);
        if (objects > mostObjects) {
            fields.refuse("objects", fmt::format("are more than {}", mostObjects));
        }
    });
    return scenario;
}

Scenario readScenario(const std::string& path) {
    const nlohmann::json json = readJson(path);
    try {
        return scenarioOf(json);
    } catch (const InputError& error) {
        throw InputError(path == "-" ? "<stdin>" : path, error);
    }
}

}  // namespace Workbench
