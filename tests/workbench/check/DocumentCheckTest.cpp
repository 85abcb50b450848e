// SPDX-License-Identifier: Apache-2.0
// Configurations, cameras and scenarios: every fault is reported with line, key, value and
// expectation.
#include <veskar-host/InputError.h>

#include "Process.h"
#include "SourceDirectory.h"
#include "check/DocumentCheck.h"

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::ThrowsMessage;
using VeskarTest::slurp;
using VeskarTest::spill;

const std::string source = VESKAR_SOURCE_DIR;

class DocumentCheck : public testing::Test {
protected:
    /// A shipped document, for introducing faults.
    void begin(const std::string& name, DocumentKind documentKind) {
        text = slurp(source + "/config/" + name);
        kind = documentKind;
    }
    /// Replaces a piece of the text that occurs exactly once.
    void replace(const std::string& from, const std::string& to) {
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        ASSERT_EQ(text.find(from, place + 1), std::string::npos) << from;
        text.replace(place, from.size(), to);
    }
    Findings check() {
        spill(directory / "document", text);
        return checkDocument(directory / "document", kind);
    }
    /// @return the line of a piece of the text
    std::uint64_t toJsonLine(const std::string& piece) const {
        const auto place = static_cast<std::ptrdiff_t>(text.find(piece));
        return 1 + static_cast<std::uint64_t>(std::count(text.begin(), text.begin() + place, '\n'));
    }
    /// Checks that a key has exactly one finding and returns it.
    Finding only(const Findings& findings, const std::string& key) {
        Findings found;
        std::copy_if(findings.begin(), findings.end(), std::back_inserter(found),
                     [&](const Finding& finding) { return finding.key == key; });
        EXPECT_THAT(found, SizeIs(1)) << key;
        return found.empty() ? Finding{} : found.front();
    }

    VeskarTest::TemporaryDirectory directory;
    std::string text;
    DocumentKind kind = DocumentKind::Configuration;
};

TEST_F(DocumentCheck, NamesAWordOutsideTheVocabularyOnce) {
    begin("scenarios/perimeter.json", DocumentKind::Scenario);
    std::string::size_type place = 0;
    while ((place = text.find("\"human\"", place)) != std::string::npos) {
        text.replace(place, 7, "\"person\"");
    }
    replace("\"gray\"", "\"grey\"");
    const Findings findings = check();
    EXPECT_THAT(findings, SizeIs(2));
    const Finding word = only(findings, "objects[0].class");
    EXPECT_EQ(word.severity, Severity::Warning);
    EXPECT_EQ(word.line, toJsonLine("\"person\""));
    EXPECT_THAT(word.message, HasSubstr("write \"human\""));
    EXPECT_THAT(only(findings, "objects[2].lowerClothingColor").message,
                HasSubstr("write \"gray\""));
}

TEST_F(DocumentCheck, FindsNothingWrongWithWhatIsShipped) {
    EXPECT_THAT(checkDocument(source + "/config/fusion.json", DocumentKind::Configuration),
                IsEmpty());
    EXPECT_THAT(checkDocument(source + "/config/camera.json", DocumentKind::Camera), IsEmpty());
    EXPECT_THAT(checkDocument(source + "/config/fusion-plain.json", DocumentKind::Configuration),
                IsEmpty());
    for (const char* name : {"perimeter", "road", "crossing", "night-fog", "crowd", "doors", "gate",
                             "standing", "dead-radar", "dead-camera"}) {
        EXPECT_THAT(
            checkDocument(source + "/config/scenarios/" + name + ".json", DocumentKind::Scenario),
            IsEmpty())
            << name;
    }
}

TEST_F(DocumentCheck, FindsRulesThatCannotWork) {
    begin("fusion.json", DocumentKind::Configuration);
    replace("\"pairMemoryTime\": 1.0", "\"pairMemoryTime\": 0.0");
    replace("\"pairMemoryNear\": 2.0", "\"pairMemoryNear\": 4.5");
    replace("\"coastingLimit\": 0.05", "\"coastingLimit\": 0.8");
    replace("\"freshReportsOnly\": true", "\"freshReportsOnly\": false");
    const Findings findings = check();
    EXPECT_THAT(findings, SizeIs(4));
    EXPECT_EQ(only(findings, "veskarRules.pairMemoryTime").severity, Severity::Fault);
    EXPECT_THAT(only(findings, "veskarRules.pairMemoryNear").message,
                HasSubstr("at most 4.0, the value of pairMemoryFar"));
    EXPECT_EQ(only(findings, "veskarRules.coastingLimit").severity, Severity::Warning);
    EXPECT_EQ(only(findings, "veskarRules.takeOver").severity, Severity::Warning);
}

