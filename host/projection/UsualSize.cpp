// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/UsualSize.h>

namespace Veskar::Host {

Eigen::Vector3d usualSize(std::string_view className) {
    if (className == "car" || className == "vehicle") {
        return {4.4, 1.8, 1.5};
    }
    if (className == "truck" || className == "bus") {
        return {9.0, 2.5, 3.2};
    }
    if (className == "motorcycle_bicycle" || className == "bike") {
        return {1.8, 0.6, 1.7};
    }
    if (className == "animal") {
        return {0.9, 0.3, 0.6};
    }
    return {0.5, 0.5, 1.75};
}

}  // namespace Veskar::Host
