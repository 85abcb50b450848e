// SPDX-License-Identifier: Apache-2.0
// Numbers of things in messages.
#pragma once

#include <cstdint>
#include <string>

namespace Workbench {

/// @param count how many
/// @param noun what, in the singular, with a plural that ends with s
/// @return "1 fault", "0 faults", "601 faults"
inline std::string counted(std::uint64_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace Workbench
