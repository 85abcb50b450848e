// SPDX-License-Identifier: Apache-2.0
// run.json: what its reader refuses, and what `veskar run` would find out later, with its line.
#include "Process.h"
#include "SourceDirectory.h"
#include "check/DocumentCheck.h"
#include "check/RunCheck.h"
#include "live/view/LiveView.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <sstream>
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
using testing::StartsWith;
using VeskarTest::slurp;
using VeskarTest::spill;

class RunCheck : public testing::Test {
protected:
    Findings check() {
        text = run.dump(1);
        spill(directory / "run.json", text);
        return checkDocument(directory / "run.json", DocumentKind::Run);
    }
    /// @return "KEY: MESSAGE @ LINE" of each finding, with "?" behind the key of a warning; LINE is
    ///         the text that stands there
    std::vector<std::string> told() {
        std::vector<std::string> all;
        for (const Finding& finding : check()) {
            all.push_back(finding.key + (finding.severity == Severity::Warning ? "?: " : ": ") +
                          finding.message + " @ " + lineOf(finding));
        }
        return all;
    }
    /// @return the text in the line of a finding, without indentation
    std::string lineOf(const Finding& finding) const {
        std::istringstream lines(text);
        std::string line;
        for (std::uint64_t i = 0; i < finding.line; ++i) {
            std::getline(lines, line);
        }
        return line.substr(std::min(line.find_first_not_of(' '), line.size()));
    }
    /// @param contents of a file that other users cannot read
    std::string secret(const std::string& contents) const {
        std::string path = directory / "secret";
        spill(path, contents);
        std::filesystem::permissions(path, std::filesystem::perms::owner_read);
        return path;
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string source = VESKAR_SOURCE_DIR;
    nlohmann::json run = nlohmann::json::parse(slurp(source + "/config/run-demo.json"));
    std::string text;
};

TEST_F(RunCheck, FindsNothingInTheShippedOne) {
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(RunCheck, NamesTheLineOfKeysWithBrackets) {
    run["sensors[x"] = 1;
    EXPECT_THAT(told(), ElementsAre("sensors[x: unknown key @ \"sensors[x\": 1,"));
    run.erase("sensors[x");
    run["sensors"][1]["a.b[0]"] = 1;
    EXPECT_THAT(told(), ElementsAre("sensors[1].a.b[0]: unknown key @ \"a.b[0]\": 1,"));
    run["sensors"][1].erase("a.b[0]");
    run["sensors[99999999999999999999]"] = 1;
    EXPECT_THAT(told(), ElementsAre(StartsWith("sensors[99999999999999999999]: unknown key @ "
                                               "\"sensors[99999999999999999999]\"")));
}

TEST_F(RunCheck, ReadsTheConfigurationOfTheFusion) {
    const std::string fusion = directory / "fusion.json";
    run["fusion"] = fusion;
    EXPECT_THAT(told(), ElementsAre(testing::AllOf(StartsWith("fusion: " + fusion),
                                                   HasSubstr(" @ \"fusion\": "))));
    spill(fusion, "{\n\"veskarModule\": 1}");
    EXPECT_THAT(told(), ElementsAre(testing::AllOf(StartsWith("fusion: " + fusion + ":"),
                                                   HasSubstr("; veskar check names "))));
    spill(fusion, slurp(source + "/config/fusion.json"));
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(RunCheck, OpensTheFilesOfTheBrokers) {
    nlohmann::json& broker = run["brokers"][0];
    broker["credentials"] = "/nowhere/credentials";
    EXPECT_THAT(told(), ElementsAre("brokers[0].credentials: /nowhere/credentials: No such file or "
                                    "directory @ \"credentials\": \"/nowhere/credentials\","));
    // Whoever checks has not what systemd hands to the service.
    broker["credentials"] = "$CREDENTIALS_DIRECTORY/broker";
    EXPECT_THAT(told(), testing::IsEmpty());
    broker["credentials"] = secret("user\npassword\n");
    broker["tls"] = {{"authorities", "/nowhere/authorities"}};
    EXPECT_THAT(told(),
                ElementsAre("brokers[0].tls.authorities: /nowhere/authorities: No such file or "
                            "directory @ \"authorities\": \"/nowhere/authorities\""));
    broker["tls"] = {
        {"authorities", "/"}, {"certificate", broker["credentials"]}, {"key", "/nowhere/key"}};
    EXPECT_THAT(told(), ElementsAre("brokers[0].tls.key: /nowhere/key: No such file or directory @ "
                                    "\"key\": \"/nowhere/key\""));
}

TEST_F(RunCheck, TriesTheAddresses) {
    run["sensors"][0]["input"] = {{"type", "tcp"}, {"address", "0.0.0.0:5000"}};
    run["sensors"][1]["input"] = {{"type", "udp"}, {"address", "veskar9:5001"}};
    run["outputs"][0]["to"] = {{"type", "tcp"}, {"address", "192.0.2.1:5002"}};
    run["status"]["prometheus"] = "127.0.0.1:9101";
    // In the order of the document, whose keys are sorted.
    EXPECT_THAT(
        told(),
        ElementsAre("outputs[0].to.address: 192.0.2.1: Cannot assign requested address @ "
                    "\"address\": \"192.0.2.1:5002\",",
                    "sensors[0].input.address: 0.0.0.0: is everywhere; name an interface or its "
                    "address @ \"address\": \"0.0.0.0:5000\",",
                    "sensors[1].input.address: veskar9: is neither an address nor a network "
                    "interface @ \"address\": \"veskar9:5001\","));
    run["sensors"][0]["input"]["address"] = "127.0.0.1:5000";
    run["sensors"][1]["input"]["address"] = "localhost:5001";
    run["outputs"][0]["to"]["address"] = "127.0.0.1:5002";
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(RunCheck, TriesTheView) {
    if (!Veskar::Live::viewMissing().empty()) {
        run["view"] = nlohmann::json::object();
        EXPECT_THAT(told(), ElementsAre(StartsWith("view: this program was built without")));
        return;
    }
    run["view"] = {{"address", "192.0.2.1:8650"}, {"token", "/nowhere/token"}};
    EXPECT_THAT(told(), ElementsAre("view.address: 192.0.2.1: Cannot assign requested address @ "
                                    "\"address\": \"192.0.2.1:8650\",",
                                    "view.token: /nowhere/token: No such file or directory @ "
                                    "\"token\": \"/nowhere/token\""));
    run["view"] = {{"address", "127.0.0.1:8650"}, {"token", secret("short\n")}};
    EXPECT_THAT(told(), ElementsAre(testing::HasSubstr("has 5 bytes, not 16 at least")));
    run["view"]["token"] = secret("0123456789abcdef\n");
    EXPECT_THAT(told(), IsEmpty());
    run["view"]["token"] = "$CREDENTIALS_DIRECTORY/token";
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(RunCheck, KnowsTheClasses) {
    run["outputs"][0]["classes"] = {"human", "person", "unknown"};
    EXPECT_THAT(told(), ElementsAre("outputs[0].classes: \"person\" is none of the classes that "
                                    "are known; write \"human\" @ \"classes\": ["));
    // Its words are carried along.
    run["sensors"][1]["format"] = "json-lines";
    EXPECT_THAT(told(), ElementsAre(StartsWith("outputs[0].classes?: \"person\" is none of")));
}

TEST_F(RunCheck, WarnsOfWhatHasNoEffect) {
    run["outputs"] = nlohmann::json::array();
    run["status"] = {{"interval", 1}};
    EXPECT_THAT(
        told(),
        ElementsAre("outputs?: names no output: nobody gets what is fused @ \"outputs\": [],",
                    "status?: names no place (mqtt, socket or prometheus): nobody gets it @ "
                    "\"status\": {"));
    run.erase("status");
    run["record"] = {{"path", directory / "recording.jsonl"}};
    EXPECT_THAT(told(), IsEmpty());
}

}  // namespace
}  // namespace Workbench
