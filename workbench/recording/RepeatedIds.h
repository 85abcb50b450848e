// SPDX-License-Identifier: Apache-2.0
// Ids are unique within a frame, whoever has written it.
#pragma once

#include "io/InputError.h"

#include <cstdint>
#include <set>
#include <vector>

#include <fmt/format.h>

namespace Workbench {

/// @param items members of a frame
/// @param list the name of their list, for the message
/// @param idOf gives the id of a member
/// @throw InputError when an id occurs twice
template <typename Item>
void refuseRepeatedIds(const std::vector<Item>& items, const char* list,
                       std::int32_t (*idOf)(const Item&)) {
    std::set<std::int32_t> seen;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (!seen.insert(idOf(items[i])).second) {
            throw InputError(
                fmt::format("{}[{}].id: {} occurs twice in the frame", list, i, idOf(items[i])));
        }
    }
}

}  // namespace Workbench
