// SPDX-License-Identifier: Apache-2.0
#include <veskar/Config.h>
#include <veskar/JsonNode.h>

#include "SourceDirectory.h"
#include "config/ConfigKeys.h"
#include "config/JanssonBlocks.h"
#include "support/JsonDocument.h"
#include "support/SyslogCapture.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;
using Veskar::Config;
using Veskar::JsonNode;
using VeskarTest::ConfigKey;
using VeskarTest::configKeys;
using VeskarTest::ConfigSection;
using VeskarTest::configSection;
using VeskarTest::configSections;
using VeskarTest::JanssonBlocks;
using VeskarTest::JsonDocument;
using VeskarTest::KeyValue;
using VeskarTest::SyslogCapture;

const std::string minAspect = "veskarModule/autocalibrationHumanMinAspect";
const std::string maxAspect = "veskarModule/autocalibrationHumanMaxAspect";

JsonDocument shipped() {
    return JsonDocument("config/fusion.json");
}

Config load(const JsonDocument& document) {
    return Config::parse_json_string(document.text());
}

/// The log of a failure that propagates through @p parsers sections: the reason, then the text of
/// each section's plain exception as caught by the enclosing section.
std::vector<std::string> logOf(const std::string& reason, int parsers) {
    std::vector<std::string> lines = {"Failed to parse fusion config: " + reason + "\n"};
    lines.resize(static_cast<std::size_t>(parsers),
                 "Failed to parse fusion config: " + std::string(std::exception().what()) + "\n");
    return lines;
}

template <typename Parse>
void expectRefusal(const Parse& parse, const std::string& reason, int parsers) {
    const SyslogCapture log;
    try {
        parse();
        ADD_FAILURE() << "was accepted";
    } catch (const std::exception& error) {
        EXPECT_EQ(typeid(error), typeid(std::exception));
    }
    EXPECT_EQ(log.errors(), logOf(reason, parsers));
}

/// Loads a document that must be accepted without log messages.
Config loadInSilence(const JsonDocument& document) {
    const SyslogCapture log;
    Config config = load(document);
    EXPECT_THAT(log.errors(), IsEmpty());
    return config;
}

std::string typeRefusal(const KeyValue& type) {
    static const std::string texts[] = {"JsonNode is not a boolean.", "JsonNode is not an integer.",
                                        "JsonNode is not a real number."};
    return texts[type.index()];
}

/// A value of every wrong type.
std::vector<std::string> wrongValues(const KeyValue& type) {
    std::vector<std::string> values = {"null", R"("0.5")", "[]", "{}"};
    static const std::vector<std::string> scalars[] = {
        {"1", "0", "1.0"}, {"20.0", "true", "false"}, {"5", "0", "-3", "true", "false"}};
    const std::vector<std::string>& others = scalars[type.index()];
    values.insert(values.end(), others.begin(), others.end());
    return values;
}

/// A value that differs from the shipped one and from the default.
KeyValue another(const KeyValue& value) {
    struct Other {
        KeyValue operator()(bool flag) const { return !flag; }
        KeyValue operator()(int number) const { return number + 7; }
        KeyValue operator()(double number) const { return number + 7.5; }
    };
    return std::visit(Other(), value);
}

std::string jsonOf(const KeyValue& value) {
    struct Text {
        std::string operator()(bool flag) const { return flag ? "true" : "false"; }
        std::string operator()(int number) const { return std::to_string(number); }
        std::string operator()(double number) const {
            std::ostringstream text;
            text.precision(17);
            text << std::scientific << number;
            return text.str();
        }
    };
    return std::visit(Text(), value);
}

// Every key

class ConfigKeyTest : public testing::TestWithParam<ConfigKey> {
protected:
    const ConfigKey& key = GetParam();
    JsonDocument document = shipped();
    const KeyValue shippedValue = key.field(load(document));

    void expectDefault() {
        const Config config = loadInSilence(document);
        EXPECT_EQ(key.field(config), *key.fallback);
    }
    void expectFailure(const std::string& reason) {
        expectRefusal([&] { load(document); }, reason, configSection(key.section).parsers);
    }
};

