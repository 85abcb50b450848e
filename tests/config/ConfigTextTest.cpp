// SPDX-License-Identifier: Apache-2.0
// Config::toJson and Config::defaults.
#include <veskar/Config.h>

#include "SourceDirectory.h"
#include "config/ConfigKeys.h"
#include "config/ConfigText.h"
#include "support/JsonDocument.h"

#include <cstdlib>
#include <limits>
#include <locale>
#include <random>
#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using Veskar::Config;
using VeskarTest::configKeys;
using VeskarTest::JsonDocument;
using VeskarTest::readFile;

void expectEqual(const Config& actual, const Config& expected) {
    for (const auto& key : configKeys()) {
        EXPECT_EQ(key.field(actual), key.field(expected)) << key.path();
    }
    EXPECT_EQ(actual.module.autocalibrationAspectLimits,
              expected.module.autocalibrationAspectLimits);
}

/// @return the lines without trailing commas, sorted, since the order of keys is irrelevant
std::multiset<std::string> sortedLines(const std::string& text) {
    std::multiset<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.insert(line.substr(0, line.find_last_not_of(',') + 1));
    }
    return lines;
}

/// A locale that writes 1.5 as 1,5 and 1000 as 1.000.
class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

}  // namespace

TEST(ConfigDefaults, AreTheShippedFile) {
    expectEqual(Config::defaults(), Config::parse(VESKAR_SOURCE_DIR "/config/fusion.json"));
    EXPECT_EQ(Config::defaults().module.positionGatingDistance, 3.0);
    EXPECT_THAT(Config::defaults().module.autocalibrationAspectLimits,
                ElementsAre(Pair("human", Pair(0.3, 0.65))));
}

TEST(ConfigText, HoldsEveryKeyAndGivesTheConfigurationBack) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> real(-1e3, 1e3);
    for (int round = 0; round < 50; ++round) {
        JsonDocument document("config/fusion.json");
        for (const std::string& path : document.leaves()) {
            const std::string shipped = document.text(path);
            if (shipped == "true" || shipped == "false") {
                document.set(path, random() % 2 == 0 ? "true" : "false");
            } else if (shipped.find_first_of(".e") != std::string::npos) {
                document.set(path, Veskar::jsonOf(real(random)));
            } else {
                document.set(path, std::to_string(static_cast<int>(random())));
            }
        }
        const Config config = Config::parse_json_string(document.text());
        const std::string json = config.toJson();
        EXPECT_THAT(Config::findFaults(json), IsEmpty());
        expectEqual(Config::parse_json_string(json), config);
    }
}

TEST(ConfigDefaults, AreTheShippedFileAsText) {
    EXPECT_EQ(Config::defaultsText(), readFile("config/fusion.json"));
}

TEST(ConfigText, IsWrittenAsTheShippedFileIs) {
    // But for the section of the host, which the fusion does not read.
    std::string shipped = readFile("config/fusion.json");
    const std::size_t host = shipped.find(",\n    \"veskarHost\": {");
    ASSERT_NE(host, std::string::npos);
    shipped.erase(host, shipped.rfind('}') - 1 - host);
    EXPECT_EQ(sortedLines(Config::defaults().toJson()), sortedLines(shipped));
}

TEST(ConfigText, IsWrittenAsThePlainFileIs) {
    const std::string plain = readFile("config/fusion-plain.json");
    EXPECT_EQ(sortedLines(Config::parse_json_string(plain).toJson()), sortedLines(plain));
}

TEST(ConfigText, HoldsTheRulesWhenOneOfThemActs) {
    Config config = Config::defaults();
    config.rules = {};
    EXPECT_THAT(config.toJson(), Not(HasSubstr("veskarRules")));
    config.rules.radarSilence = 2.0;
    EXPECT_THAT(config.toJson(), HasSubstr("\"radarSilence\": 2.0"));
    EXPECT_THAT(config.toJson(), HasSubstr("\"pairMemory\": false"));
}

TEST(ConfigText, StatesWhatIsUsedForOptionalKeys) {
    JsonDocument document("config/fusion.json");
    document.set("veskarModule/stationaryBlockingMinVideoAge", "5");
    document.erase("veskarModule/trackedOdMotionAnalyzerMaxHistoryLength");
    document.set("veskarModule/autocalibrationHumanMinAspect", "1");
    document.set("veskarModule/unknown", "1");
    const std::string json = Config::parse_json_string(document.text()).toJson();
    EXPECT_THAT(json, HasSubstr("\"stationaryBlockingMinVideoAge\": 3.0,"));
    EXPECT_THAT(json, HasSubstr("\"trackedOdMotionAnalyzerMaxHistoryLength\": 20,"));
    EXPECT_THAT(json, HasSubstr("\"autocalibrationHumanMinAspect\": 0.3,"));
    EXPECT_THAT(json, Not(HasSubstr("unknown")));
}

TEST(ConfigText, OfAnEmptyConfigurationHasNoAspectLimits) {
    EXPECT_THAT(Config().toJson(), Not(HasSubstr("Aspect")));
    EXPECT_THAT(Config().toJson(), HasSubstr("\"autocalibrationAgeLimit\": 0.0\n"));
    EXPECT_EQ(Config::parse_json_string(Config().toJson()).module.gatingDistance, 0.0);
}

TEST(ConfigText, WritesRealsWithTheFewestDigits) {
    EXPECT_EQ(Veskar::jsonOf(4.0), "4.0");
    EXPECT_EQ(Veskar::jsonOf(-0.0), "-0.0");
    EXPECT_EQ(Veskar::jsonOf(0.3), "0.3");
    EXPECT_EQ(Veskar::jsonOf(10.0 / 3.6), "2.7777777777777777");
    EXPECT_EQ(Veskar::jsonOf(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(Veskar::jsonOf(1e300), "1e+300");
    EXPECT_EQ(Veskar::jsonOf(std::numeric_limits<double>::infinity()), "null");
    EXPECT_EQ(Veskar::jsonOf(std::numeric_limits<double>::quiet_NaN()), "null");
    for (const double extreme :
         {std::numeric_limits<double>::max(), std::numeric_limits<double>::min(),
          std::numeric_limits<double>::denorm_min(), -std::numeric_limits<double>::max()}) {
        EXPECT_EQ(std::strtod(Veskar::jsonOf(extreme).c_str(), nullptr), extreme);
    }
}

TEST(ConfigText, DoesNotDependOnTheLocale) {
    Config config = Config::defaults();
    config.detectionPriority.nVideoFramesMissedLimitHigh = 1234567;
    const std::string before = config.toJson();
    const std::locale old = std::locale::global(std::locale(std::locale(), new Commas));
    const std::string after = config.toJson();
    std::locale::global(old);
    EXPECT_EQ(after, before);
}
