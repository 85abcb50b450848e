// SPDX-License-Identifier: Apache-2.0
#include <veskar/Camera.h>
#include <veskar/ImagePlane.h>

#include <cmath>
#include <stdexcept>

namespace Veskar {

void transformCameraToScreen(Eigen::Vector4d& box, const Camera& camera) {
    const Eigen::Vector2d size = camera.getResolution().cast<double>();
    box[0] = (box[0] + 1.0) * size[0] * 0.5;
    box[1] = size[0] * box[1] * 0.5;
    box[2] = -((box[2] - 1.0) * size[1]) * 0.5;
    box[3] = -(box[3] * size[1]) * 0.5;
}

void transformScreenToCamera(Eigen::Vector4d& box, const Camera& camera) {
    const Eigen::Vector2d size = camera.getResolution().cast<double>();
    box[0] = 2.0 * box[0] / size[0] - 1.0;
    box[1] = 2.0 * box[1] / size[0];
    box[2] = 1.0 - 2.0 * box[2] / size[1];
    box[3] = -2.0 * box[3] / size[1];
}

bool isInsideImage(double a, double b) {
    return -1.0 <= a && a <= 1.0 && -1.0 <= b && b <= 1.0;
}

bool isOutsideImage(double a, double b) {
    return !isInsideImage(a, b);
}

Eigen::Vector2d intersectionWithImageBorder(double a1, double b1, double a2, double b2) {
    if (isInsideImage(a1, b1) || isOutsideImage(a2, b2)) {
        throw std::runtime_error(
            "The first point must be outside and the second point must be inside the image.");
    }
    if (std::abs(a2 - a1) < 1e-06) {
        const double border = b1 < -1.0 ? -1.0 : b1 > 1.0 ? 1.0 : 0.0;
        return {border, a1};
    }
    const double slope = (b2 - b1) / (a2 - a1);
    const double intercept = b1 - a1 * slope;

    // The lower or upper border, when the point comes from beyond it; otherwise what is given.
    const auto horizontalBorderOr = [&](const Eigen::Vector2d& otherwise) -> Eigen::Vector2d {
        if (b1 < -1.0) {
            return {-1.0, (-1.0 - intercept) / slope};
        }
        if (b1 > 1.0) {
            return {1.0, (1.0 - intercept) / slope};
        }
        return otherwise;
    };
    const auto verticalBorder = [&](double side, double crossing) -> Eigen::Vector2d {
        const Eigen::Vector2d meeting(crossing, side);
        return -1.0 <= crossing && crossing <= 1.0 ? meeting : horizontalBorderOr(meeting);
    };
    if (a1 < -1.0) {
        return verticalBorder(-1.0, intercept - slope);
    }
    if (a1 > 1.0) {
        return verticalBorder(1.0, slope + intercept);
    }
    return horizontalBorderOr(Eigen::Vector2d(0.0, 0.0));
}

}  // namespace Veskar
