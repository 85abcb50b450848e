// SPDX-License-Identifier: Apache-2.0
// A radar's report of an object.
#pragma once

#include <veskar-host/Labels.h>
#include <veskar-host/ReportBase.h>

#include <optional>

namespace Veskar::Host {

/// A track of the radar in its own coordinates. `radialSpeed` is used when `speed` or `direction`
/// is missing.
struct RadarReport : ReportBase {
    double range = 0.0;                 ///< slant distance from the radar, m
    double azimuth = 0.0;               ///< degrees clockwise from the radar's forward direction
    std::optional<double> speed;        ///< over ground, m/s
    std::optional<double> direction;    ///< of motion, degrees clockwise from forward
    std::optional<double> radialSpeed;  ///< m/s, positive away from the radar
    Label objectClass;                  ///< "unknown" when the radar does not classify
};

}  // namespace Veskar::Host
