// SPDX-License-Identifier: Apache-2.0
#include "check/SceneCheck.h"

#include <veskar/Vocabulary.h>

#include "check/CameraCheck.h"
#include "recording/LabelWords.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

using Kind = LocatedValue::Kind;

constexpr Range probability{0.0, 1.0};
constexpr Range turn{-360.0, 360.0};
constexpr bool optional = false;

const Rules scenarioRules{
    {"name", Wanted::Text, "short name"},
    {"description", Wanted::Text, "what happens", optional},
    {"duration", Wanted::Number, "s", true, positive, {5.0, 3600.0}},
    {"camera", Wanted::Object, "the camera as stated to the fusion"},
    {"radar", Wanted::Object, "the radar as stated to the fusion"},
    {"site", Wanted::Object, "where it plays", optional},
    {"videoSensor", Wanted::Object, "how the camera really behaves", optional},
    {"radarSensor", Wanted::Object, "how the radar really behaves", optional},
    {"objects", Wanted::Array, "what moves"},
};

const Rules headerRules{
    {"format", Wanted::Text, "\"veskar-recording\""},
    {"version", Wanted::Integer, "version of the format", true, {1.0, 1.0}},
    {"name", Wanted::Text, "short name", optional},
    {"origin", Wanted::Text, "where the data comes from", optional},
    {"licence", Wanted::Text, "terms", optional},
    {"camera", Wanted::Object, "the video sensor"},
    {"radar", Wanted::Object, "the radar"},
    {"site", Wanted::Object, "where the device stands", optional},
    {"epoch", Wanted::Number, "UNIX time of time 0", optional},
    {"seed", Wanted::Integer, "of a simulation", optional, notNegative},
    {"truth", Wanted::Text, "none, incomplete or complete", optional},
};

const Rules radarRules{
    {"position",
     Wanted::Array,
     "x forward, y left, height, m",
     true,
     anyNumber,
     {-1000.0, 1000.0},
     3},
    {"rotation", Wanted::Object, "mounting angles"},
    {"rangeStd", Wanted::Number, "noise of the range, m", true, positive, {0.02, 10.0}},
    {"azimuthStd",
     Wanted::Number,
     "noise of the azimuth, degrees",
     true,
     {0.0, 90.0, false, true},
     {0.05, 10.0}},
    {"velocityStd",
     Wanted::Number,
     "noise of each velocity component, m/s",
     true,
     positive,
     {0.02, 10.0}},
    {"fieldOfView",
     Wanted::Number,
     "full angle, degrees",
     optional,
     {0.0, 360.0, false, true},
     {10.0, 360.0}},
    {"maximumRange", Wanted::Number, "m", optional, positive, {10.0, 20000.0}},
};

const Rules radarRotationRules{
    {"pitch", Wanted::Number, "downward, degrees", true, turn, {-15.0, 60.0}},
    {"yaw", Wanted::Number, "to the left, degrees", true, turn, {-180.0, 180.0}},
    {"roll", Wanted::Number, "right side down, degrees", true, turn, {-15.0, 15.0}},
};

const Rules siteRules{
    {"latitude", Wanted::Number, "degrees, north positive", true, {-90.0, 90.0}},
    {"longitude", Wanted::Number, "degrees, east positive", true, {-180.0, 180.0}},
    {"heading", Wanted::Number, "of the device's x axis, degrees clockwise from north", true, turn},
};

const Rules mountingErrorRules{
    {"yaw", Wanted::Number, "degrees", optional, turn, {-5.0, 5.0}},
    {"pitch", Wanted::Number, "degrees", optional, turn, {-5.0, 5.0}},
    {"roll", Wanted::Number, "degrees", optional, turn, {-5.0, 5.0}},
    {"height", Wanted::Number, "m", optional, anyNumber, {-2.0, 2.0}},
};

const Rules outageRules{
    {"from", Wanted::Number, "s", true, notNegative},
    {"to", Wanted::Number, "s", true, notNegative},
};

