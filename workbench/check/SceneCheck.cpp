// SPDX-License-Identifier: Apache-2.0
#include "check/SceneCheck.h"

#include <veskar/Vocabulary.h>

#include "check/CameraCheck.h"
#include "host/installation/InstallationKeys.h"
#include "recording/LabelWords.h"
#include "simulate/scenario/ScenarioKeys.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace Workbench {
namespace {

using Kind = LocatedValue::Kind;

constexpr Range turn{-360.0, 360.0};

const Rules scenarioRules =
    rulesOf(scenarioKeys, {
                              {"name", "short name"},
                              {"description", "what happens"},
                              {"duration", "s", {5.0, 3600.0}},
                              {"camera", "the camera as stated to the fusion"},
                              {"radar", "the radar as stated to the fusion"},
                              {"site", "where it plays"},
                              {"videoSensor", "how the camera really behaves"},
                              {"radarSensor", "how the radar really behaves"},
                              {"walls", "what nothing is seen through"},
                              {"objects", "what moves"},
                          });

const Rules headerRules = rulesOf(headerKeys, {
                                                  {"format", "\"veskar-recording\""},
                                                  {"version", "version of the format"},
                                                  {"name", "short name"},
                                                  {"origin", "where the data comes from"},
                                                  {"licence", "terms"},
                                                  {"camera", "the video sensor"},
                                                  {"radar", "the radar"},
                                                  {"site", "where the device stands"},
                                                  {"epoch", "UNIX time of time 0"},
                                                  {"seed", "of a simulation"},
                                                  {"truth", "none, incomplete or complete"},
                                              });

const Rules radarRules =
    rulesOf(radarKeys, {
                           {"position", "x forward, y left, height, m", {-1000.0, 1000.0}},
                           {"rotation", "mounting angles"},
                           {"rangeStd", "noise of the range, m", {0.02, 10.0}},
                           {"azimuthStd", "noise of the azimuth, degrees", {0.05, 10.0}},
                           {"velocityStd", "noise of each velocity component, m/s", {0.02, 10.0}},
                           {"fieldOfView", "full angle, degrees", {10.0, 360.0}},
                           {"maximumRange", "m", {10.0, 20000.0}},
                       });

const Rules radarRotationRules = rotationRules({-15.0, 60.0});

const Rules siteRules =
    rulesOf(siteKeys, {
                          {"latitude", "degrees, north positive"},
                          {"longitude", "degrees, east positive"},
                          {"heading", "of the device's x axis, degrees clockwise from north"},
                      });

const Rules mountingErrorRules =
    rulesOf(mountingErrorKeys, {
                                   {"yaw", "degrees", {-5.0, 5.0}, turn},
                                   {"pitch", "degrees", {-5.0, 5.0}, turn},
                                   {"roll", "degrees", {-5.0, 5.0}, turn},
                                   {"height", "m", {-2.0, 2.0}},
                               });

const Rules outageRules = rulesOf(outageKeys, {
                                                  {"from", "s"},
                                                  {"to", "s"},
                                              });

const Rules wallRules = rulesOf(wallKeys, {
                                              {"from", "one end, x forward, y left, m"},
                                              {"to", "the other end, m"},
                                          });

const Rules persistentRules =
    rulesOf(persistentKeys, {
                                {"position", "x forward, y left, m"},
                                {"probability", "of being detected in a frame"},
                                {"wander", "m", {0.0, 10.0}},
                                {"class", "what video takes it for"},
                                {"from", "s"},
                                {"to", "s"},
                            });

/// Notes on the keys of both sensors and on those of one.
std::vector<Note> sensorNotes(const std::vector<Note>& own) {
    std::vector<Note> notes{
        {"rate", "frames per second", {0.5, 60.0}},
        {"phase", "time of the first frame, s", {0.0, 10.0}},
        {"latency", "s", {0.0, 1.0}},
        {"jitter", "standard deviation of the latency, s", {0.0, 0.3}},
        {"timestampError", "s", {-1.0, 1.0}},
        {"detectionProbability", "in plain view", {0.2, 1.0}},
        {"maximumRange", "m", {5.0, 20000.0}},
        {"falseAlarms", "expected per frame", {0.0, 5.0}},
        {"bursts", "expected per minute", {0.0, 60.0}},
        {"burstDuration", "s", {0.1, 10.0}},
        {"idChurn", "id changes per track and minute", {0.0, 60.0}},
        {"emptyFrames", "whether frames without tracks are sent"},
        {"mountingError", "true pose minus stated pose"},
        {"outages", "when the sensor is dead"},
        {"persistent", "what it takes for an object again and again"},
    };
    notes.insert(notes.end(), own.begin(), own.end());
    return notes;
}

const Rules videoSensorRules =
    rulesOf(videoSensorKeys, sensorNotes({
                                 {"minimumBoxHeight", "image units", {0.0, 0.3}},
                                 {"edgeStd", "noise of a box edge, image units", {0.0005, 0.1}},
                                 {"footStd", "fraction of the box height", {0.0, 0.3}},
                                 {"footTime", "correlation time, s", {0.1, 30.0}},
                                 {"classConfusion", "probability per frame", {0.0, 0.5}},
                                 {"occlusionLimit", "covered fraction", {0.2, 1.0}},
                             }));

const Rules radarSensorRules = rulesOf(
    radarSensorKeys, sensorNotes({
                         {"rangeStd", "m", {0.02, 10.0}},
                         {"azimuthStd", "degrees", {0.05, 10.0}},
                         {"reflectionStd", "fraction of half the object's size"},
                         {"reflectionTime", "correlation time, s", {0.1, 30.0}},
                         {"rangeResolution", "m", {0.0, 50.0}},
                         {"azimuthResolution", "degrees", {0.0, 20.0}},
                         {"hiddenFactor", "of the detection probability"},
                         {"minimumRadialSpeed", "slower objects are not seen, m/s", {0.0, 5.0}},
                     }));

const Rules objectRules = rulesOf(objectKeys, {
                                                  {"class", "class of the object"},
                                                  {"size", "length, width, height, m", {0.1, 30.0}},
                                                  {"color", "colour"},
                                                  {"upperClothingColor", "colour"},
                                                  {"lowerClothingColor", "colour"},
                                                  {"mode", "once, loop or backAndForth"},
                                                  {"path", "way points"},
                                                  {"area", "least x and y, greatest x and y, m"},
                                                  {"count", "objects of a crowd", {1.0, 512.0}},
                                                  {"start", "when it sets out, s"},
                                                  {"pause", "rest at every way point, s"},
                                                  {"speed", "m/s", {0.1, 50.0}},
                                              });

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

    void sensor(const LocatedValue& parent, const char* name, const Rules& rules) {
        const LocatedValue* sensor = objectAt(parent, name);
        if (sensor == nullptr) {
            return;
        }
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

    void walls(const LocatedValue& scenario) {
        elements(scenario, "", "walls", [this](const LocatedValue& item, const auto& path) {
            checkMembers(item, path, wallRules, Severity::Fault, findings_);
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
        if (speed != nullptr && speed->kind == Kind::Array) {
            const auto rule = std::find_if(rules.begin(), rules.end(),
                                           [](const Rule& r) { return r.key.name == "speed"; });
            rule->key.wanted = Wanted::Array;
            rule->key.count = 2;
        }
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
    check.sensor(document, "videoSensor", videoSensorRules);
    check.sensor(document, "radarSensor", radarSensorRules);
    check.walls(document);
    check.objects(document);
}

void checkHeader(const LocatedValue& header, Findings& findings) {
    checkMembers(header, "", headerRules, Severity::Fault, findings);
    SceneCheck(findings).installation(header);
}

}  // namespace Workbench
