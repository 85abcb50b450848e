// SPDX-License-Identifier: Apache-2.0
// The sensors of a device and their mounting.
#pragma once

#include <veskar-host/CameraSetup.h>
#include <veskar-host/ExportHost.h>
#include <veskar-host/RadarSetup.h>
#include <veskar-host/Site.h>

#include <optional>
#include <string>

namespace Veskar::Host {

/// The sensors of a device, their poses and the device's site.
struct VESKAR_HOST_EXPORT Installation {
    CameraSetup camera;        ///< the video sensor
    RadarSetup radar;          ///< the radar
    std::optional<Site> site;  ///< site of the device, when known

    /// Reads an installation from JSON: an object with the members "camera", "radar" and optionally
    /// "site", or the header of a recording. docs/recording-format.md describes them.
    ///
    /// @param path a file with the object and nothing behind it, or a recording
    /// @return the installation
    /// @throw InputError the fault, behind "FILE: "
    static Installation parse(const std::string& path);
    /// As above.
    /// @param text the object and nothing behind it, or the beginning of a recording
    /// @return the installation
    /// @throw InputError the fault, as "camera.position: missing"
    static Installation parseString(const std::string& text);
};

}  // namespace Veskar::Host