TEST_F(DocumentCheck, ReadsScenariosWithComments) {
    // A scene of four seconds is unusually short; there are no other findings.
    const Findings findings =
        checkDocument(VeskarTest::dataFile("tiny.scenario.json"), DocumentKind::Scenario);
    ASSERT_THAT(findings, SizeIs(1));
    EXPECT_EQ(findings[0].severity, Severity::Warning);
    EXPECT_EQ(findings[0].key, "duration");
    EXPECT_EQ(findings[0].line, 5U);
    // The library accepts no comments in configurations and cameras.
    begin("camera.json", DocumentKind::Camera);
    text = "// mine\n" + text;
    EXPECT_TRUE(hasFault(check()));
}

TEST_F(DocumentCheck, RecognisesWhatADocumentIs) {
    EXPECT_EQ(kindOfDocument(source + "/config/fusion.json"), DocumentKind::Configuration);
    EXPECT_EQ(kindOfDocument(source + "/config/camera.json"), DocumentKind::Camera);
    EXPECT_EQ(kindOfDocument(source + "/config/scenarios/road.json"), DocumentKind::Scenario);
    spill(directory / "r", "{\"format\":\"veskar-recording\",\"version\":1}\n");
    EXPECT_EQ(kindOfDocument(directory / "r"), DocumentKind::Recording);
}

TEST_F(DocumentCheck, SaysThatADamagedCompressedFileCannotBeRead) {
    const std::string path = directory / "damaged";
    spill(path, "\x1f\x8b\"video\": {");
    EXPECT_THAT([&] { kindOfDocument(path); },
                ThrowsMessage<InputError>(path + ":1: the gzip data are damaged"));
}

TEST_F(DocumentCheck, ListsAllTenFaultsOfAConfiguration) {
    begin("fusion-plain.json", DocumentKind::Configuration);
    replace("\"uvCorrelation\": 0.0", "\"uvCorrelation\": 1.5");
    replace("\"uvVelocityStd\": 0.05", "\"uvVelocityStd\": -0.05");
    replace("\"minimumPseudoRangeStd\": 2.0", "\"minimumPseudoRangeStd\": 9.0");
    replace("\"maximumPseudoRangeStd\": 15.0", "\"maximumPseudoRangeStd\": 8.0");
    replace("\"radar\": 0.3", "\"radar\": \"0.3\"");
    replace("\"splitGating\": true", "\"splitGating\": 1");
    replace("\"gatingDistance\": 6.0", "\"gatingDistance\": 6");
    replace("\"velocityGatingSimilarity\": 0.0", "\"velocityGatingSimilarity\": 1.0");
    replace("        \"trackKillTime\": 0.5,\n", "");
    replace("\"trackedOdMotionAnalyzerMaxHistoryLength\": 20",
            "\"trackedOdMotionAnalyzerMaxHistoryLength\": 20.0");
    replace("\"longlivedLimit\": 3.0", "\"longlivedLimit\": null");
    const Findings findings = check();
    EXPECT_EQ(std::count_if(findings.begin(), findings.end(),
                            [](const Finding& f) { return f.severity == Severity::Fault; }),
              10);

    const Finding integer = only(findings, "veskarModule.gatingDistance");
    EXPECT_EQ(integer.line, toJsonLine("\"gatingDistance\""));
    EXPECT_EQ(integer.value, "6");
    EXPECT_THAT(integer.message, HasSubstr("6 is an integer where a real number is needed"));
    EXPECT_EQ(only(findings, "veskarInputs.video.uvVelocityStd").value, "-0.05");
    EXPECT_THAT(only(findings, "veskarInputs.video.uvVelocityStd").message, HasSubstr("above 0"));
    EXPECT_THAT(only(findings, "veskarInputs.video.minimumPseudoRangeStd").message,
                HasSubstr("at most 8.0"));
    EXPECT_EQ(only(findings, "veskarModule.gainNegative.radar").value, "\"0.3\"");
    EXPECT_EQ(only(findings, "veskarModule.splitGating").value, "1");
    EXPECT_EQ(only(findings, "veskarModule.velocityGatingSimilarity").value, "1.0");
    EXPECT_THAT(only(findings, "veskarModule.trackKillTime").message, HasSubstr("missing"));
    EXPECT_EQ(only(findings, "veskarModule.trackKillTime").line, toJsonLine("\"veskarModule\""));
    EXPECT_THAT(only(findings, "veskarModule.trackedOdMotionAnalyzerMaxHistoryLength").message,
                HasSubstr("20 is used"));
    EXPECT_EQ(only(findings, "veskarDetectionPriority.longlivedLimit").value, "null");
    EXPECT_EQ(toText(integer, "f.json"),
              "f.json:" + std::to_string(integer.line) +
                  ": fault: veskarModule.gatingDistance: " + integer.message);
    const Finding negative = only(findings, "veskarInputs.video.uvVelocityStd");
    EXPECT_EQ(toText(negative, "f.json"),
              "f.json:" + std::to_string(negative.line) +
                  ": fault: veskarInputs.video.uvVelocityStd is -0.05: " + negative.message);
}

