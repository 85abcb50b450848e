// SPDX-License-Identifier: Apache-2.0
// Imports tracking labels and calibration in the public KITTI format. docs/real-data.md states
// which parts of the result are labelled and which are derived.
#pragma once

#include "import/ImportedRecording.h"

#include <cstdint>
#include <string>

namespace Workbench {

/// Options of an import of KITTI.
struct KittiOptions {
    std::string labels;                 ///< label_02/NNNN.txt
    std::string calibration;            ///< calib/NNNN.txt
    int width = 1242;                   ///< of the images, pixels
    int height = 375;                   ///< of the images, pixels
    double frameRate = 10.0;            ///< frames per second
    double cameraHeight = 1.65;         ///< above the road, m
    double rangeStd = 0.3;              ///< noise of the simulated radar, m
    double azimuthStd = 1.0;            ///< noise of the simulated radar, degrees
    double detectionProbability = 0.9;  ///< of the simulated radar
    std::uint64_t seed = 1;             ///< of the simulated radar's noise and missed detections
    /// Whether the labels are all that the sensors can see, as they are of sensors made from them.
    bool isTruthComplete = true;
};

/// @param options what to import
/// @return the recording
/// @throw InputError the fault of the files
ImportedRecording importKitti(const KittiOptions& options);

}  // namespace Workbench
