// SPDX-License-Identifier: Apache-2.0
// Imports logs of ONVIF scene descriptions.
#pragma once

#include "import/ImportedRecording.h"

#include <string>
#include <vector>

namespace Workbench {

/// What is imported.
struct OnvifOptions {
    std::vector<std::string> logs;     ///< what one publisher sent each, XML or JSON; "-" is one
    std::string installation;          ///< a recording, or an object with camera and radar
    std::vector<std::string> video;    ///< modules that are the camera's
    std::vector<std::string> radar;    ///< modules that are the radar's
    std::vector<std::string> ignored;  ///< modules that are left out
};

/// JSON objects stand one on a line, as MQTT publishes them; XML documents one after the other,
/// with any line ends. Modules that are not named are told apart by what their first object states:
/// a shape in the image, or only a place in space. Frames of all logs are ordered by their times,
/// and are taken to have arrived without delay; the time of the first one, without its fraction of
/// a second, becomes the epoch.
///
/// @param options what to import
/// @return the recording
/// @throw InputError the fault of an input, that it has no frame, or that the program was built
///                   without its live part
ImportedRecording importOnvif(const OnvifOptions& options);

}  // namespace Workbench
