// SPDX-License-Identifier: Apache-2.0
// Synonyms of classes and colours.
#include <veskar/Vocabulary.h>

#include "recording/LabelWords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(LabelWords, MapsTheUsualSynonyms) {
    const std::pair<const char*, const char*> words[] = {{"person", "human"},
                                                         {"Pedestrian", "human"},
                                                         {"Person_sitting", "human"},
                                                         {"Cyclist", "motorcycle_bicycle"},
                                                         {"bicycle", "motorcycle_bicycle"},
                                                         {"bike", "bike"},
                                                         {"lorry", "truck"},
                                                         {"Van", "vehicle_other"},
                                                         {"Tram", "vehicle_other"},
                                                         {"Car", "car"},
                                                         {"license plate", "license_plate"},
                                                         {"DOG", "animal"}};
    for (const auto& [word, meant] : words) {
        EXPECT_EQ(meantWord(WordKind::Class, word), meant) << word;
    }
    EXPECT_EQ(meantWord(WordKind::Color, "Grey"), "gray");
    EXPECT_EQ(meantWord(WordKind::Class, "Misc"), std::nullopt);
    EXPECT_EQ(meantWord(WordKind::Color, "car"), std::nullopt);
}

TEST(LabelWords, SaysNothingOfTheVocabulary) {
    for (const std::string& word : Veskar::Vocabulary::knownClasses) {
        EXPECT_EQ(adviceOn(WordKind::Class, word), std::nullopt) << word;
    }
    for (const std::string& word : Veskar::Vocabulary::knownColors) {
        EXPECT_EQ(adviceOn(WordKind::Color, word), std::nullopt) << word;
    }
}

TEST(LabelWords, NamesTheNearestWord) {
    EXPECT_THAT(adviceOn(WordKind::Class, "person").value(), HasSubstr("write \"human\""));
    EXPECT_THAT(adviceOn(WordKind::Class, "Human").value(), HasSubstr("write \"human\""));
    EXPECT_THAT(adviceOn(WordKind::Class, "trcuk").value(), HasSubstr("is \"truck\" meant?"));
    EXPECT_THAT(adviceOn(WordKind::Color, "grey").value(), HasSubstr("write \"gray\""));
    EXPECT_THAT(adviceOn(WordKind::Class, "spaceship").value(),
                HasSubstr("nor near one: animal, bike, bus, car"));
}

TEST(LabelWords, AreReportedOnceEach) {
    std::vector<std::string> told;
    UnknownWords words([&](const char* key, const std::string& word, const std::string&) {
        told.push_back(std::string(key) + " " + word);
    });
    VideoReport video;
    video.labels.objectClass.name = "person";
    video.labels.color.name = "grey";
    video.labels.upperClothingColor.name = "grey";
    video.labels.lowerClothingColor.name = "red";
    ReadyEstimate ready;
    ready.labels.objectClass.name = "person";
    RadarReport radar;
    radar.objectClass.name = "lorry";
    TruthObject truth;
    truth.className = "grey";
    for (int i = 0; i < 3; ++i) {
        words.look(SensorFrame{Veskar::VideoObject, 0.1 * i, 0.1 * i, {video, ready}});
        words.look(SensorFrame{Veskar::Radar, 0.1 * i, 0.1 * i, {radar}});
        words.look(TruthFrame{0.1 * i, {truth}});
    }
    EXPECT_THAT(told, ElementsAre("class person", "color grey", "class lorry", "class grey"));
}

}  // namespace
}  // namespace Workbench
