// SPDX-License-Identifier: Apache-2.0
// Advice on words outside the vocabulary.
#include <veskar/Vocabulary.h>

#include "recording/LabelWords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Workbench {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

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
