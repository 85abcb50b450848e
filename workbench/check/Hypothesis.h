// SPDX-License-Identifier: Apache-2.0
// Conventions that a producer of recordings may have used instead of those of the format.
#pragma once

#include "recording/Recording.h"

#include <array>
#include <optional>

namespace Workbench {

/// Readings of the numbers of a box.
enum class BoxForm {
    Stated,        ///< -1..1, v upward
    Downward,      ///< -1..1, v downward
    Unit,          ///< 0..1, v upward
    UnitDownward,  ///< 0..1, v downward
    Pixels         ///< pixels, rows downward
};
inline constexpr std::array boxForms{BoxForm::Stated, BoxForm::Downward, BoxForm::Unit,
                                     BoxForm::UnitDownward, BoxForm::Pixels};

/// Readings of an azimuth.
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

/// Readings of a direction of motion.
enum class DirectionForm {
    Stated,    ///< degrees, clockwise from forward, where the object moves to
    Turned,    ///< the same, where it comes from
    Mirrored,  ///< degrees, counter-clockwise from forward
    Radians    ///< radians, clockwise from forward
};
inline constexpr std::array directionForms{DirectionForm::Stated, DirectionForm::Turned,
                                           DirectionForm::Mirrored, DirectionForm::Radians};

/// Readings of the angles of the camera's mounting.
enum class AngleForm {
    Stated,  ///< degrees
    Radians
};
inline constexpr std::array angleForms{AngleForm::Stated, AngleForm::Radians};

/// @param box as reported; its top and bottom may be interchanged
/// @param form reading of its numbers
/// @param resolution of the image, pixels
/// @return the box in the format's convention
ImageBox readAs(BoxForm form, const ImageBox& box, const std::array<int, 2>& resolution);

/// @param form reading of the azimuth
/// @param azimuth as reported
/// @return degrees clockwise from forward
double readAs(AzimuthForm form, double azimuth);

/// @param form reading of the direction
/// @param direction as reported
/// @return degrees clockwise from forward
double readAs(DirectionForm form, double direction);

/// @param form reading of its mounting angles
/// @param camera as stated in the header
/// @return the camera with angles in degrees; nothing when the angles cannot be read like this
std::optional<CameraSetup> readAs(AngleForm form, const CameraSetup& camera);

}  // namespace Workbench