const Rules persistentRules{
    {"position", Wanted::Array, "x forward, y left, m", true, anyNumber, anyNumber, 2},
    {"probability", Wanted::Number, "of being detected in a frame", optional, probability},
    {"wander", Wanted::Number, "m", optional, notNegative, {0.0, 10.0}},
    {"class", Wanted::Text, "what video takes it for", optional},
    {"from", Wanted::Number, "s", optional, notNegative},
    {"to", Wanted::Number, "s", optional, notNegative},
};

const Rules sensorRules{
    {"rate", Wanted::Number, "frames per second", optional, {0.01, 1000.0}, {0.5, 60.0}},
    {"phase", Wanted::Number, "time of the first frame, s", optional, notNegative, {0.0, 10.0}},
    {"latency", Wanted::Number, "s", optional, {0.0, 10.0}, {0.0, 1.0}},
    {"jitter",
     Wanted::Number,
     "standard deviation of the latency, s",
     optional,
     {0.0, 10.0},
     {0.0, 0.3}},
    {"timestampError", Wanted::Number, "s", optional, {-10.0, 10.0}, {-1.0, 1.0}},
    {"detectionProbability", Wanted::Number, "in plain view", optional, probability, {0.2, 1.0}},
    {"maximumRange", Wanted::Number, "m", optional, positive, {5.0, 20000.0}},
    {"falseAlarms", Wanted::Number, "expected per frame", optional, {0.0, 100.0}, {0.0, 5.0}},
    {"bursts", Wanted::Number, "expected per minute", optional, {0.0, 6000.0}, {0.0, 60.0}},
    {"burstDuration", Wanted::Number, "s", optional, positive, {0.1, 10.0}},
    {"idChurn",
     Wanted::Number,
     "id changes per track and minute",
     optional,
     {0.0, 6000.0},
     {0.0, 60.0}},
    {"emptyFrames", Wanted::Boolean, "whether frames without tracks are sent", optional},
    {"mountingError", Wanted::Object, "true pose minus stated pose", optional},
    {"outages", Wanted::Array, "when the sensor is dead", optional},
    {"persistent", Wanted::Array, "what it takes for an object again and again", optional},
};

const Rules videoRules{
    {"minimumBoxHeight", Wanted::Number, "image units", optional, {0.0, 2.0}, {0.0, 0.3}},
    {"edgeStd",
     Wanted::Number,
     "noise of a box edge, image units",
     optional,
     {0.0, 1.0, false},
     {0.0005, 0.1}},
    {"footStd", Wanted::Number, "fraction of the box height", optional, probability, {0.0, 0.3}},
    {"footTime", Wanted::Number, "correlation time, s", optional, positive, {0.1, 30.0}},
    {"classConfusion", Wanted::Number, "probability per frame", optional, probability, {0.0, 0.5}},
    {"occlusionLimit", Wanted::Number, "covered fraction", optional, probability, {0.2, 1.0}},
};

const Rules radarSensorRules{
    {"rangeStd", Wanted::Number, "m", optional, positive, {0.02, 10.0}},
    {"azimuthStd", Wanted::Number, "degrees", optional, {0.0, 90.0, false, true}, {0.05, 10.0}},
    {"reflectionStd", Wanted::Number, "fraction of half the object's size", optional, {0.0, 2.0}},
    {"reflectionTime", Wanted::Number, "correlation time, s", optional, positive, {0.1, 30.0}},
    {"rangeResolution", Wanted::Number, "m", optional, notNegative, {0.0, 50.0}},
    {"azimuthResolution", Wanted::Number, "degrees", optional, {0.0, 180.0}, {0.0, 20.0}},
    {"hiddenFactor", Wanted::Number, "of the detection probability", optional, probability},
};

