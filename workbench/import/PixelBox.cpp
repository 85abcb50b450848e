// SPDX-License-Identifier: Apache-2.0
#include "import/PixelBox.h"

#include <veskar/ImagePlane.h>

namespace Workbench {

ImageBox boxOfPixels(const Eigen::Vector4d& pixels, const Veskar::Camera& camera) {
    // The library has u, width, v of the lower edge, height.
    Eigen::Vector4d box(pixels[0], pixels[2] - pixels[0], pixels[3], pixels[1] - pixels[3]);
    Veskar::transformScreenToCamera(box, camera);
    return {box[0], box[2], box[0] + box[1], box[2] + box[3]};
}

}  // namespace Workbench
