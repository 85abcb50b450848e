// SPDX-License-Identifier: Apache-2.0
// A report that needs no measurement model.
#pragma once

#include <veskar-host/ImageBox.h>
#include <veskar-host/Labels.h>
#include <veskar-host/ReportBase.h>
#include <veskar/Estimation.h>

#include <optional>

namespace Veskar::Host {

/// A track that its producer has already expressed in the fusion frame.
struct ReadyEstimate : ReportBase {
    StateVector state = StateVector::Zero();       ///< u, u', v, v', range, range'
    StateMatrix covariance = StateMatrix::Zero();  ///< of `state`
    std::optional<ImageBox> box;                   ///< image box
    Labels labels;                                 ///< class and colours
};

}  // namespace Veskar::Host