const Rules objectRules{
    {"class", Wanted::Text, "class of the object"},
    {"size", Wanted::Array, "length, width, height, m", optional, positive, {0.1, 30.0}, 3},
    {"color", Wanted::Text, "colour", optional},
    {"upperClothingColor", Wanted::Text, "colour", optional},
    {"lowerClothingColor", Wanted::Text, "colour", optional},
    {"mode", Wanted::Text, "once, loop or backAndForth", optional},
    {"path", Wanted::Array, "way points", optional},
    {"area", Wanted::Array, "least x and y, greatest x and y, m", optional, anyNumber, anyNumber,
     4},
    {"count", Wanted::Integer, "objects of a crowd", optional, {1.0, 10000.0}, {1.0, 512.0}},
    {"start", Wanted::Number, "when it sets out, s", optional, notNegative},
    {"pause", Wanted::Number, "rest at every way point, s", optional, notNegative},
};

class SceneCheck {
public:
    explicit SceneCheck(Findings& findings) : findings_(findings) {}

    void installation(const LocatedValue& parent) {
        if (const LocatedValue* camera = objectAt(parent, "camera")) {
            checkCamera(*camera, "camera", Wanted::Number, findings_);
        }
        if (const LocatedValue* radar = objectAt(parent, "radar")) {
            checkMembers(*radar, "radar", radarRules, Severity::Fault, findings_);
            if (const LocatedValue* rotation = objectAt(*radar, "rotation")) {
                checkMembers(*rotation, "radar.rotation", radarRotationRules, Severity::Fault,
                             findings_);
            }
            height(*radar);
        }
        if (const LocatedValue* site = objectAt(parent, "site")) {
            checkMembers(*site, "site", siteRules, Severity::Fault, findings_);
        }
    }

    void sensor(const LocatedValue& parent, const char* name, const Rules& own) {
        const LocatedValue* sensor = objectAt(parent, name);
        if (sensor == nullptr) {
            return;
        }
        Rules rules = sensorRules;
        rules.insert(rules.end(), own.begin(), own.end());
        checkMembers(*sensor, name, rules, Severity::Fault, findings_);
        if (const LocatedValue* error = objectAt(*sensor, "mountingError")) {
            checkMembers(*error, joinPath(name, "mountingError"), mountingErrorRules,
                         Severity::Fault, findings_);
        }
        elements(*sensor, name, "outages", [this](const LocatedValue& outage, const auto& path) {
            checkMembers(outage, path, outageRules, Severity::Fault, findings_);
            interval(outage, path);
        });
        elements(*sensor, name, "persistent", [this](const LocatedValue& item, const auto& path) {
            checkMembers(item, path, persistentRules, Severity::Fault, findings_);
            interval(item, path);
            className(item, path);
        });
    }

    void objects(const LocatedValue& scenario) {
        elements(scenario, "", "objects",
                 [this](const LocatedValue& item, const auto& path) { object(item, path); });
        const LocatedValue* list = scenario.find("objects");
        if (list != nullptr && list->kind == Kind::Array && list->elements.empty()) {
            add(Severity::Warning, *list, "objects", "nothing will ever be seen");
        }
    }

private:
    template <typename Check>
    void elements(const LocatedValue& parent, const std::string& path, std::string_view key,
                  Check check) {
        const LocatedValue* list = parent.find(key);
        if (list == nullptr) {
            return;
        }
        for (std::size_t i = 0; i < list->elements.size(); ++i) {
            check(list->elements[i], fmt::format("{}[{}]", joinPath(path, key), i));
        }
    }

    void add(Severity severity, const LocatedValue& value, std::string key, std::string message) {
        findings_.push_back({severity, static_cast<std::uint64_t>(value.line), std::move(key),
                             value.shown(), std::move(message)});
    }

    void height(const LocatedValue& radar) {
        const LocatedValue* position = radar.find("position");
        if (position != nullptr && position->elements.size() == 3 &&
            position->elements[2].isNumber() && !(position->elements[2].number > 0.0)) {
            add(Severity::Fault, position->elements[2], "radar.position[2]",
                "expected a height above ground above 0, m");
        }
    }

