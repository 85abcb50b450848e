// SPDX-License-Identifier: Apache-2.0
// Counts in how many instants each id appears, for the identity metrics.
#pragma once

#include "evaluate/metrics/Instant.h"

#include <unordered_map>
#include <vector>

namespace Workbench {

/// Numbers ids in the order of their first appearance and counts their instants.
class IdCounts {
public:
    /// @return the id's number
    int countAppearance(int id) {
        const auto [found, isNew] = numbers_.try_emplace(id, static_cast<int>(appearances_.size()));
        if (isNew) {
            appearances_.push_back(0);
        }
        ++appearances_[static_cast<std::size_t>(found->second)];
        return found->second;
    }

    /// @return number of instants with the id of a number
    double of(int number) const { return appearances_[static_cast<std::size_t>(number)]; }
    /// @return number of ids
    int size() const { return static_cast<int>(appearances_.size()); }
    /// @return total number of appearances
    int total() const {
        int sum = 0;
        for (const int count : appearances_) {
            sum += count;
        }
        return sum;
    }

private:
    std::unordered_map<int, int> numbers_;
    std::vector<int> appearances_;
};

/// Counts the appearances of all members of a list.
/// @return the number of each member's id
template <typename Member>
std::vector<int> countAppearances(const std::vector<Member>& members, IdCounts& counts) {
    std::vector<int> numbers;
    numbers.reserve(members.size());
    for (const Member& member : members) {
        numbers.push_back(counts.countAppearance(member.id));
    }
    return numbers;
}

}  // namespace Workbench
