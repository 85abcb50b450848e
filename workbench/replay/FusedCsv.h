// SPDX-License-Identifier: Apache-2.0
// Writes fused tracks as comma-separated values (RFC 4180).
#pragma once

#include <veskar-host/FusedFrame.h>

#include "HostLibrary.h"
#include "host/json/LineText.h"

#include <string>

namespace Workbench {

/// @return the row of column names, with line end
std::string csvHeader();

/// Appends one row per track, each with line end. Unknown values are empty.
///
/// @param text receives the rows
/// @param frame the tracks after a frame
void appendCsvRows(LineText& text, const FusedFrame& frame);

}  // namespace Workbench
