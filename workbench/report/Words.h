// SPDX-License-Identifier: Apache-2.0
// Numbers words, so that columns can refer to them.
#pragma once

#include <limits>
#include <map>
#include <string>
#include <vector>

namespace Workbench {

/// The words of a report, each stored once; columns contain their numbers.
class Words {
public:
    /// @param word any text
    /// @return its number; NaN for "unknown" and for empty text
    double numberOf(const std::string& word) {
        if (word.empty() || word == "unknown") {
            return std::numeric_limits<double>::quiet_NaN();
        }
        const auto [place, isNew] = numbers_.try_emplace(word, static_cast<double>(words_.size()));
        if (isNew) {
            words_.push_back(word);
        }
        return place->second;
    }
    /// @return the words in the order of their numbers
    const std::vector<std::string>& list() const { return words_; }

private:
    std::map<std::string, double> numbers_;
    std::vector<std::string> words_;
};

}  // namespace Workbench
