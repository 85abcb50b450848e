// SPDX-License-Identifier: Apache-2.0
// A value for each of some pairs of a true object and a track.
#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace Workbench {

/// Values by the number of the pair. A pair without a value costs four bytes.
template <typename Value>
class PairValues {
public:
    /// @param number see PairNumbers
    /// @return the value of a pair, at first Value()
    Value& operator[](int number) {
        const auto pair = static_cast<std::size_t>(number);
        if (pair >= places_.size()) {
            places_.resize(pair + 1, none);
        }
        if (places_[pair] == none) {
            places_[pair] = static_cast<int>(values_.size());
            values_.emplace_back();
        }
        return values_[static_cast<std::size_t>(places_[pair])];
    }

    /// @return all values, in the order in which they were added
    const std::vector<Value>& all() const { return values_; }

private:
    static constexpr int none = -1;
    std::vector<int> places_;  ///< in `values_`, by number of the pair
    std::vector<Value> values_;
};

/// What a metric counts of a pair.
template <typename Count>
struct CountedPair {
    int truth = 0;  ///< rank, see IdCounts
    int track = 0;
    Count count{};
};

/// @return the pairs ordered by object, then by track
template <typename Count>
std::vector<CountedPair<Count>> sorted(const PairValues<CountedPair<Count>>& pairs) {
    std::vector<CountedPair<Count>> all = pairs.all();
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) {
        return std::make_pair(a.truth, a.track) < std::make_pair(b.truth, b.track);
    });
    return all;
}

}  // namespace Workbench
