// SPDX-License-Identifier: Apache-2.0
// Writes fused tracks as comma-separated values (RFC 4180).
#pragma once

#include <veskar-host/FusedFrame.h>

#include "HostLibrary.h"
#include "host/json/LineText.h"

#include <string>

namespace Workbench {

/// @return the column names, without line end
std::string csvColumns();

/// @return the row of column names, with line end
std::string csvHeader();

/// Appends one row per track, each with line end. Unknown values are empty.
///
/// @param text receives the rows
/// @param frame the tracks after a frame
void appendCsvRows(LineText& text, const FusedFrame& frame);

/// Appends the cells of one track, without line end.
///
/// @param row receives the cells
/// @param frame the frame of the track
/// @param track the track
void appendCsvCells(LineText& row, const FusedFrame& frame, const FusedTrack& track);

}  // namespace Workbench
