// SPDX-License-Identifier: Apache-2.0
// Synonyms of the vocabulary's classes and colours.
#pragma once

#include "recording/Recording.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace Workbench {

/// The kinds of words in the vocabulary.
enum class WordKind { Class, Color };

/// @param kind kind of the word
/// @param word a word as used by data sets or users, in any case: "Pedestrian", "lorry", "grey"
/// @return the vocabulary's word for it; nothing when it is no known synonym
std::optional<std::string> meantWord(WordKind kind, std::string_view word);

/// @param kind kind of the word
/// @param word a label
/// @return nothing when it is in the vocabulary; otherwise text that continues "the word is" and
///         names the nearest word of the vocabulary
std::optional<std::string> adviceOn(WordKind kind, const std::string& word);

/// Finds words outside the vocabulary.
class UnknownWords {
public:
    /// Receives the member of the track, the word and the advice.
    using Tell =
        std::function<void(const char* key, const std::string& word, const std::string& advice)>;

    /// @param tell called once per word
    explicit UnknownWords(Tell tell);

    /// @param line its labels are checked
    void look(const RecordingLine& line);

private:
    void look(const Labels& labels);
    void look(WordKind kind, const char* key, const std::string& word);

    Tell tell_;
    std::set<std::pair<WordKind, std::string>> seen_;
};

}  // namespace Workbench
