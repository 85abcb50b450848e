// SPDX-License-Identifier: Apache-2.0
// Config::findFaults on documents that are rejected or not used as they are written.
#include <veskar/Config.h>

#include "SourceDirectory.h"
#include "config/ConfigKeys.h"
#include "support/JsonDocument.h"
#include "support/SyslogCapture.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Veskar::Config;
using Veskar::ConfigFault;
using Effect = Veskar::ConfigFault::Effect;
using VeskarTest::configKeys;
using VeskarTest::JsonDocument;
using VeskarTest::readFile;
using VeskarTest::SyslogCapture;

bool isAccepted(const std::string& json) {
    try {
        Config::parse_json_string(json);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool hasRefused(const std::vector<ConfigFault>& faults) {
    return std::any_of(faults.begin(), faults.end(),
                       [](const ConfigFault& fault) { return fault.effect == Effect::Refused; });
}

/// The shipped document, with faults introduced by the tests.
class ConfigFaults : public testing::Test {
protected:
    /// Replaces a piece of the text that occurs exactly once.
    void replace(const std::string& from, const std::string& to) {
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos) << from;
        ASSERT_EQ(text.find(from, place + 1), std::string::npos) << from;
        text.replace(place, from.size(), to);
    }
    /// @return "KEY (line N)" of a key that occurs once
    std::string place(const std::string& path) const {
        const std::string key = "\"" + path.substr(path.rfind('.') + 1) + "\"";
        const auto end = static_cast<std::ptrdiff_t>(text.find(key));
        return path + " (line " +
               std::to_string(1 + std::count(text.begin(), text.begin() + end, '\n')) + ")";
    }
    std::vector<std::string> texts() const {
        std::vector<std::string> texts;
        for (const ConfigFault& fault : Config::findFaults(text)) {
            texts.push_back(fault.text());
        }
        return texts;
    }
    ConfigFault only() const {
        const std::vector<ConfigFault> faults = Config::findFaults(text);
        EXPECT_THAT(faults, SizeIs(1));
        return faults.empty() ? ConfigFault() : faults.front();
    }

    std::string text = readFile("config/fusion.json");
};

TEST_F(ConfigFaults, AreNoneInWhatIsShipped) {
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(ConfigFaults, LeaveTheConstantsOfTheHostToWhoReadsThem) {
    text = readFile("config/fusion-plain.json");
    const std::string plain = Config::parse_json_string(text).toJson();
    const std::string constants = "\"veskarHost\": {\"anything\": [1]},";
    text.insert(text.find('{') + 1, constants);
    EXPECT_THAT(texts(), IsEmpty());
    EXPECT_EQ(Config::parse_json_string(text).toJson(), plain);
    // Not allowed elsewhere, nor twice.
    replace("\"veskarModule\": {", "\"veskarModule\": {" + constants);
    EXPECT_THAT(texts(), ElementsAre(HasSubstr("veskarModule.veskarHost (line ")));
    text.insert(text.find('{') + 1, constants);
    EXPECT_THAT(texts(), testing::Contains(HasSubstr("the key stands here a second time")));
}

TEST_F(ConfigFaults, TellKeyLineAndReason) {
    replace("\"gatingDistance\": 6.0", "\"gatingDistance\": 4");
    EXPECT_THAT(texts(),
                ElementsAre("veskarModule.gatingDistance (line 19): 4 is an integer where a real "
                            "number is needed: write 4.0"));
    const ConfigFault fault = only();
    EXPECT_EQ(fault.effect, Effect::Refused);
    EXPECT_EQ(fault.line, 19);
    EXPECT_EQ(fault.key, "veskarModule.gatingDistance");
    EXPECT_EQ(fault.value, "4");
}

TEST_F(ConfigFaults, SayWhatIsUsedForAnOptionalKey) {
    replace("\"stationaryBlockingMinVideoAge\": 3.0", "\"stationaryBlockingMinVideoAge\": 5");
    const ConfigFault fault = only();
    EXPECT_EQ(fault.effect, Effect::Replaced);
    EXPECT_EQ(fault.reason,
              "5 is an integer where a real number is needed: write 5.0; 3.0 is used");
}

TEST_F(ConfigFaults, NameTheTypesThatAreGivenAndNeeded) {
    const struct {
        const char* from;
        const char* to;
        const char* reason;
    } cases[] = {
        {"\"useJVA\": true", "\"useJVA\": 1",
         "1 is an integer where true or false is needed: write true"},
        {"\"useJVA\": true", "\"useJVA\": 0",
         "0 is an integer where true or false is needed: write false"},
        {"\"useJVA\": true", "\"useJVA\": 2", "2 is an integer where true or false is needed"},
        {"\"useJVA\": true", "\"useJVA\": \"true\"",
         "\"true\" is a string where true or false is needed"},
        {"\"gatingDistance\": 6.0", "\"gatingDistance\": -4",
         "-4 is an integer where a real number is needed: write -4.0"},
        {"\"gatingDistance\": 6.0", "\"gatingDistance\": true",
         "true is a boolean where a real number is needed"},
        {"\"gatingDistance\": 6.0", "\"gatingDistance\": null",
         "null stands where a real number is needed"},
        {"\"gatingDistance\": 6.0", "\"gatingDistance\": [6.0, {\"a\": [\"]\"]}]",
         "an array stands where a real number is needed"},
        {"\"gatingDistance\": 6.0", "\"gatingDistance\": {\"a\": {}}",
         "an object stands where a real number is needed"},
        {"\"nVideoFramesMissedLimitLow\": 10", "\"nVideoFramesMissedLimitLow\": 10.00",
         "10.00 is a real number where an integer is needed: write 10"},
        {"\"nVideoFramesMissedLimitLow\": 10", "\"nVideoFramesMissedLimitLow\": 10.05",
         "10.05 is a real number where an integer is needed"},
        {"\"nVideoFramesMissedLimitLow\": 10", "\"nVideoFramesMissedLimitLow\": 1e1",
         "1e1 is a real number where an integer is needed"},
    };
    const std::string shipped = text;
    for (const auto& [from, to, reason] : cases) {
        SCOPED_TRACE(to);
        text = shipped;
        replace(from, to);
        EXPECT_EQ(only().reason, reason);
        EXPECT_EQ(only().effect, Effect::Refused);
    }
}

TEST_F(ConfigFaults, NameTheNearestKnownKey) {
    replace("\"removeClassMismatches\"", "\"removeClassMissmatch\"");
    replace("\"minimumAngle\": 1.5,", "\"minimumAngle\": 1.5, \"comment\": \"mine\",");
    EXPECT_THAT(texts(),
                ElementsAre(place("veskarInputs.video.comment") + ": the key is not known",
                            place("veskarModule.removeClassMissmatch") +
                                ": the key is not known; is removeClassMismatches meant?"));
    for (const ConfigFault& fault : Config::findFaults(text)) {
        EXPECT_EQ(fault.effect, Effect::Ignored);
    }
}

TEST_F(ConfigFaults, TellAMissingKeyAtItsSection) {
    replace("        \"trackKillTime\": 0.5,\n", "");
    const ConfigFault fault = only();
    EXPECT_EQ(fault.text(),
              "veskarModule.trackKillTime (line 13): missing; a real number is needed");
    EXPECT_EQ(fault.value, "");
    EXPECT_THAT(place("veskarModule"), EndsWith("(line 13)"));
}

TEST_F(ConfigFaults, TellASectionThatIsNone) {
    text = R"({"veskarInputs": [], "veskarModule": {}, "veskarDetectionPriority": 7})";
    const std::vector<std::string> found = texts();
    EXPECT_EQ(found.front(), "veskarInputs (line 1): an array stands where an object is needed");
    EXPECT_EQ(found.back(),
              "veskarDetectionPriority (line 1): 7 is an integer where an object is needed");
    text = "\n[1]";
    EXPECT_THAT(texts(), ElementsAre("line 2: an array stands where an object is needed"));
}

TEST_F(ConfigFaults, TellARepeatedKeyWhereItStandsAgain) {
    replace("\"useJVA\": true", "\"useJVA\": 1,\n        \"use\\u004aVA\": false");
    const ConfigFault fault = only();
    EXPECT_EQ(fault.text(),
              "veskarModule.useJVA (line 31): the key stands here a second time; only the last one "
              "counts");
    EXPECT_EQ(fault.effect, Effect::Replaced);
    EXPECT_EQ(fault.value, "false");
}

TEST_F(ConfigFaults, LookAtTheLastOfRepeatedSections) {
    text = "{\"veskarModule\": {\"useJVA\": 1},\n" + text.substr(1);
    const ConfigFault fault = only();
    EXPECT_EQ(fault.key, "veskarModule");
    EXPECT_EQ(fault.effect, Effect::Replaced);
}

TEST_F(ConfigFaults, TellAnIntegerThatIsCut) {
    replace("\"nVideoFramesMissedLimitLow\": 10", "\"nVideoFramesMissedLimitLow\": 4294967303");
    EXPECT_EQ(only().effect, Effect::Replaced);
    EXPECT_EQ(only().reason, "4294967303 does not fit into 32 bits; 7 is used");
    EXPECT_EQ(Config::parse_json_string(text).detectionPriority.nVideoFramesMissedLimitLow, 7);
}

TEST_F(ConfigFaults, TellThatOneAspectLimitAloneIsNone) {
    const std::string minimum = "veskarModule.autocalibrationHumanMinAspect";
    const std::string maximum = "veskarModule.autocalibrationHumanMaxAspect";
    replace("\"autocalibrationHumanMinAspect\": 0.3", "\"autocalibrationHumanMinAspect\": 1");
    EXPECT_THAT(
        texts(),
        ElementsAre(place(minimum) + ": 1 is an integer where a real number is needed: "
                                     "write 1.0; 0.3 and 0.65 are used",
                    place(maximum) + ": 0.65 has no effect without its counterpart; 0.3 and "
                                     "0.65 are used"));
    replace("        \"autocalibrationHumanMinAspect\": 1,\n", "");
    EXPECT_EQ(only().key, maximum);
    EXPECT_EQ(only().effect, Effect::Ignored);
    replace(
        "\"autocalibrationVideoNearLimit\": 0.2,\n        \"autocalibrationHumanMaxAspect\": 0.65",
        "\"autocalibrationVideoNearLimit\": 0.2");
    EXPECT_THAT(texts(), IsEmpty());
}

TEST_F(ConfigFaults, TellTheLineOfBrokenSyntax) {
    replace("\"useJVA\": true,", "\"useJVA\" true,");
    EXPECT_THAT(texts(), ElementsAre("line 30: ':' expected near 'true'"));
    EXPECT_EQ(only().key, "");
}

TEST_F(ConfigFaults, CallACommentWhatItIs) {
    for (const char* comment : {"// mine\n", "/* mine */ "}) {
        text = readFile("config/fusion.json");
        replace("\"useJVA\": true,", std::string("\"useJVA\": true, ") + comment);
        EXPECT_EQ(only().line, 30);
        EXPECT_THAT(only().reason, HasSubstr("JSON has no comments"));
        text = comment + readFile("config/fusion.json");
        EXPECT_EQ(only().line, 1);
        EXPECT_THAT(only().reason, HasSubstr("JSON has no comments"));
    }
}

TEST_F(ConfigFaults, PassOverWhatIsNestedInAnUnknownKey) {
    std::string deep = "[\"]\\\"}\", {\"a\": [1,\n2]}]";
    for (int level = 0; level < 20; ++level) {
        deep.insert(0, "{\"b\":\n").append(", \"useJVA\": {}}");
    }
    replace("\"useJVA\": true", "\"nested\": " + deep + ",\n\"useJVA\": 1");
    const std::vector<std::string> found = texts();
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0], "veskarModule.nested (line 30): the key is not known");
    EXPECT_THAT(found[1], testing::StartsWith("veskarModule.useJVA (line 52): 1 is an integer"));
}