    void interval(const LocatedValue& item, const std::string& path) {
        const LocatedValue* from = numberAt(item, "from");
        const LocatedValue* to = numberAt(item, "to");
        if (from != nullptr && to != nullptr && to->number < from->number) {
            add(Severity::Fault, *to, joinPath(path, "to"),
                fmt::format("expected at least {}, where it begins", from->text));
        }
    }

    void className(const LocatedValue& item, const std::string& path) {
        word(item, path, "class", WordKind::Class);
        const LocatedValue* name = item.find("class");
        if (name != nullptr && name->kind == Kind::Text &&
            Veskar::Vocabulary::isKnownClass(name->text) &&
            Veskar::Vocabulary::supportedClasses.count(name->text) == 0) {
            add(Severity::Warning, *name, joinPath(path, "class"),
                "the fusion takes no tracks of this class");
        }
    }

    /// Reports a word outside the vocabulary once, however many objects have it.
    void word(const LocatedValue& item, const std::string& path, const char* key, WordKind kind) {
        const LocatedValue* name = item.find(key);
        if (name == nullptr || name->kind != Kind::Text ||
            !words_.insert({kind, name->text}).second) {
            return;
        }
        if (const std::optional<std::string> advice = adviceOn(kind, name->text)) {
            add(Severity::Warning, *name, joinPath(path, key), *advice);
        }
    }

    void object(const LocatedValue& item, const std::string& path) {
        Rules rules = objectRules;
        const LocatedValue* speed = item.find("speed");
        const bool isInterval = speed != nullptr && speed->kind == Kind::Array;
        constexpr Range possible{0.0, 200.0, false, true};
        rules.push_back({"speed",
                         isInterval ? Wanted::Array : Wanted::Number,
                         "m/s",
                         true,
                         possible,
                         {0.1, 50.0},
                         isInterval ? std::size_t{2} : 0});
        checkMembers(item, path, rules, Severity::Fault, findings_);
        if (item.kind != Kind::Object) {
            return;
        }
        className(item, path);
        for (const char* color : {"color", "upperClothingColor", "lowerClothingColor"}) {
            word(item, path, color, WordKind::Color);
        }
        if ((item.find("path") == nullptr) == (item.find("area") == nullptr)) {
            add(Severity::Fault, item, path, "expected either a path or an area");
        }
        mode(item, path);
        wayPoints(item, path);
    }

    void mode(const LocatedValue& item, const std::string& path) {
        const LocatedValue* mode = item.find("mode");
        if (mode != nullptr && mode->kind == Kind::Text && mode->text != "once" &&
            mode->text != "loop" && mode->text != "backAndForth") {
            add(Severity::Fault, *mode, joinPath(path, "mode"),
                "expected once, loop or backAndForth");
        }
    }

    void wayPoints(const LocatedValue& item, const std::string& path) {
        const LocatedValue* list = item.find("path");
        if (list == nullptr || list->kind != Kind::Array) {
            return;
        }
        if (list->elements.size() < 2) {
            add(Severity::Fault, *list, joinPath(path, "path"), "expected at least two points");
        }
        elements(item, path, "path", [this](const LocatedValue& point, const auto& place) {
            const bool isPoint = point.elements.size() == 2 && point.elements[0].isNumber() &&
                                 point.elements[1].isNumber();
            if (!isPoint) {
                add(Severity::Fault, point, place, "expected two numbers, x and y in m");
            }
        });
    }

    Findings& findings_;
    std::set<std::pair<WordKind, std::string>> words_;  ///< words already checked
};

}  // namespace

void checkScenario(const LocatedValue& document, Findings& findings) {
    checkMembers(document, "", scenarioRules, Severity::Fault, findings);
    SceneCheck check(findings);
    check.installation(document);
    check.sensor(document, "videoSensor", videoRules);
    check.sensor(document, "radarSensor", radarSensorRules);
    check.objects(document);
}

void checkHeader(const LocatedValue& header, Findings& findings) {
    checkMembers(header, "", headerRules, Severity::Fault, findings);
    SceneCheck(findings).installation(header);
}

}  // namespace Workbench
