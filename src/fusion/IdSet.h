// SPDX-License-Identifier: Apache-2.0
// A small set of ids.
#pragma once

#include <algorithm>
#include <vector>

namespace Veskar {

/// Ids in a sorted vector. Unlike a node-based set it keeps its memory from frame to frame.
class IdSet {
public:
    void clear() { ids.clear(); }

    void insert(int id) {
        const auto place = std::lower_bound(ids.begin(), ids.end(), id);
        if (place == ids.end() || *place != id) {
            ids.insert(place, id);
        }
    }

    bool contains(int id) const { return std::binary_search(ids.begin(), ids.end(), id); }

private:
    std::vector<int> ids;
};

}  // namespace Veskar
