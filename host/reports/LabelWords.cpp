// SPDX-License-Identifier: Apache-2.0
#include "host/reports/LabelWords.h"

#include <veskar/Vocabulary.h>

#include <map>

namespace Veskar::Host::Internal {
namespace {

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

std::string inLowerCase(std::string_view word) {
    std::string result(word);
    for (char& c : result) {
        const bool isCapital = c >= 'A' && c <= 'Z';
        c = isCapital ? static_cast<char>(c - 'A' + 'a') : c == ' ' || c == '-' ? '_' : c;
    }
    return result;
}

}  // namespace

const std::set<std::string>& wordsOf(WordKind kind) {
    return kind == WordKind::Class ? Vocabulary::knownClasses : Vocabulary::knownColors;
}

std::optional<std::string> meantWord(WordKind kind, std::string_view word) {
    const std::string plain = inLowerCase(word);
    if (wordsOf(kind).count(plain) > 0) {
        return plain;
    }
    const auto synonym = synonymsOf(kind).find(plain);
    return synonym == synonymsOf(kind).end() ? std::nullopt : std::optional(synonym->second);
}

}  // namespace Veskar::Host::Internal