TEST_P(ConfigKeyTest, IsZeroBeforeItIsReadUnlessItBelongsToARule) {
    const KeyValue zeros[] = {false, 0, 0.0};
    const bool isRule = key.section == "veskarRules";
    EXPECT_EQ(key.field(Config()), isRule ? *key.fallback : zeros[shippedValue.index()]);
}

TEST_P(ConfigKeyTest, SetsItsFieldAndNoOther) {
    const KeyValue value = another(shippedValue);
    const Config before = load(document);
    const Config after = loadInSilence(document.set(key.path(), jsonOf(value)));
    for (const ConfigKey& other : configKeys()) {
        EXPECT_EQ(other.field(after), other.path() == key.path() ? value : other.field(before))
            << other.path();
    }
}

TEST_P(ConfigKeyTest, IsRequiredOrHasItsDefault) {
    document.erase(key.path());
    if (key.fallback) {
        expectDefault();
    } else {
        expectFailure("No such key: " + key.name);
    }
}

TEST_P(ConfigKeyTest, RefusesOrReplacesOtherTypes) {
    for (const std::string& wrong : wrongValues(shippedValue)) {
        SCOPED_TRACE(wrong);
        document.set(key.path(), wrong);
        if (key.fallback) {
            expectDefault();
        } else {
            expectFailure(typeRefusal(shippedValue));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryKey, ConfigKeyTest, testing::ValuesIn(configKeys()),
                         [](const auto& key) {
                             std::string name = key.param.path();
                             std::replace(name.begin(), name.end(), '/', '_');
                             return name;
                         });

// Sections

class ConfigSectionTest : public testing::TestWithParam<ConfigSection> {
protected:
    const ConfigSection& section = GetParam();
    JsonDocument document = shipped();

    std::string pathOf(const std::string& key) const {
        return section.path.empty() ? key : section.path + "/" + key;
    }
};

TEST_P(ConfigSectionTest, ReportsTheFirstMissingKeyInReadingOrder) {
    for (const std::string& key : section.required) {
        document.erase(pathOf(key));
    }
    const JsonDocument complete = shipped();
    for (const std::string& key : section.required) {
        expectRefusal([&] { load(document); }, "No such key: " + key, section.parsers);
        document.set(pathOf(key), complete.text(pathOf(key)));
    }
    loadInSilence(document);
}

TEST_P(ConfigSectionTest, MissesItsFirstKeyWhenItIsNoObject) {
    if (section.path.empty()) {
        expectRefusal([] { Config::parse_json_string("[]"); }, "No such key: veskarInputs", 1);
        return;
    }
    for (const char* wrong : {"null", "3", "3.0", "true", "\"text\"", "[1.0]"}) {
        SCOPED_TRACE(wrong);
        document.set(section.path, wrong);
        expectRefusal([&] { load(document); }, "No such key: " + section.required.front(),
                      section.parsers);
    }
}

INSTANTIATE_TEST_SUITE_P(EverySection, ConfigSectionTest, testing::ValuesIn(configSections()),
                         [](const auto& section) {
                             std::string name = "root/" + section.param.path;
                             std::replace(name.begin(), name.end(), '/', '_');
                             return name;
                         });

TEST(Config, ParsesEachSectionOnItsOwn) {
    const JsonDocument document = shipped();
    const Config whole = load(document);
    const auto node = [&](const std::string& path) {
        return JsonNode::fromString(document.text(path));
    };
    Config parts;
    parts.inputs = Config::FusionInputs::parse(node("veskarInputs"));
    parts.module = Config::ModuleConfig::parse(node("veskarModule"));
    parts.detectionPriority = Config::PriorityConfig::parse(node("veskarDetectionPriority"));
    parts.rules = Config::Rules::parse(node("veskarRules"));
    for (const ConfigKey& key : configKeys()) {
        EXPECT_EQ(key.field(parts), key.field(whole)) << key.path();
    }
    const Config::VideoInput video = Config::VideoInput::parse(node("veskarInputs/video"));
    EXPECT_EQ(video.uvPositionStd, whole.inputs.video.uvPositionStd);
    const Config::GainNegative gain =
        Config::GainNegative::parse(node("veskarModule/gainNegative"));
    EXPECT_EQ(gain.radar, whole.module.gainNegative.radar);
}

TEST(Config, LogsOneLinePerParserThatAFailurePasses) {
    const JsonNode empty = JsonNode::fromString("{}");
    expectRefusal([&] { Config::VideoInput::parse(empty); }, "No such key: uvCorrelation", 1);
    expectRefusal([&] { Config::GainNegative::parse(empty); }, "No such key: radar", 1);
    const JsonNode inputs = JsonNode::fromString(R"({"video": {}})");
    expectRefusal([&] { Config::FusionInputs::parse(inputs); }, "No such key: uvCorrelation", 2);
    expectRefusal([&] { Config::parse(JsonNode()); }, "No such key: veskarInputs", 1);
}

TEST(Config, NamesTheMissingLastSection) {
    expectRefusal([] { load(shipped().erase("veskarDetectionPriority")); },
                  "No such key: veskarDetectionPriority", 1);
}

TEST(Config, RefusesAnIntegerForARequiredRealAndDefaultsAnOptionalOne) {
    expectRefusal([] { load(shipped().set("veskarModule/trackKillTime", "5")); },
                  "JsonNode is not a real number.", 2);
    const Config config =
        loadInSilence(shipped().set("veskarModule/stationaryBlockingMinVideoAge", "5"));
    EXPECT_EQ(config.module.stationaryBlockingMinVideoAge, 3.0);
}

TEST(Config, LoadsWithEveryOptionalKeyLeftOut) {
    JsonDocument document = shipped();
    for (const ConfigKey& key : configKeys()) {
        if (key.fallback) {
            document.erase(key.path());
        }
    }
    const Config config = loadInSilence(document.erase(minAspect).erase(maxAspect));
    for (const ConfigKey& key : configKeys()) {
        if (key.fallback) {
            EXPECT_EQ(key.field(config), *key.fallback) << key.path();
        }
    }
    EXPECT_THAT(config.module.autocalibrationAspectLimits,
                ElementsAre(Pair("human", Pair(0.3, 0.65))));
}

TEST(Config, IgnoresKeysThatItDoesNotKnow) {
    JsonDocument document = shipped();
    document.set("comment", R"("mounted at the gate")").set("veskarModule/usejva", "1");
    EXPECT_TRUE(loadInSilence(document).module.useJVA);
}

// The aspect limits are valid together or not at all

TEST(ConfigAspectLimits, AreEmptyBeforeTheyAreRead) {
    EXPECT_TRUE(Config().module.autocalibrationAspectLimits.empty());
}

TEST(ConfigAspectLimits, AreReadTogether) {
    const Config config = loadInSilence(shipped().set(minAspect, "0.5").set(maxAspect, "0.75"));
    EXPECT_THAT(config.module.autocalibrationAspectLimits,
                ElementsAre(Pair("human", Pair(0.5, 0.75))));
}

TEST(ConfigAspectLimits, AreReplacedAsAWholeWhenOneIsMissing) {
    for (const auto& [present, missing] :
         {std::pair(minAspect, maxAspect), std::pair(maxAspect, minAspect)}) {
        const Config config = loadInSilence(shipped().set(present, "0.5").erase(missing));
        EXPECT_THAT(config.module.autocalibrationAspectLimits,
                    ElementsAre(Pair("human", Pair(0.3, 0.65))));
    }
}

TEST(ConfigAspectLimits, AreReplacedAsAWholeWhenOneIsNoReal) {
    for (const auto& [right, wrong] :
         {std::pair(minAspect, maxAspect), std::pair(maxAspect, minAspect)}) {
        for (const std::string& value : wrongValues(0.5)) {
            SCOPED_TRACE(value);
            const Config config = loadInSilence(shipped().set(right, "0.5").set(wrong, value));
            EXPECT_THAT(config.module.autocalibrationAspectLimits,
                        ElementsAre(Pair("human", Pair(0.3, 0.65))));
        }
    }
}

// Loading

TEST(ConfigLoading, ReadsFileTextAndNodeAlike) {
    const std::string path = VESKAR_SOURCE_DIR "/config/fusion.json";
    const Config fromFile = Config::parse(path);
    const Config fromText = Config::parse_json_string(VeskarTest::readFile(path));
    const Config fromNode = Config::parse(JsonNode::fromFile(path));
    for (const ConfigKey& key : configKeys()) {
        EXPECT_EQ(key.field(fromFile), key.field(fromText)) << key.path();
        EXPECT_EQ(key.field(fromFile), key.field(fromNode)) << key.path();
    }
}

TEST(ConfigLoading, PassesLoadingFailuresOnWithoutLogging) {
    const SyslogCapture log;
    EXPECT_THAT([] { Config::parse("/no/such/file.json"); },
                testing::ThrowsMessage<std::runtime_error>(
                    "Failed to load json from file: /no/such/file.json, error=unable to open "
                    "/no/such/file.json: No such file or directory"));
    EXPECT_THAT([] { Config::parse(std::string("/")); },
                testing::ThrowsMessage<std::runtime_error>(
                    "Failed to load json from file: /, error='[' or '{' expected near end of "
                    "file"));
    EXPECT_THAT([] { Config::parse_json_string("{"); },
                testing::ThrowsMessage<std::runtime_error>(
                    "Failed to load json from string: {, error=string or '}' expected near end "
                    "of file"));
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST(ConfigLoading, ReleasesTheDocumentWhateverHappens) {
    const JanssonBlocks blocks;
    const std::string good = VeskarTest::readFile("config/fusion.json");
    const SyslogCapture log;
    Config::parse_json_string(good);
    Config::parse(VESKAR_SOURCE_DIR "/config/fusion.json");
    EXPECT_ANY_THROW(Config::parse_json_string(R"({"veskarInputs": {"video": [1, 2]}})"));
    EXPECT_ANY_THROW(Config::parse_json_string(good.substr(0, good.size() / 2)));
    EXPECT_EQ(JanssonBlocks::count(), 0);
}

// Arbitrary bytes: a configuration, or the documented failure

/// Loads @p text and checks that a failure is one of the two documented kinds.
void expectConfigOrDocumentedFailure(const std::string& text) {
    const SyslogCapture log;
    const std::vector<Veskar::ConfigFault> faults = Config::findFaults(text);
    const bool isFound = std::any_of(faults.begin(), faults.end(), [](const auto& fault) {
        return fault.effect == Veskar::ConfigFault::Effect::Refused;
    });
    try {
        Config::parse_json_string(text);
        EXPECT_FALSE(isFound);
        EXPECT_THAT(log.errors(), IsEmpty());
    } catch (const std::runtime_error& error) {
        EXPECT_TRUE(isFound);
        // what() is truncated at the first NUL byte.
        const std::string visible = text.substr(0, text.find('\0'));
        EXPECT_THAT(error.what(), StartsWith("Failed to load json from string: " + visible));
        EXPECT_THAT(log.errors(), IsEmpty());
    } catch (const std::exception& error) {
        EXPECT_TRUE(isFound);
        EXPECT_EQ(typeid(error), typeid(std::exception));
        EXPECT_THAT(log.errors(), testing::Not(IsEmpty()));
        EXPECT_THAT(log.errors(), testing::Each(StartsWith("Failed to parse fusion config: ")));
    }
}

TEST(ConfigRobustness, RefusesEveryTruncation) {
    const std::string text = VeskarTest::readFile("config/fusion.json");
    const std::size_t end = text.rfind('}');
    for (std::size_t length = 0; length <= end; ++length) {
        EXPECT_THROW(Config::parse_json_string(text.substr(0, length)), std::runtime_error);
    }
    EXPECT_NO_THROW(Config::parse_json_string(text.substr(0, end + 1)));
}

TEST(ConfigRobustness, SurvivesDamagedDocuments) {
    const JanssonBlocks blocks;
    const std::string good = VeskarTest::readFile("config/fusion.json");
    std::mt19937 random(20);
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    for (int round = 0; round < 2000; ++round) {
        std::string text = good;
        for (std::size_t damages = 1 + below(3); damages > 0; --damages) {
            const std::size_t at = below(text.size());
            switch (below(4)) {
                case 0:
                    text[at] = static_cast<char>(below(256));
                    break;
                case 1:
                    text.erase(at, 1 + below(20));
                    break;
                case 2:
                    text.insert(at, text.substr(below(text.size()), below(20)));
                    break;
                default:
                    text.insert(at, 1, "{}[],:\"0.e-"[below(11)]);
            }
        }
        expectConfigOrDocumentedFailure(text);
    }
    EXPECT_EQ(JanssonBlocks::count(), 0);
}

}  // namespace
