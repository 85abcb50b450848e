// SPDX-License-Identifier: Apache-2.0
// Words for classes and colours that are not in the vocabulary, and what is meant by them.
#pragma once

#include "recording/Recording.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace Workbench {

/// Which vocabulary a word belongs to.
enum class WordKind { Class, Color };

/// @param kind of the word
/// @param word as a data set or a person has it, in any case: "Pedestrian", "lorry", "grey"
/// @return the word of the vocabulary for the same thing; nothing when no such synonym is known
std::optional<std::string> meantWord(WordKind kind, std::string_view word);

/// @param kind of the word
/// @param word a label
/// @return nothing when it is in the vocabulary; otherwise what it is instead, as it goes on after
///         "the word is", with the nearest word of the vocabulary
std::optional<std::string> adviceOn(WordKind kind, const std::string& word);

/// Looks for words outside the vocabulary.
class UnknownWords {
public:
    /// Receives the member of the track, the word and what to say about it.
    using Tell =
        std::function<void(const char* key, const std::string& word, const std::string& advice)>;

    /// @param tell called once for every word
    explicit UnknownWords(Tell tell);

    /// @param line its labels are looked at
    void look(const RecordingLine& line);

private:
    void look(const Labels& labels);
    void look(WordKind kind, const char* key, const std::string& word);

    Tell tell_;
    std::set<std::pair<WordKind, std::string>> seen_;
};

}  // namespace Workbench