TEST_F(DocumentCheck, WarnsOfLegalButSuspiciousValues) {
    begin("fusion-plain.json", DocumentKind::Configuration);
    replace("\"velocityGatingSimilarity\": 0.0", "\"velocityGatingSimilarity\": 0.95");
    replace("\"trackKillTime\": 0.5", "\"trackKillTime\": 2.0");
    replace("        \"autocalibrationHumanMinAspect\": 0.3,\n", "");
    replace("\"useJVA\": true", "\"useJVA\": true,\n        \"useJvA\": false");
    const Findings findings = check();
    EXPECT_FALSE(hasFault(findings));
    EXPECT_THAT(findings, SizeIs(4));
    EXPECT_THAT(only(findings, "veskarModule.velocityGatingSimilarity").message,
                HasSubstr("unusual"));
    EXPECT_THAT(only(findings, "veskarModule.trackKillTime").message, HasSubstr("0.5 s"));
    EXPECT_THAT(only(findings, "veskarModule.autocalibrationHumanMaxAspect").message,
                HasSubstr("no effect"));
    EXPECT_THAT(only(findings, "veskarModule.useJvA").message, HasSubstr("is useJVA meant?"));
}

TEST_F(DocumentCheck, SaysThatARepeatedKeyCountsOnce) {
    begin("fusion-plain.json", DocumentKind::Configuration);
    replace("\"useJVA\": true", "\"useJVA\": true,\n        \"useJVA\": false");
    const Findings findings = check();
    ASSERT_THAT(findings, SizeIs(1));
    EXPECT_EQ(findings[0].severity, Severity::Fault);
    EXPECT_EQ(findings[0].line, toJsonLine("\"useJVA\": false"));
    EXPECT_THAT(findings[0].message, HasSubstr("second time"));
}

TEST_F(DocumentCheck, TellsTheLineOfBrokenSyntax) {
    begin("fusion-plain.json", DocumentKind::Configuration);
    replace("\"useJVA\": true,", "\"useJVA\" true,");
    const Findings findings = check();
    ASSERT_THAT(findings, SizeIs(1));
    EXPECT_EQ(findings[0].line, toJsonLine("\"useJVA\" true"));
    text = std::string("\x00\xff\x13garbage", 10);
    EXPECT_TRUE(hasFault(check()));
    text.clear();
    EXPECT_TRUE(hasFault(check()));
    text = "[1, 2]";
    EXPECT_TRUE(hasFault(check()));
}

TEST_F(DocumentCheck, FindsTheFaultsOfACamera) {
    begin("camera.json", DocumentKind::Camera);
    replace("\"pitch\": 20.0", "\"pitch\": 20");
    replace("\"resolution\": [1920, 1080]", "\"resolution\": [1920]");
    replace("\"fov\": [0.7853982, 0.4576848]", "\"fov\": [45.0, 26.2]");
    replace("\"position\": [0.0, 0.0, 5.0]", "\"position\": [0.0, 0.0, 0.0]");
    const Findings findings = check();
    EXPECT_THAT(only(findings, "rotation.pitch").message, HasSubstr("decimal point"));
    EXPECT_THAT(only(findings, "resolution").message, HasSubstr("expected 2 numbers"));
    EXPECT_THAT(only(findings, "fov[0]").message, HasSubstr("radians"));
    EXPECT_EQ(only(findings, "fov[1]").value, "26.2");
    EXPECT_THAT(only(findings, "fov[1]").message,
                HasSubstr("expected a number with a decimal point above 0 and at most 3.14"));
    EXPECT_THAT(only(findings, "position").message, HasSubstr("height above 0"));
}

