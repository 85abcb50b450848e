// SPDX-License-Identifier: Apache-2.0
// The readers and the check agree on which keys are required and on their limits.
#include <veskar-host/InputError.h>

#include "Installation.h"
#include "Process.h"
#include "SourceDirectory.h"
#include "check/SceneCheck.h"
#include "host/installation/HeaderFields.h"
#include "host/installation/InstallationKeys.h"
#include "io/DocumentValue.h"
#include "simulate/scenario/Scenario.h"
#include "simulate/scenario/ScenarioKeys.h"

#include <cmath>
#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// A kind of document with its reader, which throws, and its check.
struct KeyedDocument {
    void (*read)(const nlohmann::json&);
    void (*check)(const LocatedValue&, Findings&);
};

const KeyedDocument scenarios{[](const nlohmann::json& json) { scenarioOf(json); }, checkScenario};
const KeyedDocument headers{[](const nlohmann::json& json) { readHeader(Fields(json)); },
                            checkHeader};

bool isReadable(const KeyedDocument& document, const nlohmann::json& json) {
    try {
        document.read(json);
        return true;
    } catch (const InputError&) {
        return false;
    }
}

bool isFaulty(const KeyedDocument& document, const nlohmann::json& json) {
    const std::string text = json.dump();
    LocatedValue located;
    EXPECT_EQ(parseLocated(text, Comments::Refused, located).line, 0);
    Findings findings;
    document.check(located, findings);
    return hasFault(findings);
}

/// Expects the same verdict of the reader and of the check.
void expectVerdict(const KeyedDocument& document, const nlohmann::json& json, bool isGood,
                   const std::string& what) {
    EXPECT_EQ(isReadable(document, json), isGood) << what;
    EXPECT_EQ(isFaulty(document, json), !isGood) << what;
}

/// Spoils every key of an object in turn.
/// @param document the kind of the document
/// @param json a document without fault that has all of the keys
/// @param place the object
/// @param keys its keys
void expectAgreement(const KeyedDocument& document, const nlohmann::json& json,
                     const std::string& place, const Keys& keys) {
    const nlohmann::json::json_pointer object(place);
    for (const Key& key : keys) {
        const std::string name(key.name);
        const std::string what = fmt::format("{}/{}", place, name);
        ASSERT_TRUE(json.at(object).contains(name)) << what;
        nlohmann::json changed = json;
        changed[object].erase(name);
        expectVerdict(document, changed, !key.required, what + " is missing");
        if (key.wanted != Wanted::Number) {
            continue;
        }
        const auto set = [&](double value) {
            changed = json;
            changed[object][name] = value;
            return what + " is " + std::to_string(value);
        };
        if (std::isfinite(key.allowed.least)) {
            const std::string atLimit = set(key.allowed.least);
            expectVerdict(document, changed, true, atLimit);
            const std::string below = set(key.allowed.least - 1e-7);
            expectVerdict(document, changed, false, below);
        }
        if (std::isfinite(key.allowed.most)) {
            const std::string atLimit = set(key.allowed.most);
            expectVerdict(document, changed, true, atLimit);
            const std::string above = set(key.allowed.most + 0.1);
            expectVerdict(document, changed, false, above);
        }
    }
    nlohmann::json changed = json;
    changed[object]["another"] = 1;
    expectVerdict(document, changed, false, place + "/another");
}

/// Gives an object the numbers that it lacks, each within its limits.
void addNumbers(nlohmann::json& object, const Keys& keys) {
    for (const Key& key : keys) {
        const std::string name(key.name);
        if (key.wanted == Wanted::Number && !object.contains(name)) {
            object[name] = key.allowed.contains(1.0) ? 1.0 : key.allowed.least;
        }
    }
}

