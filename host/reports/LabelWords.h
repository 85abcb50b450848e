// SPDX-License-Identifier: Apache-2.0
// Synonyms of the vocabulary's classes and colours.
#pragma once

#include <veskar-host/ExportHost.h>

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace Veskar::Host::Internal {

/// The kinds of words in the vocabulary.
enum class WordKind { Class, Color };

/// @param kind kind of the words
/// @return the vocabulary's words of this kind
VESKAR_HOST_EXPORT const std::set<std::string>& wordsOf(WordKind kind);

/// @param kind kind of the word
/// @param word a word as used by data sets, sensors or users, in any case: "Pedestrian", "lorry",
///             "grey"
/// @return the vocabulary's word for it; nothing when it is no known synonym
VESKAR_HOST_EXPORT std::optional<std::string> meantWord(WordKind kind, std::string_view word);

}  // namespace Veskar::Host::Internal
