// SPDX-License-Identifier: Apache-2.0
// What this process uses of the machine.
#pragma once

namespace Veskar::Live {

/// What this process uses.
struct ProcessUsage {
    double memory = 0.0;      ///< resident, bytes; 0 where the system does not tell
    double cpuSeconds = 0.0;  ///< of all threads since the start

    /// @return what it uses now
    static ProcessUsage now();
};

}  // namespace Veskar::Live