/// A scenario with every key.
nlohmann::json wholeScenario() {
    nlohmann::json scenario = nlohmann::json::parse(
        VeskarTest::slurp(VeskarTest::dataFile("tiny.scenario.json")), nullptr, true, true);
    addNumbers(scenario["radar"], radarKeys);
    for (const char* sensor : {"videoSensor", "radarSensor"}) {
        nlohmann::json& traits = scenario[sensor];
        addNumbers(traits, std::string(sensor) == "videoSensor" ? Keys(videoSensorKeys)
                                                                : Keys(radarSensorKeys));
        traits["emptyFrames"] = true;
        traits["mountingError"] = nlohmann::json::object();
        addNumbers(traits["mountingError"], mountingErrorKeys);
        // Both ends may be 0, the least number that is allowed.
        traits["outages"] = nlohmann::json::array({{{"from", 0.0}, {"to", 0.0}}});
        traits["persistent"] =
            nlohmann::json::array({{{"position", {10.0, 0.0}}, {"class", "human"}}});
        addNumbers(traits["persistent"][0], persistentKeys);
        traits["persistent"][0]["from"] = 0.0;
    }
    scenario["walls"] = nlohmann::json::array({{{"from", {5.0, 0.0}}, {"to", {5.0, 2.0}}}});
    addNumbers(scenario["objects"][0], objectKeys);
    return scenario;
}

TEST(Keys, OfAScenarioAreThoseOfItsReaderAndOfItsCheck) {
    const nlohmann::json json = wholeScenario();
    expectVerdict(scenarios, json, true, "as it is");
    expectAgreement(scenarios, json, "", scenarioKeys);
    expectAgreement(scenarios, json, "/camera", cameraKeys);
    expectAgreement(scenarios, json, "/camera/rotation", rotationKeys);
    expectAgreement(scenarios, json, "/radar", radarKeys);
    expectAgreement(scenarios, json, "/radar/rotation", rotationKeys);
    expectAgreement(scenarios, json, "/site", siteKeys);
    expectAgreement(scenarios, json, "/videoSensor", videoSensorKeys);
    expectAgreement(scenarios, json, "/radarSensor", radarSensorKeys);
    expectAgreement(scenarios, json, "/videoSensor/mountingError", mountingErrorKeys);
    expectAgreement(scenarios, json, "/videoSensor/outages/0", outageKeys);
    expectAgreement(scenarios, json, "/videoSensor/persistent/0", persistentKeys);
    expectAgreement(scenarios, json, "/walls/0", wallKeys);
}

TEST(Keys, OfAnObjectAreThoseOfItsReaderAndOfItsCheck) {
    nlohmann::json json = wholeScenario();
    for (const double speed : {leastPositive, 200.0}) {
        json["objects"][0]["speed"] = speed;
        expectVerdict(scenarios, json, true, "speed at its limit");
        json["objects"][0]["speed"] = {leastPositive, speed};
        expectVerdict(scenarios, json, true, "speeds at their limits");
    }
    for (const double speed : {leastPositive - 1e-7, 200.1}) {
        json["objects"][0]["speed"] = speed;
        expectVerdict(scenarios, json, false, "speed out of its limits");
        json["objects"][0]["speed"] = {speed, speed};
        expectVerdict(scenarios, json, false, "speeds out of their limits");
    }
    json = wholeScenario();
    json["objects"][0].erase("path");
    json["objects"][0]["area"] = {1.0, 1.0, 20.0, 20.0};
    json["objects"][0]["count"] = 9998;
    expectVerdict(scenarios, json, true, "a large crowd");
    json["objects"][0]["count"] = 10001;
    expectVerdict(scenarios, json, false, "a crowd that is too large");
    json["objects"][0]["count"] = 0;
    expectVerdict(scenarios, json, false, "no crowd");
}

TEST(Keys, OfAHeaderAreThoseOfItsReaderAndOfItsCheck) {
    RecordingHeader header = VeskarTest::installation();
    header.site = Site{10.0, 20.0, 30.0};
    header.epoch = 1620204790.5;
    header.seed = 7;
    const nlohmann::json json = nlohmann::json::parse(toJsonLine(header));
    expectVerdict(headers, json, true, "as it is");
    expectAgreement(headers, json, "", headerKeys);
    expectAgreement(headers, json, "/camera", cameraKeys);
    expectAgreement(headers, json, "/radar", radarKeys);
    expectAgreement(headers, json, "/site", siteKeys);
}

}  // namespace
}  // namespace Workbench
