// SPDX-License-Identifier: Apache-2.0
// A video analytics' report of an object.
#pragma once

#include <veskar-host/ImageBox.h>
#include <veskar-host/Labels.h>
#include <veskar-host/ReportBase.h>

#include <optional>

#include <Eigen/Core>

namespace Veskar::Host {

/// A track of the video analytics in image coordinates.
struct VideoReport : ReportBase {
    ImageBox box;                             ///< the object stands at the middle of its lower edge
    std::optional<Eigen::Vector2d> velocity;  ///< of that point, 1/s
    double age = 0.0;                         ///< seconds since the track's first report
    Labels labels;                            ///< class and colours
};

}  // namespace Veskar::Host
