// SPDX-License-Identifier: Apache-2.0
#include <veskar/NearestWord.h>

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace Veskar {
namespace {

/// Levenshtein's distance.
std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0U);
    for (const char letter : a) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = diagonal + (letter == b[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string nearestWord(const std::string& word, const std::vector<std::string>& words) {
    constexpr std::size_t mostEdits = 3;
    std::string nearest;
    std::size_t least = mostEdits + 1;
    for (const std::string& candidate : words) {
        if (word.size() > candidate.size() + mostEdits) {
            continue;  // certainly too far; spares comparing a long text
        }
        const std::size_t edits = editDistance(word, candidate);
        if (edits < least) {
            least = edits;
            nearest = candidate;
        }
    }
    return nearest;
}

}  // namespace Veskar
