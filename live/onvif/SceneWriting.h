// SPDX-License-Identifier: Apache-2.0
// From scenes to element trees.
#pragma once

#include "live/onvif/ElementTree.h"
#include "live/onvif/SceneDescription.h"

namespace Veskar::Live {

/// Writes a scene in the order of ONVIF's schema. Image positions are rounded to 1e-6, lengths to
/// 1e-3, angles to 1e-4, places on Earth to 1e-8 degrees.
///
/// @param scene frames
/// @param tree receives them; borrows the scene
void writeScene(const Scene& scene, ElementTree& tree);

}  // namespace Veskar::Live
