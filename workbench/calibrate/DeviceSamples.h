// SPDX-License-Identifier: Apache-2.0
// The samples that a device's fusion sends for calibration, as a scene to be calibrated with.
#pragma once

#include <veskar/AutocalibrationHandler.h>

#include "calibrate/Calibration.h"

#include <string>
#include <vector>

namespace Workbench {

/// @param datagram as AutocalibrationHandler sends it
/// @return its samples
/// @throw InputError when it is none
Veskar::CalibrationPayload parseSamples(const std::string& datagram);

/// A sample states column and row of an object in the image and its range, but no azimuth of the
/// radar. The direction is taken from the column, so that the bearings of both sensors agree
/// whatever the mounting is: only rows tell something, of pitch, roll and height. Ranges are those
/// of HostAdapter, from the stated position of the camera. The objects are people.
///
/// @param payloads in the order of arrival
/// @param stated the installation that the fusion of the device was given
/// @param placement assumed errors of it
/// @return their scene, with a radar at the stated place of the camera
CalibrationScene sceneOf(const std::vector<Veskar::CalibrationPayload>& payloads,
                         const Installation& stated, const Placement& placement);

/// @return what samples can tell: pitch, roll and height of the camera
FreeParameters toldBySamples();

/// As the function for recordings. Directions are taken from the columns again when pitch and roll
/// are known better.
///
/// @param payloads in the order of arrival
/// @param stated the installation that the fusion of the device was given
/// @param asked some of toldBySamples
/// @return the answer; its errors of bearing are NaN
CalibrationResult calibrate(const std::vector<Veskar::CalibrationPayload>& payloads,
                            const Installation& stated, const FreeParameters& asked);

}  // namespace Workbench
