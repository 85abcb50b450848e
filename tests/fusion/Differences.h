// SPDX-License-Identifier: Apache-2.0
// Where the module and the literal transcription part.
#pragma once

#include <veskar/SystemTrack.h>

#include "fusion/LiteralAssociation.h"

#include <memory>
#include <string>
#include <vector>

namespace VeskarTest {

/// Compares all that a host can read of the system tracks and the sensor tracks behind them.
///
/// Identities, order, times and labels must be equal, numbers that are computed equal to 1e-9:
/// states relative to their magnitude and standard deviation, covariances relative to the product
/// of the two standard deviations.
///
/// @return what differs first; empty when nothing does
std::string firstDifference(const std::vector<std::shared_ptr<Veskar::SystemTrack>>& actual,
                            const Literal::SystemTracks& expected);

}  // namespace VeskarTest
