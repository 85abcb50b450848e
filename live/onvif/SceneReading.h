// SPDX-License-Identifier: Apache-2.0
// From element trees to scenes.
#pragma once

#include "live/onvif/ElementTree.h"
#include "live/onvif/LeftOut.h"
#include "live/onvif/SceneDescription.h"

namespace Veskar::Live {

/// @param tree of a document: frames, bare or in a VideoAnalytics, bare or in a MetadataStream
/// @param leftOut counts what a scene has no place for
/// @return the frames
/// @throw Host::InputError the first fault, as "Frame[0].Object[3].ObjectId: missing"
Scene readScene(const ElementTree& tree, LeftOut& leftOut);

}  // namespace Veskar::Live
