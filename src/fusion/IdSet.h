// SPDX-License-Identifier: Apache-2.0
// A small set of ids.
#pragma once

#include <algorithm>
#include <vector>

namespace Veskar {

/// Ids in a sorted vector. Unlike a node-based set it keeps its memory from frame to frame.
class IdSet {
public:
    void clear() { ids_.clear(); }

    void insert(int id) {
        const auto place = std::lower_bound(ids_.begin(), ids_.end(), id);
        if (place == ids_.end() || *place != id) {
            ids_.insert(place, id);
        }
    }

    bool contains(int id) const { return std::binary_search(ids_.begin(), ids_.end(), id); }

private:
    std::vector<int> ids_;
};

}  // namespace Veskar
