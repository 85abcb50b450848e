// SPDX-License-Identifier: Apache-2.0
// How long a sensor may lose a track that the checks still take for one.
#pragma once

namespace Workbench {

/// Frames of a track that are farther apart are not interpolated, seconds.
constexpr double longestTrackGap = 0.6;

}  // namespace Workbench
