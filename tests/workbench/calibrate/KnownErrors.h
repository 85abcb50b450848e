// SPDX-License-Identifier: Apache-2.0
// Simulated recordings whose installation is wrong by known errors.
#pragma once

#include "calibrate/Calibration.h"
#include "calibrate/CalibrationInput.h"
#include "simulate/scenario/Scenario.h"

#include <functional>
#include <string>

namespace VeskarTest {

/// Changes a scenario before it is simulated.
using ScenarioChange = std::function<void(Workbench::Scenario&)>;

/// A simulated recording.
struct KnownErrors {
    Workbench::RecordingHeader header;
    std::vector<Workbench::SensorFrame> frames;

    /// @return its tracks, ready to be calibrated with
    Workbench::CalibrationScene scene() const;
};

/// @param scenario name of a shipped one
/// @param seconds its duration
/// @param change applied to it
/// @return the recording
KnownErrors simulated(const std::string& scenario, double seconds, const ScenarioChange& change);

/// @return deviation of an estimate from the truth
double errorOf(const Workbench::CalibrationResult& result, Workbench::MountingParameter parameter,
               double truth);

/// @return the installation that the shipped perimeter scene states
Workbench::Installation perimeterInstallation();

/// @return what `veskar calibrate` estimates without being told
Workbench::FreeParameters usualParameters();

}  // namespace VeskarTest
