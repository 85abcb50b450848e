// SPDX-License-Identifier: Apache-2.0
#include <veskar/Vocabulary.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace Vocabulary = Veskar::Vocabulary;
using testing::ElementsAre;
using testing::Pair;

TEST(Vocabulary, HasTheWordsThatProducersSend) {
    EXPECT_EQ(Vocabulary::human, "human");
    EXPECT_EQ(Vocabulary::humanHead, "human_head");
    EXPECT_EQ(Vocabulary::humanFace, "human_face");
    EXPECT_EQ(Vocabulary::hatOther, "hat_other");
    EXPECT_EQ(Vocabulary::missingHardhat, "missing_hardhat");
    EXPECT_EQ(Vocabulary::vehicle, "vehicle");
    EXPECT_EQ(Vocabulary::car, "car");
    EXPECT_EQ(Vocabulary::truck, "truck");
    EXPECT_EQ(Vocabulary::bus, "bus");
    EXPECT_EQ(Vocabulary::motorcycleBicycle, "motorcycle_bicycle");
    EXPECT_EQ(Vocabulary::vehicleOther, "vehicle_other");
    EXPECT_EQ(Vocabulary::bike, "bike");
    EXPECT_EQ(Vocabulary::licensePlate, "license_plate");
    EXPECT_EQ(Vocabulary::animal, "animal");
    EXPECT_EQ(Vocabulary::unknown, "unknown");
}

TEST(Vocabulary, HasTheWordsOfSceneAndPriority) {
    EXPECT_EQ(Vocabulary::area, "area");
    EXPECT_EQ(Vocabulary::road, "road");
    EXPECT_EQ(Vocabulary::automatic, "automatic");
    EXPECT_EQ(Vocabulary::minimizeFalseAlarms, "minimizeFalseAlarms");
    EXPECT_EQ(Vocabulary::maximizeDetections, "maximizeDetections");
}

TEST(Vocabulary, SupportsTenClassesInByteOrder) {
    EXPECT_THAT(Vocabulary::supportedClasses,
                ElementsAre("animal", "bike", "bus", "car", "human", "motorcycle_bicycle", "truck",
                            "unknown", "vehicle", "vehicle_other"));
}

TEST(Vocabulary, GroupsFourteenClasses) {
    EXPECT_THAT(
        Vocabulary::classGroups,
        ElementsAre(Pair("animal", "animal"), Pair("bus", "vehicle"), Pair("car", "vehicle"),
                    Pair("hat_other", "missing_hardhat"), Pair("human", "human"),
                    Pair("human_face", "human"), Pair("human_head", "missing_hardhat"),
                    Pair("license_plate", "license_plate"),
                    Pair("missing_hardhat", "missing_hardhat"),
                    Pair("motorcycle_bicycle", "vehicle"), Pair("truck", "vehicle"),
                    Pair("unknown", "unknown"), Pair("vehicle", "vehicle"),
                    Pair("vehicle_other", "vehicle")));
}

TEST(Vocabulary, GivesABikeNoGroupAlthoughItIsSupported) {
    EXPECT_EQ(Vocabulary::supportedClasses.count("bike"), 1U);
    EXPECT_EQ(Vocabulary::classGroups.count("bike"), 0U);
}

TEST(Vocabulary, GroupsPartsOfAPersonWithoutSupportingThem) {
    for (const char* part :
         {"human_face", "human_head", "hat_other", "missing_hardhat", "license_plate"}) {
        EXPECT_EQ(Vocabulary::supportedClasses.count(part), 0U) << part;
        EXPECT_EQ(Vocabulary::classGroups.count(part), 1U) << part;
    }
}

TEST(Vocabulary, KnowsEveryClassThatItSupportsOrGroupsAndNoOther) {
    std::set<std::string> classes = Vocabulary::supportedClasses;
    for (const auto& [name, group] : Vocabulary::classGroups) {
        classes.insert(name);
    }
    EXPECT_EQ(Vocabulary::knownClasses, classes);
    for (const std::string& name : classes) {
        EXPECT_TRUE(Vocabulary::isKnownClass(name)) << name;
    }
    for (const char* other : {"person", "Human", "", "red"}) {
        EXPECT_FALSE(Vocabulary::isKnownClass(other)) << other;
    }
}

TEST(Vocabulary, KnowsTheUsualColours) {
    EXPECT_THAT(Vocabulary::knownColors,
                ElementsAre("beige", "black", "blue", "brown", "gray", "green", "orange", "pink",
                            "purple", "red", "unknown", "white", "yellow"));
    for (const std::string& name : Vocabulary::knownColors) {
        EXPECT_TRUE(Vocabulary::isKnownColor(name)) << name;
    }
    for (const char* other : {"grey", "Red", "", "car"}) {
        EXPECT_FALSE(Vocabulary::isKnownColor(other)) << other;
    }
}

TEST(Vocabulary, ComparesExactly) {
    for (const char* almost : {"Human", "human ", " human", "HUMAN", "hum", ""}) {
        EXPECT_EQ(Vocabulary::supportedClasses.count(almost), 0U) << almost;
        EXPECT_EQ(Vocabulary::classGroups.count(almost), 0U) << almost;
    }
}

}  // namespace
