// SPDX-License-Identifier: Apache-2.0
// Suggests a word for a misspelt one.
#pragma once

#include <veskar/Export.h>

#include <string>
#include <vector>

namespace Veskar {

/// @param word a word that is not among the words
/// @param words those that would have been right
/// @return the first of those that take the fewest edits (Levenshtein's distance) to come from the
///         word; empty when all take more than three
VESKAR_EXPORT std::string nearestWord(const std::string& word,
                                      const std::vector<std::string>& words);

}  // namespace Veskar
