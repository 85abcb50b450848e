// SPDX-License-Identifier: Apache-2.0
// Checks a configuration of the fusion.
#pragma once

#include <veskar/ConfigFault.h>

#include "check/Finding.h"
#include "check/LocatedJson.h"

#include <vector>

namespace Workbench {

/// @param faults what the library finds wrong with the keys and types of a document
/// @param document the same document; nothing when it is no JSON
/// @param findings receives the faults, and what is wrong or suspicious about the values
void checkConfiguration(const std::vector<Veskar::ConfigFault>& faults,
                        const LocatedValue& document, Findings& findings);

}  // namespace Workbench
