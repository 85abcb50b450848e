// SPDX-License-Identifier: Apache-2.0
// How the classes of radar and video decide which pairs may be assigned.
#pragma once

#include <veskar/SystemTrack.h>

#include "gating/ClassTraits.h"
#include "track/Support.h"

#include <optional>

namespace Veskar {

/// @param source the source of a sensor track
/// @return the source whose side of a system track its class is compared with
inline Source comparedSource(Source source) {
    return source == Source::Radar ? Source::VideoObject : Source::Radar;
}

/// @param system a system track
/// @param sensor a sensor track
/// @param source the source that counts as the sensor track's
/// @return whether the classes agree; nothing when the system track has nothing to compare with
inline std::optional<bool> classesAgree(const SystemTrack& system, const Track& sensor,
                                        Source source) {
    const Track* other = firstTrack(system, comparedSource(source));
    if (other == nullptr) {
        return std::nullopt;
    }
    return classTraitsOf(*other).agreesWith(classTraitsOf(sensor));
}

/// The class rule of one system track: as soon as a sensor track of its class lies inside its gate,
/// it may take none of other classes. With "removeClassMismatches" those of other classes that lie
/// inside the gate are mismatches.
///
/// @param removesMismatches "removeClassMismatches"
/// @param hasMatch answers whether a sensor track of its class lies inside the gate
/// @param forbidOthers forbids the pairs with sensor tracks of other classes
/// @param reportMismatches tells of those that lie inside the gate
template <typename HasMatch, typename ForbidOthers, typename ReportMismatches>
void applyClassRule(bool removesMismatches, HasMatch hasMatch, ForbidOthers forbidOthers,
                    ReportMismatches reportMismatches) {
    if (!hasMatch()) {
        return;
    }
    forbidOthers();
    if (removesMismatches) {
        reportMismatches();
    }
}

}  // namespace Veskar
