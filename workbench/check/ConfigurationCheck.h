// SPDX-License-Identifier: Apache-2.0
// Checks a configuration of the fusion.
#pragma once

#include <veskar/ConfigFault.h>

#include "check/Finding.h"
#include "check/LocatedJson.h"

#include <vector>

namespace Workbench {

/// @param faults wrong keys and types, as found by the library
/// @param document the same document; nothing when it is not valid JSON
/// @param findings receives the faults, and wrong or suspicious values
void checkConfiguration(const std::vector<Veskar::ConfigFault>& faults,
                        const LocatedValue& document, Findings& findings);

}  // namespace Workbench
