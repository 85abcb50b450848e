// SPDX-License-Identifier: Apache-2.0
// Differences between the module and the literal transcription.
#pragma once

#include <veskar/SystemTrack.h>

#include "fusion/LiteralAssociation.h"

#include <memory>
#include <string>
#include <vector>

namespace VeskarTest {

/// Compares everything that a host can read of the system tracks and their sensor tracks.
///
/// Identities, order, times and labels must be equal; computed numbers must agree to 1e-9: states
/// relative to their magnitude and standard deviation, covariances relative to the product of the
/// two standard deviations.
///
/// @return the first difference; empty when there is none
std::string firstDifference(const std::vector<std::shared_ptr<Veskar::SystemTrack>>& actual,
                            const Literal::SystemTracks& expected);

}  // namespace VeskarTest
