// SPDX-License-Identifier: Apache-2.0
// The fields that all kinds of sensor reports share.
#pragma once

#include <cstdint>

namespace Veskar::Host {

/// The fields that all kinds of sensor reports share.
struct ReportBase {
    std::int32_t id = 0;    ///< the sensor's track id, unique within a frame
    double coasting = 0.0;  ///< seconds since the sensor last saw the object
    bool confirmed = true;  ///< whether the sensor's tracker has confirmed the track
};

}  // namespace Veskar::Host