TEST_F(DocumentCheck, FindsALensThatCannotBe) {
    begin("camera.json", DocumentKind::Camera);
    replace("[0.0, 0.8311, -0.0121, -0.0336018]", "[0.0, 0.8311, -0.9, -0.0336018]");
    EXPECT_THAT(only(check(), "imageToRadiansPolynomial").message, HasSubstr("grow"));

    begin("camera.json", DocumentKind::Camera);
    replace("[0.0, 1.210164, -0.018366, 0.126364]", "[0.0, 0.8311, -0.0121, -0.0336018]");
    const Findings swapped = check();
    EXPECT_FALSE(hasFault(swapped));
    EXPECT_THAT(only(swapped, "radiansToImagePolynomial").message, HasSubstr("not the inverse"));

    begin("camera.json", DocumentKind::Camera);
    replace("\"pitch\": 20.0", "\"pitch\": -40.0");
    bool isAboveHorizon = false;
    for (const Finding& finding : check()) {
        isAboveHorizon |= finding.message.find("above the horizon") != std::string::npos;
    }
    EXPECT_TRUE(isAboveHorizon);
}

TEST_F(DocumentCheck, TakesAnUnknownKeyAsBadlyAsItsReader) {
    begin("camera.json", DocumentKind::Camera);
    replace("\"bdc\": false", "\"bdc\": false, \"colour\": 1");
    EXPECT_EQ(only(check(), "colour").severity, Severity::Warning);
    begin("scenarios/road.json", DocumentKind::Scenario);
    replace("\"duration\"", "\"lenght\": 3, \"duration\"");
    EXPECT_EQ(only(check(), "lenght").severity, Severity::Fault);
}

TEST_F(DocumentCheck, FindsTheFaultsOfAScenario) {
    kind = DocumentKind::Scenario;
    const std::string camera = slurp(source + "/config/camera.json");
    text = "{\n\"name\": 7,\n\"camera\": " + camera +
           ",\n"
           "\"radar\": {\"position\": [0, 0, 4], \"rotation\": {\"pitch\": 0, \"yaw\": 0}, "
           "\"rangeStd\": 0, \"azimuthStd\": 1, \"velocityStd\": 0.5},\n"
           "\"videoSensor\": {\"rate\": -1, \"outages\": [{\"from\": 5, \"to\": 3}]},\n"
           "\"objects\": [\n"
           "{\"class\": \"human\", \"path\": [[1, 2], [3]], \"speed\": 1.4},\n"
           "{\"class\": \"human\", \"speed\": [3, 1, 2]},\n"
           "{\"class\": \"ghost\", \"path\": [[1, 2], [3, 4]], \"speed\": 1.4, \"mode\": \"fly\"}\n"
           "]}\n";
    const Findings findings = check();
    EXPECT_EQ(only(findings, "name").value, "7");
    EXPECT_THAT(only(findings, "duration").message, HasSubstr("missing"));
    EXPECT_THAT(only(findings, "radar.rotation.roll").message, HasSubstr("missing"));
    EXPECT_EQ(only(findings, "radar.rangeStd").value, "0");
    EXPECT_EQ(only(findings, "videoSensor.rate").value, "-1");
    EXPECT_THAT(only(findings, "videoSensor.outages[0].to").message, HasSubstr("at least 5"));
    EXPECT_THAT(only(findings, "objects[0].path[1]").message, HasSubstr("two numbers"));
    EXPECT_EQ(only(findings, "objects[0].path[1]").line, toJsonLine("[[1, 2], [3]]"));
    EXPECT_THAT(only(findings, "objects[1]").message, HasSubstr("either a path or an area"));
    EXPECT_THAT(only(findings, "objects[1].speed").message, HasSubstr("expected 2 numbers"));
    EXPECT_EQ(only(findings, "objects[2].class").severity, Severity::Warning);
    EXPECT_EQ(only(findings, "objects[2].mode").value, "\"fly\"");
}

}  // namespace
}  // namespace Workbench