TEST_F(ConfigFaults, ReadStringsAndLinesAsJansson) {
    replace("\"useJVA\": true", "\"a\\\"}\\\\\": \"{ \\\" \\\\\",\r\n\t\"useJVA\" \n : \n 1");
    const std::vector<std::string> found = texts();
    ASSERT_THAT(found, SizeIs(2));
    EXPECT_EQ(found[0], "veskarModule.a\"}\\ (line 30): the key is not known");
    EXPECT_THAT(found[1], testing::StartsWith("veskarModule.useJVA (line 31): 1 is an integer"));
}

TEST_F(ConfigFaults, AreFoundWithoutALineInTheLog) {
    const SyslogCapture log;
    replace("\"useJVA\": true", "\"useJVA\": 1");
    EXPECT_THAT(texts(), SizeIs(1));
    EXPECT_THAT(log.lines(), IsEmpty());
}

// findFaults reports a rejecting fault exactly when the reader rejects the document, whatever it
// contains.

TEST_F(ConfigFaults, RefuseWhatTheReaderRefuses) {
    int refused = 0;
    const SyslogCapture log;
    for (const auto& file :
         std::filesystem::directory_iterator(VESKAR_SOURCE_DIR "/tests/config/invalid")) {
        if (file.path().extension() != ".json") {
            continue;
        }
        SCOPED_TRACE(file.path());
        const std::string json = readFile(file.path());
        const std::vector<ConfigFault> faults = Config::findFaults(json);
        EXPECT_EQ(hasRefused(faults), !isAccepted(json));
        refused += hasRefused(faults) ? 1 : 0;
        const auto lines = 1 + std::count(json.begin(), json.end(), '\n');
        for (const ConfigFault& fault : faults) {
            EXPECT_GE(fault.line, 1);
            EXPECT_LE(fault.line, lines);
            EXPECT_NE(fault.reason, "");
        }
    }
    EXPECT_GE(refused, 40);
}

