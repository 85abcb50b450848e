// SPDX-License-Identifier: Apache-2.0
// A system track as a line of text, for comparisons between architectures.
#pragma once

#include <veskar/SystemTrack.h>

namespace VeskarDevice {

/// Prints id, class, sensor tracks, probability, state and variances. Real numbers are hexadecimal,
/// which shows every bit.
/// @param track a system track
void printLine(const Veskar::SystemTrack& track);

}  // namespace VeskarDevice
