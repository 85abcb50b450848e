// SPDX-License-Identifier: Apache-2.0
// Checks a configuration of the fusion.
#pragma once

#include "check/Finding.h"
#include "check/LocatedJson.h"

namespace Workbench {

/// @param document a document for Veskar::Config::parse
/// @param findings receives everything that is wrong with it or suspicious
void checkConfiguration(const LocatedValue& document, Findings& findings);

}  // namespace Workbench