TEST_F(ConfigFaults, RefuseOrReplaceWhatTheReaderDoes) {
    const SyslogCapture log;
    // Values with the index of their type in a KeyValue; 3: of no key's type.
    const std::pair<std::string, std::size_t> others[] = {
        {"null", 3}, {"\"0.5\"", 3}, {"[]", 3},  {"{}", 3},   {"true", 0}, {"1", 1},
        {"0", 1},    {"-3", 1},      {"1.0", 2}, {"20.0", 2}, {"2e1", 2}};
    for (const auto& key : configKeys()) {
        const JsonDocument shipped("config/fusion.json");
        const auto value = key.field(Config::defaults());
        for (const auto& [other, type] : others) {
            SCOPED_TRACE(key.path() + ": " + other);
            JsonDocument document = shipped;
            const std::string json = document.set(key.path(), other).text();
            const std::vector<ConfigFault> faults = Config::findFaults(json);
            EXPECT_EQ(hasRefused(faults), !isAccepted(json));
            const bool isRight = value.index() == type;
            EXPECT_EQ(faults.empty(), isRight);
            if (!isRight && key.fallback) {
                EXPECT_EQ(faults.at(0).effect, Effect::Replaced);
            }
        }
        JsonDocument document = shipped;
        EXPECT_EQ(Config::findFaults(document.erase(key.path()).text()).empty(),
                  key.fallback.has_value());
    }
}

}  // namespace
