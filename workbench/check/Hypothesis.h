// SPDX-License-Identifier: Apache-2.0
// Conventions that a producer of recordings may have followed instead of the format's.
#pragma once

#include "recording/Recording.h"

#include <array>
#include <optional>

namespace Workbench {

/// What the numbers of a box mean.
enum class BoxForm {
    Stated,        ///< -1..1, v upward
    Downward,      ///< -1..1, v downward
    Unit,          ///< 0..1, v upward
    UnitDownward,  ///< 0..1, v downward
    Pixels         ///< pixels, rows downward
};
inline constexpr std::array boxForms{BoxForm::Stated, BoxForm::Downward, BoxForm::Unit,
                                     BoxForm::UnitDownward, BoxForm::Pixels};

/// What an azimuth means.
enum class AzimuthForm {
    Stated,           ///< degrees, clockwise from forward
    Mirrored,         ///< degrees, counter-clockwise from forward
    Radians,          ///< radians, clockwise from forward
    MirroredRadians,  ///< radians, counter-clockwise from forward
    FromTheRight      ///< degrees, counter-clockwise from the right-hand side
};
inline constexpr std::array azimuthForms{AzimuthForm::Stated, AzimuthForm::Mirrored,
                                         AzimuthForm::Radians, AzimuthForm::MirroredRadians,
                                         AzimuthForm::FromTheRight};

/// What a direction of motion means.
enum class DirectionForm {
    Stated,    ///< degrees, clockwise from forward, where the object goes
    Turned,    ///< the same, where it comes from
    Mirrored,  ///< degrees, counter-clockwise from forward
    Radians    ///< radians, clockwise from forward
};
inline constexpr std::array directionForms{DirectionForm::Stated, DirectionForm::Turned,
                                           DirectionForm::Mirrored, DirectionForm::Radians};

/// What the angles of the camera's mounting mean.
enum class AngleForm {
    Stated,  ///< degrees
    Radians
};
inline constexpr std::array angleForms{AngleForm::Stated, AngleForm::Radians};

/// @param box as reported; its top and bottom may have changed places
/// @param form what its numbers mean
/// @param resolution of the image, pixels
/// @return the box as the format wants it
ImageBox readAs(BoxForm form, const ImageBox& box, const std::array<int, 2>& resolution);

/// @param form what the azimuth means
/// @param azimuth as reported
/// @return degrees clockwise from forward
double readAs(AzimuthForm form, double azimuth);

/// @param form what the direction means
/// @param direction as reported
/// @return degrees clockwise from forward
double readAs(DirectionForm form, double direction);

/// @param form what the angles of its mounting mean
/// @param camera as the header states it
/// @return the camera with degrees; nothing when the angles cannot have this meaning
std::optional<CameraSetup> readAs(AngleForm form, const CameraSetup& camera);

}  // namespace Workbench
