// SPDX-License-Identifier: Apache-2.0
#include "simulate/scenario/Scenario.h"

#include <veskar-host/InputError.h>
#include <veskar-host/UsualSize.h>

#include "host/installation/InstallationFields.h"
#include "io/DocumentValue.h"
#include "io/TextFile.h"
#include "simulate/scenario/ScenarioKeys.h"

#include <array>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// Smaller steps and areas (m) are rejected: they would take a huge number of legs.
constexpr double shortestStep = 1e-3;
constexpr double smallestArea = 0.1;

Outage readOutage(const Fields& fields) {
    const Keys keys(outageKeys);
    fields.allowOnly(keys);
    Outage outage;
    outage.from = fields.number(keys["from"], outage.from);
    outage.to = fields.numberWithin("to", outage.from, keys["to"].allowed.most);
    return outage;
}

Wall readWall(const Fields& fields) {
    const Keys keys(wallKeys);
    fields.allowOnly(keys);
    Wall wall;
    fields.numbers(keys["from"], wall.from.data());
    fields.numbers(keys["to"], wall.to.data());
    return wall;
}

PersistentFalse readPersistent(const Fields& fields) {
    const Keys keys(persistentKeys);
    fields.allowOnly(keys);
    PersistentFalse result;
    fields.numbers(keys["position"], result.position.data());
    result.probability = fields.number(keys["probability"], result.probability);
    result.wander = fields.number(keys["wander"], result.wander);
    result.className = fields.text(keys["class"], result.className);
    result.from = fields.number(keys["from"], result.from);
    result.to = fields.numberWithin("to", result.from, keys["to"].allowed.most, result.to);
    return result;
}

Mounting readMountingError(const Fields& fields) {
    const Keys keys(mountingErrorKeys);
    fields.allowOnly(keys);
    Mounting error;
    error.yaw = fields.number(keys["yaw"], 0.0);
    error.pitch = fields.number(keys["pitch"], 0.0);
    error.roll = fields.number(keys["roll"], 0.0);
    error.position[2] = fields.number(keys["height"], 0.0);
    return error;
}

void readSensor(const Fields& fields, const Keys& keys, SensorTraits& sensor) {
    sensor.rate = fields.number(keys["rate"], sensor.rate);
    sensor.phase = fields.number(keys["phase"], sensor.phase);
    sensor.latency = fields.number(keys["latency"], sensor.latency);
    sensor.jitter = fields.number(keys["jitter"], sensor.jitter);
    sensor.timestampError = fields.number(keys["timestampError"], sensor.timestampError);
    sensor.detectionProbability =
        fields.number(keys["detectionProbability"], sensor.detectionProbability);
    sensor.maximumRange = fields.number(keys["maximumRange"], sensor.maximumRange);
    sensor.falseAlarms = fields.number(keys["falseAlarms"], sensor.falseAlarms);
    sensor.bursts = fields.number(keys["bursts"], sensor.bursts);
    sensor.burstDuration = fields.number(keys["burstDuration"], sensor.burstDuration);
    sensor.idChurn = fields.number(keys["idChurn"], sensor.idChurn);
    sensor.emptyFrames = fields.boolean(keys["emptyFrames"], sensor.emptyFrames);
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
    const Keys keys(videoSensorKeys);
    fields.allowOnly(keys);
    readSensor(fields, keys, video);
    video.minimumBoxHeight = fields.number(keys["minimumBoxHeight"], video.minimumBoxHeight);
    video.edgeStd = fields.number(keys["edgeStd"], video.edgeStd);
    video.footStd = fields.number(keys["footStd"], video.footStd);
    video.footTime = fields.number(keys["footTime"], video.footTime);
    video.classConfusion = fields.number(keys["classConfusion"], video.classConfusion);
    video.occlusionLimit = fields.number(keys["occlusionLimit"], video.occlusionLimit);
}

void readRadarSensor(const Fields& fields, RadarTraits& radar) {
    const Keys keys(radarSensorKeys);
    fields.allowOnly(keys);
    readSensor(fields, keys, radar);
    radar.rangeStd = fields.number(keys["rangeStd"], radar.rangeStd);
    radar.azimuthStd = fields.number(keys["azimuthStd"], radar.azimuthStd);
    radar.reflectionStd = fields.number(keys["reflectionStd"], radar.reflectionStd);
    radar.reflectionTime = fields.number(keys["reflectionTime"], radar.reflectionTime);
    radar.rangeResolution = fields.number(keys["rangeResolution"], radar.rangeResolution);
    radar.azimuthResolution = fields.number(keys["azimuthResolution"], radar.azimuthResolution);
    radar.hiddenFactor = fields.number(keys["hiddenFactor"], radar.hiddenFactor);
    radar.minimumRadialSpeed = fields.number(keys["minimumRadialSpeed"], radar.minimumRadialSpeed);
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

void readArea(const Fields& fields, const Keys& keys, ObjectTraits& object) {
    object.mode = PathMode::Wander;
    std::array<double, 4> area{};
    fields.numbers(keys["area"], area.data());
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
        const Range allowed = keys["count"].allowed;
        if (!allowed.contains(object.count)) {
            fields.refuse("count",
                          fmt::format("is not between {} and {}", allowed.least, allowed.most));
        }
    }
}

void readSpeed(const Fields& fields, const Key& key, ObjectTraits& object) {
    if (fields.at("speed").kind() != JsonKind::Array) {
        object.minimumSpeed = object.maximumSpeed = fields.number(key, object.minimumSpeed);
        return;
    }
    std::array<double, 2> speeds{};
    fields.numbers("speed", 2, speeds.data());
    object.minimumSpeed = speeds[0];
    object.maximumSpeed = speeds[1];
    if (!(key.allowed.contains(speeds[0]) && speeds[0] <= speeds[1] &&
          key.allowed.contains(speeds[1]))) {
        fields.refuse("speed", "expected [least, greatest] in m/s");
    }
}

ObjectTraits readObject(const Fields& fields) {
    const Keys keys(objectKeys);
    fields.allowOnly(keys);
    ObjectTraits object;
    object.className = fields.text(keys["class"]);
    object.size = usualSize(object.className);
    if (fields.has("size")) {
        fields.numbers(keys["size"], object.size.data());
        if (!keys["size"].allowed.contains(object.size.minCoeff())) {
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
        readArea(fields, keys, object);
    } else {
        object.mode = readMode(fields);
        readPath(fields, object);
    }
    readSpeed(fields, keys["speed"], object);
    object.start = fields.number(keys["start"], object.start);
    object.pause = fields.number(keys["pause"], object.pause);
    return object;
}

}  // namespace

Scenario scenarioOf(const nlohmann::json& json) {
    const Fields fields(json);
    const Keys keys(scenarioKeys);
    fields.allowOnly(keys);
    Scenario scenario;
    scenario.name = fields.text(keys["name"]);
    scenario.description = fields.text(keys["description"]);
    scenario.duration = fields.number(keys["duration"], scenario.duration);
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
    if (fields.has("walls")) {
        fields.forEach("walls",
                       [&](const Fields& item) { scenario.walls.push_back(readWall(item)); });
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
