// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/HostParameters.h>
#include <veskar-host/InputError.h>
#include <veskar/Config.h>

#include "host/adapter/ParameterTable.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>

using Veskar::Host::HostParameters;
using Veskar::Host::InputError;
using Veskar::Host::Internal::Parameter;
using Veskar::Host::Internal::parameterTable;

namespace {

std::string faultOfConfig(const std::string& json) {
    try {
        HostParameters::fromConfig(json);
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

std::string faultOfSetting(const std::string& name, const std::string& value) {
    try {
        HostParameters().set(name, value);
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

}  // namespace

TEST(HostParameters, AreTheDefaultsWithoutTheirObject) {
    EXPECT_EQ(HostParameters::fromConfig("{}").toJson(), "{}");
    EXPECT_EQ(HostParameters::fromConfig(R"({"veskarHost": {}})").toJson(), "{}");
}

TEST(HostParameters, OfTheShippedConfigurationAreInItsText) {
    EXPECT_EQ(HostParameters::fromConfig(Veskar::Config::defaultsText()).toJson(),
              R"({"radarFloorStd":[0.02,0.06,0.05,0.1,0.6,0.3],"pseudoRangeStdPerRange":0.05,)"
              R"("groundSlopeStd":1.0,"cutBoxStd":0.3,"nominalInterval":0.1})");
}

TEST(HostParameters, AreReadFromTheirObject) {
    const auto parameters = HostParameters::fromConfig(
        R"({"veskarModule": 1, "veskarModule": 2, "veskarHost": {"radarGain": 2.5, "videoSilence": 1,
            "radarFloorStd": [0.1, 0.2, 0.3, 0.4, 5, 6.5]}})");
    EXPECT_EQ(parameters.radarGain, 2.5);
    EXPECT_EQ(parameters.videoSilence, 1.0);
    EXPECT_EQ(parameters.radarFloorStd[4], 5.0);
    EXPECT_EQ(parameters.videoGain, HostParameters().videoGain);
    EXPECT_EQ(parameters.toJson(),
              R"({"radarGain":2.5,"radarFloorStd":[0.1,0.2,0.3,0.4,5.0,6.5],"videoSilence":1.0})");
}

TEST(HostParameters, ReadBackWhatTheyWrite) {
    HostParameters parameters;
    parameters.belief = 0.1 + 0.2;
    parameters.radarFloorStd[5] = 1.0 / 3.0;
    const auto back = HostParameters::fromConfig(R"({"veskarHost":)" + parameters.toJson() + "}");
    EXPECT_EQ(back.belief, parameters.belief);
    EXPECT_EQ(back.radarFloorStd, parameters.radarFloorStd);
}

TEST(HostParameters, NameWhatIsWrong) {
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"radarGian": 2.0}})"),
              "veskarHost.radarGian: the key is not known; is radarGain meant?");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"radarGain": "2"}})"),
              "veskarHost.radarGain: expected a number, found a string");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"radarGain": 0}})"),
              "veskarHost.radarGain: 0 is not above 0 and at most 1000000");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"classFromSpeedProbability": 1.5}})"),
              "veskarHost.classFromSpeedProbability: 1.5 is not at least 0 and at most 1");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"radarFloorStd": 0.1}})"),
              "veskarHost.radarFloorStd: expected an array, found a number");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"radarFloorStd": [1.0, 2.0]}})"),
              "veskarHost.radarFloorStd: expected 6 numbers, found 2");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"radarFloorStd": [1, 1, 1, 1, 1, -1]}})"),
              "veskarHost.radarFloorStd[5]: -1 is not above 0 and at most 1000");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"videoSilence": 0.001}})"),
              "veskarHost.videoSilence: 0.001 is not at least 0.01 and at most 3600");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": {"predictionInterval": 0.009}})"),
              "veskarHost.predictionInterval: 0.009 is not at least 0.01 and at most 3600");
    EXPECT_EQ(faultOfConfig(R"({"veskarHost": 3})"),
              "veskarHost: expected an object, found a number");
    EXPECT_NE(faultOfConfig("{").find("line 1, column"), std::string::npos);
}

TEST(HostParameters, AreSetOneByOne) {
    HostParameters parameters;
    parameters.set("radarGain", "2.5");
    parameters.set("radarFloorStd", "[1, 2, 3, 4, 5, 6]");
    EXPECT_EQ(parameters.radarGain, 2.5);
    EXPECT_EQ(parameters.radarFloorStd[5], 6.0);
    EXPECT_EQ(faultOfSetting("radarGain", "much"), "radarGain: \"much\" is not a number");
    EXPECT_EQ(faultOfSetting("radarGain", ""), "radarGain: \"\" is not a number");
    EXPECT_EQ(faultOfSetting("radarGain", "-1"),
              "radarGain: -1 is not above 0 and at most 1000000");
    EXPECT_EQ(faultOfSetting("videoGian", "much"),
              "videoGian: the key is not known; is videoGain meant?");
}

TEST(HostParameters, AreSetWithTheirSection) {
    HostParameters parameters;
    parameters.set("veskarHost.radarGain", "2.5");
    EXPECT_EQ(parameters.radarGain, 2.5);
    EXPECT_EQ(faultOfSetting("veskarHost.radarGian", "1"),
              "veskarHost.radarGian: the key is not known; is radarGain meant?");
    EXPECT_EQ(faultOfSetting("veskarHost.", "1"), "veskarHost.: the key is not known");
}

TEST(HostParameters, StayAsTheyAreWhenAValueIsRefused) {
    HostParameters parameters;
    try {
        parameters.set("radarFloorStd", "[1, 2, 3, 4, -5, 6]");
        FAIL() << "a negative deviation";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), "radarFloorStd[4]: -5 is not above 0 and at most 1000");
    }
    EXPECT_EQ(parameters.toJson(), "{}");
}

TEST(HostParameters, HaveADefaultWithinTheLimitsAndANameEach) {
    HostParameters parameters;
    std::set<std::string> names;
    std::set<const double*> places;
    std::size_t numbers = 0;
    for (const Parameter& parameter : parameterTable()) {
        names.insert(parameter.name);
        const double* const values = parameter.values(parameters);
        for (std::size_t i = 0; i < parameter.count; ++i) {
            EXPECT_TRUE(parameter.allows(values[i])) << parameter.name;
            places.insert(values + i);
            ++numbers;
        }
    }
    EXPECT_EQ(names.size(), parameterTable().size());
    EXPECT_EQ(places.size(), numbers);
    // The table covers the whole struct: a number of padding before Eigen's vector, which is
    // aligned to 16 bytes, and one at the end when the total would be odd.
    EXPECT_EQ((numbers + 2) / 2 * 2 * sizeof(double), sizeof(HostParameters));
}
