// SPDX-License-Identifier: Apache-2.0
#include "fusion/ReportIndex.h"

#include "track/Dereference.h"

#include <algorithm>

namespace Veskar {

void ReportIndex::assign(const std::vector<std::shared_ptr<Track>>& tracks) {
    entries_.clear();
    for (const std::shared_ptr<Track>& track : tracks) {
        entries_.push_back({dereference(track).id, &track});
    }
    // All pointers lead into one vector, so they order equal ids as the frame does; unlike a stable
    // sort this needs no memory.
    std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
        return a.id != b.id ? a.id < b.id : a.track < b.track;
    });
}

const std::shared_ptr<Track>* ReportIndex::find(int id) const {
    const auto next = std::upper_bound(entries_.begin(), entries_.end(), id,
                                       [](int wanted, const Entry& e) { return wanted < e.id; });
    const bool isFound = next != entries_.begin() && std::prev(next)->id == id;
    return isFound ? std::prev(next)->track : nullptr;
}

}  // namespace Veskar
