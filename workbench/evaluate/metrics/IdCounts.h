// SPDX-License-Identifier: Apache-2.0
// Counts in how many instants each object or track appears, for the identity metrics.
#pragma once

#include <cstddef>
#include <numeric>
#include <vector>

namespace Workbench {

/// Ranks the members of one part of a scene in the order of their first appearance there, and
/// counts their instants.
class IdCounts {
public:
    /// @param number of an object or of a track, see Instant
    /// @return its rank
    int countAppearance(int number) {
        const auto place = static_cast<std::size_t>(number);
        if (place >= ranks_.size()) {
            ranks_.resize(place + 1, -1);
        }
        if (ranks_[place] < 0) {
            ranks_[place] = static_cast<int>(appearances_.size());
            appearances_.push_back(0);
        }
        ++appearances_[static_cast<std::size_t>(ranks_[place])];
        return ranks_[place];
    }

    /// @param number of a member that has appeared
    int rankOf(int number) const { return ranks_[static_cast<std::size_t>(number)]; }
    /// @return number of instants with the member of a rank
    double of(int rank) const { return appearances_[static_cast<std::size_t>(rank)]; }
    /// @return number of members
    std::size_t size() const { return appearances_.size(); }
    /// @return total number of appearances
    int total() const { return std::accumulate(appearances_.begin(), appearances_.end(), 0); }

private:
    std::vector<int> ranks_;  ///< by number; -1: has not appeared
    std::vector<int> appearances_;
};

/// Counts the appearances of all members of a list.
/// @return the rank of each
template <typename Member>
std::vector<int> countAppearances(const std::vector<Member>& members, IdCounts& counts) {
    std::vector<int> ranks;
    ranks.reserve(members.size());
    for (const Member& member : members) {
        ranks.push_back(counts.countAppearance(member.number));
    }
    return ranks;
}

/// @return the rank of each of a list, all of which have appeared
template <typename Member>
std::vector<int> ranksOf(const std::vector<Member>& members, const IdCounts& counts) {
    std::vector<int> ranks;
    ranks.reserve(members.size());
    for (const Member& member : members) {
        ranks.push_back(counts.rankOf(member.number));
    }
    return ranks;
}

}  // namespace Workbench
