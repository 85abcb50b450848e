// SPDX-License-Identifier: Apache-2.0
// Checks of scenarios and of the header of a recording, which share the installation.
#pragma once

#include "check/Rules.h"

namespace Workbench {

/// @param document a scenario
/// @param findings receives all faults and suspicious values
void checkScenario(const LocatedValue& document, Findings& findings);

/// @param header the first line of a recording
/// @param findings receives all faults and suspicious values
void checkHeader(const LocatedValue& header, Findings& findings);

}  // namespace Workbench
