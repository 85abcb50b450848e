// SPDX-License-Identifier: Apache-2.0
// Mounting angles are given in degrees, functions take radians.
#pragma once

namespace Veskar {

inline double toRadians(double degrees) {
    return degrees * 3.141592653589793 / 180.0;
}

}  // namespace Veskar
