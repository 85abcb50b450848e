// SPDX-License-Identifier: Apache-2.0
#include "check/Hypothesis.h"

#include <veskar-host/Projection.h>

#include <algorithm>
#include <cmath>

namespace Workbench {
namespace {

/// Scales both axes of a box about the origin and moves it.
ImageBox moved(const ImageBox& box, const Eigen::Vector2d& scale, const Eigen::Vector2d& offset) {
    const double v1 = scale[1] * box.bottom + offset[1];
    const double v2 = scale[1] * box.top + offset[1];
    return {scale[0] * box.left + offset[0], std::min(v1, v2), scale[0] * box.right + offset[0],
            std::max(v1, v2)};
}

}  // namespace

ImageBox readAs(BoxForm form, const ImageBox& box, const std::array<int, 2>& resolution) {
    switch (form) {
        case BoxForm::Stated:
            return box;
        case BoxForm::Downward:
            return moved(box, {1.0, -1.0}, {0.0, 0.0});
        case BoxForm::Unit:
            return moved(box, {2.0, 2.0}, {-1.0, -1.0});
        case BoxForm::UnitDownward:
            return moved(box, {2.0, -2.0}, {-1.0, 1.0});
        default:
            return moved(box, {2.0 / resolution[0], -2.0 / resolution[1]}, {-1.0, 1.0});
    }
}

double readAs(AzimuthForm form, double azimuth) {
    switch (form) {
        case AzimuthForm::Stated:
            return azimuth;
        case AzimuthForm::Mirrored:
            return -azimuth;
        case AzimuthForm::Radians:
            return degrees(azimuth);
        case AzimuthForm::MirroredRadians:
            return -degrees(azimuth);
        default:
            return 90.0 - azimuth;
    }
}

double readAs(DirectionForm form, double direction) {
    switch (form) {
        case DirectionForm::Stated:
            return direction;
        case DirectionForm::Turned:
            return direction + 180.0;
        case DirectionForm::Mirrored:
            return -direction;
        default:
            return degrees(direction);
    }
}

std::optional<CameraSetup> readAs(AngleForm form, const CameraSetup& camera) {
    if (form == AngleForm::Stated) {
        return camera;
    }
    CameraSetup other = camera;
    Mounting& mounting = other.mounting;
    const double largest =
        std::max({std::abs(mounting.yaw), std::abs(mounting.pitch), std::abs(mounting.roll)});
    // In radians the largest angle is above one whole degree and at most a full turn.
    if (!(largest > radians(1.0)) || largest > radians(360.0)) {
        return std::nullopt;
    }
    mounting.yaw = degrees(mounting.yaw);
    mounting.pitch = degrees(mounting.pitch);
    mounting.roll = degrees(mounting.roll);
    return other;
}

}  // namespace Workbench
