// SPDX-License-Identifier: Apache-2.0
// Imports the public Autoferry sensor fusion data set (CC0 1.0). docs/real-data.md states which
// parts of the result are measured and which are derived.
#pragma once

#include "import/ImportedRecording.h"

#include <string>

namespace Workbench {

/// Options of an import of Autoferry.
struct AutoferryOptions {
    std::string detections;   ///< *_detections.json
    std::string groundTruth;  ///< *_groundTruth.json
    /// Bearing (degrees clockwise from north) of the device's forward direction. The image's seam
    /// lies behind it. The default keeps the seam away from the boats of scenarios 13 and 16.
    double forward = -32.0;
};

/// @param options what to import
/// @return the recording
/// @throw InputError the fault of the files
ImportedRecording importAutoferry(const AutoferryOptions& options);

}  // namespace Workbench
