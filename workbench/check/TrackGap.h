// SPDX-License-Identifier: Apache-2.0
// The longest gap within a track over which the checks interpolate.
#pragma once

namespace Workbench {

/// Longest interval between frames of a track that is interpolated, seconds.
constexpr double longestTrackGap = 0.6;

}  // namespace Workbench
