// SPDX-License-Identifier: Apache-2.0
// The first line of fused tracks.
#pragma once

#include "recording/Recording.h"

#include <string>

namespace Workbench {

/// Version of the fused-track format.
constexpr int fusedVersion = 1;

/// @param header the recording's header, with the camera that was used
/// @param configuration the configuration that was used, JSON text
/// @param constants what HostParameters::toJson says of the host's constants that were used
/// @return the first line, with line end
std::string fusedHeaderLine(const RecordingHeader& header, const std::string& configuration,
                            const std::string& constants);

}  // namespace Workbench
