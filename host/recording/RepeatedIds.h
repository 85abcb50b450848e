// SPDX-License-Identifier: Apache-2.0
// Ensures that ids are unique within a frame.
#pragma once

#include <veskar-host/InputError.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Veskar::Host::Internal {

/// @param items items of a frame
/// @param list name of their array, for the message
/// @param idOf returns the id of an item
/// @throw InputError when an id occurs twice
template <typename Item>
void refuseRepeatedIds(const std::vector<Item>& items, const char* list,
                       std::int32_t (*idOf)(const Item&)) {
    std::vector<std::pair<std::int32_t, std::size_t>> ids;
    ids.reserve(items.size());
    for (const Item& item : items) {
        ids.emplace_back(idOf(item), ids.size());
    }
    std::sort(ids.begin(), ids.end());
    std::size_t first = items.size();
    for (std::size_t i = 1; i < ids.size(); ++i) {
        if (ids[i].first == ids[i - 1].first) {
            first = std::min(first, ids[i].second);
        }
    }
    if (first < items.size()) {
        throw InputError(std::string(list) + "[" + std::to_string(first) + "].id",
                         std::to_string(idOf(items[first])) + " occurs twice in the frame");
    }
}

}  // namespace Veskar::Host::Internal
