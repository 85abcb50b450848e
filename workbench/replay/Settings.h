// SPDX-License-Identifier: Apache-2.0
// The configuration, parameters and camera of a run.
#pragma once

#include <veskar-host/HostParameters.h>
#include <veskar/Config.h>

#include "recording/Recording.h"
#include "replay/Provenance.h"

#include <string>
#include <vector>

namespace Workbench {

/// The configuration and parameters of a run.
struct Settings {
    Veskar::Config config;
    HostParameters parameters;
};

/// Reads the settings.
///
/// @param path a configuration file; empty: the shipped configuration
/// @param changes "KEY=VALUE": a parameter of the host, or a key of the configuration with its
///                section before it ("veskarModule.gatingDistance"); the value is JSON
/// @param warn receives the values that the fusion does not use as written
/// @return the settings
/// @throw InputError why they are rejected
Settings readSettings(const std::string& path, const std::vector<std::string>& changes,
                      const Provenance::Warn& warn);

/// @param header header of a recording
/// @param cameraPath a camera to use instead of the recording's; empty: the recording's
/// @return the header with that camera
/// @throw InputError the fault of the camera
RecordingHeader withCamera(RecordingHeader header, const std::string& cameraPath);

/// @param header header of a recording
/// @param path an installation to use instead of the recording's, as `veskar calibrate` writes it;
///             empty: the recording's
/// @return the header with that installation
/// @throw InputError the fault of the installation
RecordingHeader withInstallation(RecordingHeader header, const std::string& path);

}  // namespace Workbench
