// SPDX-License-Identifier: Apache-2.0
// Fused frames as text.
#pragma once

#include "replay/FusedCsv.h"
#include "replay/FusedJson.h"

#include <string>

namespace VeskarTest {

/// @param frame the tracks after a frame
/// @return its line, with line end
inline std::string fusedLine(const Workbench::FusedFrame& frame) {
    return toJsonLine(frame);
}

/// @param frame the tracks after a frame
/// @return its rows, each with line end
inline std::string csvRows(const Workbench::FusedFrame& frame) {
    Workbench::LineText text;
    Workbench::appendCsvRows(text, frame);
    return text.string();
}

}  // namespace VeskarTest
