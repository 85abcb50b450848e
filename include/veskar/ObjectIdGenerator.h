// SPDX-License-Identifier: Apache-2.0
// Numbers system tracks.
#pragma once

#include <veskar/Export.h>

#include <cstdint>

namespace Veskar {

/// Hands out system-track ids: 1, 2, ... and after the largest 32-bit value 0. Not thread-safe.
class VESKAR_EXPORT ObjectIdGenerator {
public:
    /// @return the next id; never negative
    std::int32_t next();

    /// The generator of the most recently constructed FusionModule, from which all modules draw;
    /// null before the first. It stays when that module ends; the process keeps the generator.
    static ObjectIdGenerator* instance;

    std::int32_t lastId = 0;  ///< the id handed out last
};

}  // namespace Veskar
