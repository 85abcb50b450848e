// SPDX-License-Identifier: Apache-2.0
// --set of `veskar run` and `veskar record`.
#include <veskar-host/InputError.h>

#include "Process.h"
#include "cli/RunChanges.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Changes = std::vector<std::string>;

/// @return the document with a change, or why there is none
std::string changed(const std::string& document, const std::string& change) {
    const VeskarTest::TemporaryDirectory directory;
    VeskarTest::spill(directory / "run.json", document);
    try {
        return readChanged(directory / "run.json", {change});
    } catch (const Veskar::Host::InputError& error) {
        return error.what();
    }
}

/// @return why changes are refused; empty when they are not
std::string refusalOf(const Changes& changes) {
    try {
        RunChanges::of(changes);
    } catch (const Veskar::Host::InputError& error) {
        return error.what();
    }
    return "";
}

TEST(RunChanges, AreJsonOrText) {
    EXPECT_EQ(changed("{}", "fusion=/tmp/x.json"), R"({"fusion":"/tmp/x.json"})");
    EXPECT_EQ(changed("{}", R"(fusion="/tmp/x.json")"), R"({"fusion":"/tmp/x.json"})");
    EXPECT_EQ(changed("{}", "status.interval=2"), R"({"status":{"interval":2}})");
    EXPECT_EQ(changed("{}", R"(brokers=[{"host":"a"}])"), R"({"brokers":[{"host":"a"}]})");
    EXPECT_EQ(changed("{}", "brokers=[{"), "--set brokers=[{: the value is no JSON");
    EXPECT_EQ(changed("{}", "fusion=\xff"), "--set: the changes are no UTF-8");
    EXPECT_EQ(changed("{}", "fusion"), "--set fusion: expected KEY=VALUE");
}

TEST(RunChanges, AreForPlacesThatAreThere) {
    const std::string document = R"({"sensors":[{"kind":"radar"}]})";
    EXPECT_EQ(changed(document, "sensors.0.latency=1"),
              R"({"sensors":[{"kind":"radar","latency":1}]})");
    for (const std::string place :
         {"sensors.1.latency", "sensors.3", "sensors.4000000000.latency", "sensors.-.latency",
          "sensors.-1.latency", "sensors.99999999999999999999", "sensors.0x.latency", "sensors.",
          "sensors.0.kind.latency", "sensors..latency", ""}) {
        const std::string change = place + "=1";
        EXPECT_EQ(changed(document, change), "--set " + change + ": there is no such place");
    }
}

TEST(RunChanges, BelongToOneOfTwoDocuments) {
    const RunChanges changes = RunChanges::of(
        {"sensors.0.latency=1", "veskarModule.gatingDistance=5.0", "radarGain=2", "fusion=a"});
    EXPECT_THAT(changes.ofRun, ElementsAre("sensors.0.latency=1", "fusion=a"));
    EXPECT_THAT(changes.ofFusion, ElementsAre("veskarModule.gatingDistance=5.0", "radarGain=2"));
    EXPECT_EQ(refusalOf({"sensor.0.latency=1"}),
              "--set sensor.0.latency=1: run.json has no \"sensor\"; is sensors meant?");
    EXPECT_EQ(refusalOf({"ouputs=[]"}),
              "--set ouputs=[]: run.json has no \"ouputs\"; is outputs meant?");
    EXPECT_THAT(refusalOf({"nonsense=1"}), IsEmpty());
}

TEST(RunChanges, AreRefusedByTheProgram) {
    const VeskarTest::Outcome outcome =
        VeskarTest::veskar({"run", "/nowhere/run.json", "--set", "sensor.0.latency=1"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.errors, HasSubstr("is sensors meant?"));
}

}  // namespace
}  // namespace Workbench
