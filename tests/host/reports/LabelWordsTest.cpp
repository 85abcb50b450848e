// SPDX-License-Identifier: Apache-2.0
// Synonyms of classes and colours.
#include "host/reports/LabelWords.h"

#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

using namespace Veskar::Host::Internal;

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
