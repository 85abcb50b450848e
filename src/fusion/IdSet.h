// SPDX-License-Identifier: Apache-2.0
// A set of ids that is first filled, then asked.
#pragma once

#include <algorithm>
#include <vector>

namespace Veskar {

/// Ids in a sorted vector. Unlike a node-based set it keeps its memory from frame to frame.
class IdSet {
public:
    void clear() { ids.clear(); }
    void add(int id) { ids.push_back(id); }
    /// Ends the filling.
    void sort() { std::sort(ids.begin(), ids.end()); }
    /// Only after sort.
    bool contains(int id) const { return std::binary_search(ids.begin(), ids.end(), id); }

private:
    std::vector<int> ids;
};

}  // namespace Veskar
