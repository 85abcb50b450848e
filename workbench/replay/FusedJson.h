// SPDX-License-Identifier: Apache-2.0
// Writes the header of fused tracks.
#pragma once

#include "recording/Recording.h"

#include <string>

namespace Workbench {

/// Version of the fused-track format.
constexpr int fusedVersion = 1;

/// @param header the recording's header, with the camera that was used
/// @param configuration JSON text of the configuration that was used
/// @param constants result of HostParameters::toJson for the parameters that were used
/// @return the header line, with line end
std::string fusedHeaderLine(const RecordingHeader& header, const std::string& configuration,
                            const std::string& constants);

}  // namespace Workbench
