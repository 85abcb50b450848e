// SPDX-License-Identifier: Apache-2.0
// The formats of ONVIF, which the live part knows.
#pragma once

#include "export/Formats.h"

#include <vector>

namespace Workbench {

/// @return ONVIF's formats; a program without its live part says so when one is opened
std::vector<ExportFormat> onvifFormats();

}  // namespace Workbench
