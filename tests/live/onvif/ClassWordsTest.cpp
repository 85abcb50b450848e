// SPDX-License-Identifier: Apache-2.0
// ONVIF's words for classes.
#include <veskar/Vocabulary.h>

#include "live/onvif/ClassWords.h"
#include "live/onvif/Samples.h"

#include <sstream>
#include <string>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(ClassWords, CoverAllOfOnvifs) {
    const std::pair<const char*, std::optional<std::string>> words[] = {
        // Object types.
        {"Animal", "animal"},
        {"HumanFace", "human_face"},
        {"Human", "human"},
        {"Bicycle", "motorcycle_bicycle"},
        {"Vehicle", "vehicle"},
        {"LicensePlate", "license_plate"},
        {"Bike", "motorcycle_bicycle"},
        {"Barcode", std::nullopt},
        {"Fire", std::nullopt},
        {"Smoke", std::nullopt},
        // The deprecated class types, as they are spelt.
        {"Face", "human_face"},
        {"Vehical", "vehicle"},
        {"Other", "unknown"},
        // Vehicle types.
        {"Bus", "bus"},
        {"Car", "car"},
        {"Truck", "truck"},
        {"Motorcycle", "motorcycle_bicycle"},
        {"Others", "vehicle_other"}};
    for (const auto& [word, meant] : words) {
        EXPECT_EQ(classOf(word), meant) << word;
    }
}

TEST(ClassWords, AreTheSynonymsOfImportsBesides) {
    EXPECT_EQ(classOf("Person"), "human");
    EXPECT_EQ(classOf("Head"), "human_head");
    EXPECT_EQ(classOf("van"), "vehicle_other");
    EXPECT_EQ(classOf("bike"), "bike");
    EXPECT_EQ(classOf("Spaceship"), std::nullopt);
    EXPECT_EQ(classOf(""), std::nullopt);
}

Host::Label bestClassOf(const std::vector<Candidate>& candidates) {
    LeftOut leftOut;
    return bestClass(candidates, leftOut);
}

TEST(ClassWords, WithTheGreatestLikelihoodWin) {
    const Host::Label label = bestClassOf({{"Animal", 0.2}, {"Human", 0.7}, {"Bike", 0.7}});
    EXPECT_EQ(label.name, "human");
    EXPECT_EQ(label.probability, 0.7);
    EXPECT_EQ(bestClassOf({}).name, "unknown");
    EXPECT_EQ(bestClassOf({}).probability, 0.0);
    EXPECT_EQ(bestClassOf({{"Human", 0.0}}).name, "unknown");
    EXPECT_EQ(bestClassOf({{"Other", 0.9}, {"Human", 0.4}}).name, "human");
}

TEST(ClassWords, ForAKindOfVehicleReplaceTheGeneralOne) {
    Host::Label label = bestClassOf({{"Vehicle", 0.9}, {"Car", 0.6}, {"Truck", 0.3}});
    EXPECT_EQ(label.name, "car");
    EXPECT_EQ(label.probability, 0.6);
    label = bestClassOf({{"Vehicle", 0.9}, {"Car", 0.4}, {"Truck", 0.3}});
    EXPECT_EQ(label.name, "vehicle");
    EXPECT_EQ(label.probability, 0.9);
    // Only a vehicle has kinds.
    EXPECT_EQ(bestClassOf({{"Human", 0.9}, {"Car", 0.8}}).name, "human");
    EXPECT_EQ(bestClassOf({{"Truck", 0.8}, {"Vehicle", 0.8}}).name, "truck");
}

TEST(ClassWords, WithoutACounterpartAreCounted) {
    LeftOut leftOut;
    const Host::Label label =
        bestClass({{"Fire", 0.9}, {"Smoke", 0.8}, {"Fire", 0.1}, {"Human", 0.3}}, leftOut);
    EXPECT_EQ(label.name, "human");
    EXPECT_THAT(leftOut.counts(), ElementsAre(Pair("Class Fire", 2), Pair("Class Smoke", 1)));
}

TEST(ClassWords, LeadBackToTheirClass) {
    for (const std::string& name : Vocabulary::knownClasses) {
        const std::vector<Candidate> candidates = candidatesFor({name, 0.75});
        if (name == "unknown") {
            EXPECT_THAT(candidates, testing::IsEmpty());
            continue;
        }
        const Host::Label label = bestClassOf(candidates);
        const bool isMerged = name == "bike" || name == "vehicle_other";
        EXPECT_EQ(label.name, name == "bike" ? "motorcycle_bicycle" : isMerged ? "vehicle" : name);
        EXPECT_EQ(label.probability, 0.75) << name;
    }
    const std::vector<Candidate> car = candidatesFor({"car", 0.8});
    ASSERT_EQ(car.size(), 2);
    EXPECT_EQ(car[0].word, "Vehicle");
    EXPECT_EQ(car[1].word, "Car");
    EXPECT_EQ(candidatesFor({"drone", 0.5}).at(0).word, "drone");
}

/// The words between backquotes.
std::vector<std::string> quotedIn(const std::string& text) {
    std::vector<std::string> words;
    std::istringstream parts(text);
    std::string part;
    for (bool isQuoted = false; std::getline(parts, part, '`'); isQuoted = !isQuoted) {
        if (isQuoted) {
            words.push_back(part);
        }
    }
    return words;
}

TEST(ClassWords, StandInTheDocumentation) {
    const std::string text = VeskarTest::textOfFile(VESKAR_SOURCE_DIR "/docs/live.md");
    const std::size_t table = text.find("| ONVIF | Vocabulary |");
    ASSERT_NE(table, std::string::npos);
    std::istringstream lines(text.substr(table));
    std::string line;
    std::getline(lines, line);
    std::getline(lines, line);
    std::size_t count = 0;
    while (std::getline(lines, line) && !line.empty() && line.find("other words") != 2) {
        const std::size_t middle = line.find('|', 1);
        const std::vector<std::string> words = quotedIn(line.substr(0, middle));
        const std::vector<std::string> meant = quotedIn(line.substr(middle));
        for (std::size_t i = 0; i < words.size(); ++i) {
            const std::string expected = meant.empty() ? "" : meant[meant.size() == 1 ? 0 : i];
            EXPECT_EQ(classOf(words[i]).value_or(""), expected) << line;
            ++count;
        }
    }
    EXPECT_EQ(count, 18);
}

}  // namespace
}  // namespace Veskar::Live
