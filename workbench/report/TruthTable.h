// SPDX-License-Identifier: Apache-2.0
// The true objects, for drawing.
#pragma once

#include <veskar-host/Projection.h>

#include "HostLibrary.h"
#include "report/TrackTable.h"
#include "report/Words.h"

namespace Workbench {

/// @param frames the truth of a recording
/// @param camera for the image positions
/// @param words receives the classes
/// @param start time 0 of the report, s
/// @return {"time": column, "table": see TrackTable}
Json truthTable(const std::vector<TruthFrame>& frames, const Projection& camera, Words& words,
                double start);

}  // namespace Workbench
