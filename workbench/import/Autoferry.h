// SPDX-License-Identifier: Apache-2.0
// Imports the public Autoferry sensor fusion data set (CC0 1.0). docs/real-data.md tells what of
// the result was measured and what is derived.
#pragma once

#include "import/ImportedRecording.h"

#include <string>

namespace Workbench {

/// What an import of Autoferry can be told.
struct AutoferryOptions {
    std::string detections;   ///< *_detections.json
    std::string groundTruth;  ///< *_groundTruth.json
    /// Bearing (degrees clockwise from north) that becomes the device's forward direction. The
    /// image's seam lies behind it. The default keeps it away from where the boats of scenarios 13
    /// and 16 spend their time.
    double forward = -32.0;
};

/// @param options what to import
/// @return the recording
/// @throw InputError what is wrong with the files
ImportedRecording importAutoferry(const AutoferryOptions& options);

}  // namespace Workbench
