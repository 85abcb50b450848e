// SPDX-License-Identifier: Apache-2.0
// The page of the report knows the words and numbers of explanations from vocabulary.ts, which is
// made here of those that the program uses.
#include <veskar-host/SensorFrame.h>

#include "Process.h"
#include "SourceDirectory.h"
#include "replay/ExplanationWords.h"
#include "report/ExplanationTable.h"
#include "report/Packed.h"
#include "report/RunTable.h"

#include <cstdlib>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

using nlohmann::json;
using testing::Each;
using Veskar::FusionObserver;
using VeskarTest::numbersOf;
using Workbench::EventKind;
using Workbench::PairKind;
using Workbench::PairOutcome;

namespace {

/// @return the words of all enumerators, in the order of their numbers
template <typename Enumeration>
std::vector<std::string> wordsOf() {
    std::vector<std::string> words;
    while (const char* word = Workbench::wordOf(static_cast<Enumeration>(words.size()))) {
        words.emplace_back(word);
    }
    return words;
}

std::vector<std::string> sourceNames() {
    std::vector<std::string> names(2);
    for (const Veskar::Source source : {Veskar::VideoObject, Veskar::Radar}) {
        names.at(static_cast<std::size_t>(Workbench::sourceNumber(source))) =
            Veskar::Host::sourceName(source);
    }
    return names;
}

std::string listOf(const std::string& name, const std::string& type,
                   const std::vector<std::string>& words) {
    std::string text = "\nexport const " + name + " = [\n";
    for (const std::string& word : words) {
        text += "  '" + word + "',\n";
    }
    return text + "] as const;\nexport type " + type + " = (typeof " + name + ")[number];\n";
}

std::string vocabulary() {
    return R"(// SPDX-License-Identifier: Apache-2.0
// Words and numbers that the program and the page share. PageVocabularyTest.cpp writes and checks
// this file; do not change it by hand. Where a column of the report holds a kind or a source, its
// number is a place in one of these lists.
)" + listOf("sourceNames", "SourceName", sourceNames()) +
           listOf("pairKinds", "PairKind", wordsOf<PairKind>()) +
           listOf("eventKinds", "EventKind", wordsOf<EventKind>()) +
           listOf("pairOutcomes", "PairOutcome", wordsOf<PairOutcome>()) +
           listOf("gateVerdicts", "GateVerdict", wordsOf<FusionObserver::GateVerdict>()) +
           listOf("classVerdicts", "ClassVerdict", wordsOf<FusionObserver::ClassVerdict>());
}

/// @return 0, 1, 2 and so on
std::vector<double> upTo(std::size_t count) {
    std::vector<double> numbers(count);
    std::iota(numbers.begin(), numbers.end(), 0.0);
    return numbers;
}

}  // namespace

TEST(PageVocabulary, IsThatOfThePage) {
    const std::string path = std::string(VESKAR_SOURCE_DIR) + "/workbench/report/src/vocabulary.ts";
    if (std::getenv("VESKAR_WRITE_VOCABULARY") != nullptr) {
        VeskarTest::spill(path, vocabulary());
    }
    EXPECT_EQ(VeskarTest::slurp(path), vocabulary())
        << "run this test with VESKAR_WRITE_VOCABULARY=1 in the environment to write it anew";
}

TEST(PageVocabulary, NumbersTheKindsInTheTablesOfTheReport) {
    // One frame with one pair and one event of every kind; the number of each is its track, too.
    const std::vector<std::string> pairs = wordsOf<PairKind>();
    const std::vector<std::string> events = wordsOf<EventKind>();
    json frame{{"source", "radar"}, {"time", 1.0}};
    for (const std::vector<std::string>& lists : {pairs, events}) {
        for (std::size_t i = 0; i < lists.size(); ++i) {
            const json record{
                {"track", i}, {"sensor", "radar"}, {"id", 5}, {"other", 5}, {"reason", "merged"}};
            frame[lists[i]] = json::array({record});
        }
    }
    const VeskarTest::TemporaryDirectory directory;
    const std::string path = directory / "why.jsonl";
    VeskarTest::spill(path, frame.dump() + "\n");
    Workbench::Words words;
    const Workbench::Json table = Workbench::readExplanations(path, words, 0.0).table;

    const auto key = [&](const char* name, const char* of) {
        return numbersOf(table[name]["keys"][of]);
    };
    EXPECT_EQ(key("pairs", "kind"), upTo(pairs.size()));
    EXPECT_EQ(key("pairs", "track"), upTo(pairs.size()));
    EXPECT_EQ(key("events", "kind"), upTo(events.size()));
    std::vector<double> tracks = upTo(events.size());
    tracks[static_cast<std::size_t>(EventKind::StartWithheld)] = 0.0;  // about no system track
    EXPECT_EQ(key("events", "track"), tracks);
    const double radar = 1.0;
    EXPECT_EQ(sourceNames().at(static_cast<std::size_t>(radar)), "radar");
    EXPECT_THAT(numbersOf(table["source"]), Each(radar));
    EXPECT_EQ(key("events", "source").front(), radar);
}
