// SPDX-License-Identifier: Apache-2.0
#include "recording/LabelWords.h"

#include <veskar/NearestWord.h>
#include <veskar/Vocabulary.h>

#include <map>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Workbench {
namespace {

namespace Vocabulary = Veskar::Vocabulary;
using Synonyms = std::map<std::string, std::string>;

// Names used by data sets and analytics, in lower case with underscores.
const Synonyms& synonymsOf(WordKind kind) {
    static const Synonyms classes{{"person", Vocabulary::human},
                                  {"people", Vocabulary::human},
                                  {"pedestrian", Vocabulary::human},
                                  {"person_sitting", Vocabulary::human},
                                  {"walker", Vocabulary::human},
                                  {"man", Vocabulary::human},
                                  {"woman", Vocabulary::human},
                                  {"child", Vocabulary::human},
                                  {"adult", Vocabulary::human},
                                  {"head", Vocabulary::humanHead},
                                  {"face", Vocabulary::humanFace},
                                  {"hat", Vocabulary::hatOther},
                                  {"automobile", Vocabulary::car},
                                  {"passenger_car", Vocabulary::car},
                                  {"sedan", Vocabulary::car},
                                  {"suv", Vocabulary::car},
                                  {"taxi", Vocabulary::car},
                                  {"lorry", Vocabulary::truck},
                                  {"coach", Vocabulary::bus},
                                  {"minibus", Vocabulary::bus},
                                  {"cyclist", Vocabulary::motorcycleBicycle},
                                  {"bicycle", Vocabulary::motorcycleBicycle},
                                  {"bicyclist", Vocabulary::motorcycleBicycle},
                                  {"motorcycle", Vocabulary::motorcycleBicycle},
                                  {"motorcyclist", Vocabulary::motorcycleBicycle},
                                  {"motorbike", Vocabulary::motorcycleBicycle},
                                  {"moped", Vocabulary::motorcycleBicycle},
                                  {"rider", Vocabulary::motorcycleBicycle},
                                  {"scooter", Vocabulary::motorcycleBicycle},
                                  {"two_wheeler", Vocabulary::motorcycleBicycle},
                                  {"van", Vocabulary::vehicleOther},
                                  {"tram", Vocabulary::vehicleOther},
                                  {"trailer", Vocabulary::vehicleOther},
                                  {"tractor", Vocabulary::vehicleOther},
                                  {"train", Vocabulary::vehicleOther},
                                  {"forklift", Vocabulary::vehicleOther},
                                  {"boat", Vocabulary::vehicleOther},
                                  {"plate", Vocabulary::licensePlate},
                                  {"number_plate", Vocabulary::licensePlate},
                                  {"dog", Vocabulary::animal},
                                  {"cat", Vocabulary::animal},
                                  {"horse", Vocabulary::animal},
                                  {"deer", Vocabulary::animal},
                                  {"bird", Vocabulary::animal},
                                  {"none", Vocabulary::unknown},
                                  {"other", Vocabulary::unknown},
                                  {"undefined", Vocabulary::unknown},
                                  {"unclassified", Vocabulary::unknown}};
    static const Synonyms colors{{"grey", "gray"},
                                 {"silver", "gray"},
                                 {"violet", "purple"},
                                 {"magenta", "pink"},
                                 {"cyan", "blue"},
                                 {"navy", "blue"},
                                 {"gold", "yellow"},
                                 {"cream", "beige"},
                                 {"none", Vocabulary::unknown},
                                 {"other", Vocabulary::unknown},
                                 {"undefined", Vocabulary::unknown}};
    return kind == WordKind::Class ? classes : colors;
}

const std::set<std::string>& wordsOf(WordKind kind) {
    return kind == WordKind::Class ? Vocabulary::knownClasses : Vocabulary::knownColors;
}

std::string inLowerCase(std::string_view word) {
    std::string result(word);
    for (char& c : result) {
        const bool isCapital = c >= 'A' && c <= 'Z';
        c = isCapital ? static_cast<char>(c - 'A' + 'a') : c == ' ' || c == '-' ? '_' : c;
    }
    return result;
}

}  // namespace

std::optional<std::string> meantWord(WordKind kind, std::string_view word) {
    const std::string plain = inLowerCase(word);
    if (wordsOf(kind).count(plain) > 0) {
        return plain;
    }
    const auto synonym = synonymsOf(kind).find(plain);
    return synonym == synonymsOf(kind).end() ? std::nullopt : std::optional(synonym->second);
}

std::optional<std::string> adviceOn(WordKind kind, const std::string& word) {
    const std::set<std::string>& words = wordsOf(kind);
    if (words.count(word) > 0) {
        return std::nullopt;
    }
    const char* const list = kind == WordKind::Class ? "classes" : "colours";
    const std::optional<std::string> meant = meantWord(kind, word);
    if (meant) {
        return fmt::format("none of the {} that are known; write \"{}\"", list, *meant);
    }
    const std::string nearest = Veskar::nearestWord(word, {words.begin(), words.end()});
    if (!nearest.empty()) {
        return fmt::format("none of the {} that are known; is \"{}\" meant?", list, nearest);
    }
    return fmt::format("none of the {} that are known, nor near one: {}", list,
                       fmt::join(words, ", "));
}

UnknownWords::UnknownWords(Tell tell) : tell_(std::move(tell)) {}

void UnknownWords::look(const RecordingLine& line) {
    if (const auto* truth = std::get_if<TruthFrame>(&line)) {
        for (const TruthObject& object : truth->objects) {
            look(WordKind::Class, "class", object.className);
        }
        return;
    }
    for (const Report& track : std::get<SensorFrame>(line).tracks) {
        if (const auto* radar = std::get_if<RadarReport>(&track)) {
            look(WordKind::Class, "class", radar->objectClass.name);
        } else if (const auto* video = std::get_if<VideoReport>(&track)) {
            look(video->labels);
        } else {
            look(std::get<ReadyEstimate>(track).labels);
        }
    }
}

void UnknownWords::look(const Labels& labels) {
    look(WordKind::Class, "class", labels.objectClass.name);
    look(WordKind::Color, "color", labels.color.name);
    look(WordKind::Color, "upperClothingColor", labels.upperClothingColor.name);
    look(WordKind::Color, "lowerClothingColor", labels.lowerClothingColor.name);
}

void UnknownWords::look(WordKind kind, const char* key, const std::string& word) {
    if (wordsOf(kind).count(word) > 0 || !seen_.insert({kind, word}).second) {
        return;
    }
    if (const std::optional<std::string> advice = adviceOn(kind, word)) {
        tell_(key, word, *advice);
    }
}

}  // namespace Workbench
