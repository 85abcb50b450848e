// SPDX-License-Identifier: Apache-2.0
// Advice on words outside the vocabulary.
#pragma once

#include "host/reports/LabelWords.h"
#include "recording/Recording.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace Workbench {

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
