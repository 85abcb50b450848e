// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "Process.h"
#include "SourceDirectory.h"
#include "simulate/scenario/Scenario.h"

#include <cstddef>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

nlohmann::json tiny() {
    return nlohmann::json::parse(VeskarTest::slurp(VeskarTest::dataFile("tiny.scenario.json")),
                                 nullptr, true, true);
}

std::string faultOf(const nlohmann::json& scene) {
    try {
        Workbench::scenarioOf(scene);
    } catch (const Veskar::Host::InputError& error) {
        return error.what();
    }
    return "no fault";
}

}  // namespace

TEST(Scenario, ReadsObjectsAndSensors) {
    const Workbench::Scenario scenario = Workbench::scenarioOf(tiny());
    EXPECT_EQ(scenario.name, "tiny");
    EXPECT_EQ(scenario.video.rate, 5.0);
    ASSERT_EQ(scenario.video.outages.size(), 1u);
    EXPECT_EQ(scenario.video.outages[0].to, 2.5);
    EXPECT_EQ(scenario.radarSensor.phase, 0.05);
    ASSERT_EQ(scenario.objects.size(), 3u);
    EXPECT_EQ(scenario.objects[0].labels.upperClothingColor.name, "red");
    EXPECT_EQ(scenario.objects[2].className, "car");
    EXPECT_EQ(scenario.objects[2].size, Eigen::Vector3d(4.4, 1.8, 1.5));
    EXPECT_EQ(scenario.objects[2].start, 0.5);
}

TEST(Scenario, EveryShippedOneReads) {
    std::size_t count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(VESKAR_SOURCE_DIR "/config/scenarios")) {
        const std::filesystem::path& path = entry.path();
        EXPECT_EQ(Workbench::readScenario(path.string()).name, path.stem().string());
        ++count;
    }
    EXPECT_GE(count, 11U);
}

TEST(Scenario, SaysWhatIsWrong) {
    nlohmann::json scene = tiny();
    scene["objects"][1]["speed"] = "fast";
    EXPECT_EQ(faultOf(scene), "objects[1].speed: expected a number, found a string");
    scene = tiny();
    scene["objects"][0].erase("path");
    EXPECT_EQ(faultOf(scene), "objects[0].path: an object has either a path or an area");
    scene = tiny();
    scene["objects"][0]["path"] = {{1.0, 2.0}};
    EXPECT_EQ(faultOf(scene), "objects[0].path: expected at least two points");
    scene = tiny();
    scene["objects"][0]["path"][1] = {1.0};
    EXPECT_EQ(faultOf(scene), "objects[0].path[1]: expected two numbers");
    scene = tiny();
    scene["objects"][0]["mode"] = "fly";
    EXPECT_EQ(faultOf(scene), "objects[0].mode: \"fly\" is not once, loop or backAndForth");
    scene = tiny();
    scene["videoSensor"]["outages"][0]["to"] = 1.0;
    EXPECT_EQ(faultOf(scene), "videoSensor.outages[0].to: 1 is below 1.5");
    scene = tiny();
    scene["radarSensor"]["rangStd"] = 1.0;
    EXPECT_EQ(faultOf(scene), "radarSensor.rangStd: unknown key");
    scene = tiny();
    scene["camera"]["position"][2] = 0.0;
    EXPECT_EQ(faultOf(scene),
              "camera.position: the height above ground, the third number, must be positive");
    scene = tiny();
    scene.erase("duration");
    EXPECT_EQ(faultOf(scene), "duration: missing");
}

TEST(Scenario, NamesTheFileAndTheLineOfASyntaxError) {
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "bad.json";
    VeskarTest::spill(path, "{\n  \"name\": \"x\",\n  \"duration\" 5\n}\n");
    try {
        Workbench::readScenario(path);
        FAIL();
    } catch (const Veskar::Host::InputError& error) {
        EXPECT_EQ(std::string(error.what()).rfind(path + ":3: column ", 0), 0u) << error.what();
    }
}

TEST(Scenario, RefusesWaysThatLeadNowhere) {
    nlohmann::json scene = tiny();
    scene["objects"][0]["path"] = {{1.0, 2.0}, {1.0, 2.0 + 1e-9}, {5.0, 5.0}};
    EXPECT_EQ(faultOf(scene), "objects[0].path[1]: is closer than 0.001 m to the point before");
    // Standing still is allowed.
    scene["objects"][0]["path"] = {{1.0, 2.0}, {1.0, 2.0}};
    EXPECT_EQ(faultOf(scene), "no fault");
    // A loop continues from the last point to the first.
    scene["objects"][0]["path"] = {{1.0, 2.0}, {5.0, 5.0}, {1.0, 2.0 + 1e-9}};
    EXPECT_EQ(faultOf(scene), "no fault");
    scene["objects"][0]["mode"] = "loop";
    EXPECT_EQ(faultOf(scene), "objects[0].path[0]: is closer than 0.001 m to the point before");
    scene = tiny();
    scene["objects"][0].erase("path");
    scene["objects"][0].erase("mode");
    scene["objects"][0]["area"] = {1.0, 1.0, 20.0, 1.0 + 1e-9};
    EXPECT_EQ(faultOf(scene), "objects[0].area: is narrower than 0.1 m");
}

TEST(Scenario, CountsTheMembersOfAllCrowds) {
    nlohmann::json scene = tiny();
    scene["objects"][0].erase("path");
    scene["objects"][0].erase("mode");
    scene["objects"][0]["area"] = {1.0, 1.0, 20.0, 20.0};
    scene["objects"][0]["count"] = 9998;
    EXPECT_EQ(faultOf(scene), "no fault");
    scene["objects"][0]["count"] = 9999;
    EXPECT_EQ(faultOf(scene), "objects: are more than 10000");
}
