// SPDX-License-Identifier: Apache-2.0
// Boxes in pixels, as most programs state them.
#pragma once

#include <veskar-host/ImageBox.h>
#include <veskar/Camera.h>

#include "HostLibrary.h"

namespace Workbench {

/// @param pixels left, top, right and bottom, from the left upper corner of the image
/// @param camera its resolution counts
/// @return the box in the normalised image
ImageBox boxOfPixels(const Eigen::Vector4d& pixels, const Veskar::Camera& camera);

}  // namespace Workbench
