// SPDX-License-Identifier: Apache-2.0
#include "recording/LabelWords.h"

#include <veskar/NearestWord.h>

#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace Workbench {

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
