// SPDX-License-Identifier: Apache-2.0
// The header of a recording and its parts as JSON.
#pragma once

#include "io/DocumentValue.h"
#include "recording/Recording.h"

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// JSON whose members keep the order in which they were written.
using Json = nlohmann::ordered_json;

/// @param fields a camera as Veskar::Camera::parse takes it; integers may stand for reals
/// @return the camera
/// @throw InputError what is wrong
CameraSetup readCamera(const Fields& fields);
/// @param fields a radar
/// @return the radar
/// @throw InputError what is wrong
RadarSetup readRadar(const Fields& fields);
/// @param fields a site
/// @return the site
/// @throw InputError what is wrong
Site readSite(const Fields& fields);
/// @param fields the first line of a recording
/// @return the header
/// @throw InputError what is wrong
RecordingHeader readHeader(const Fields& fields);

/// @param camera a camera
/// @return the object that Veskar::Camera::parse takes
Json toJson(const CameraSetup& camera);
/// @param radar a radar
/// @return its object
Json toJson(const RadarSetup& radar);
/// @param site a site
/// @return its object
Json toJson(const Site& site);
/// @param header a header
/// @return the first line
Json toJson(const RecordingHeader& header);

}  // namespace Workbench
