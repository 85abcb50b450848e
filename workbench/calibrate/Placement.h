// SPDX-License-Identifier: Apache-2.0
// What is estimated of an installation.
#pragma once

#include "recording/Recording.h"

#include <array>
#include <cstddef>

#include <Eigen/Core>

namespace Workbench {

/// The values that can be estimated, each as true minus stated.
enum class MountingParameter {
    CameraYaw,     ///< relative to the radar, radians to the left
    CameraPitch,   ///< radians downward
    CameraRoll,    ///< radians, right side down
    CameraHeight,  ///< m
    Lag,           ///< delay of the radar's time stamps against video's, mid-recording, s
    Drift,         ///< growth of the lag, s/s
    AzimuthScale,  ///< true over reported azimuth, minus 1
    RadarYaw,      ///< radians to the left
    RadarForward,  ///< position along the device's x axis, m
    RadarLeft,     ///< position along the device's y axis, m
    FocalScale,    ///< true over stated image radius of an angle, minus 1
    /// How far video's tracks fall behind objects that accelerate in the image, per acceleration,
    /// beyond the usual, s^2: a property of its tracker, estimated so that it does not pass for
    /// height and pitch.
    VideoSmoothing,
    /// How much deeper than usual behind its reflection the middle of a long object lies, as a
    /// share: a property of what drives there and of the radar, shared by all pairs.
    ReflectionDepth
};
constexpr std::size_t parameterCount = 13;

/// What is known of a parameter before any data, and how it is presented.
struct ParameterTraits {
    const char* name;    ///< in answers and options
    const char* unit;    ///< of `scale` times the value
    double scale;        ///< presented over internal value
    double priorStd;     ///< of the stated value; weak
    double usefulStd;    ///< a larger deviation tells nothing of use
    double negligible;   ///< smaller values are within the accuracy of the model
    double modelStd;     ///< of the model itself, which more data does not reduce
    bool isAskedFor;     ///< estimated without being named
    const char* remedy;  ///< what lets the data tell it
};

/// @return the traits, in internal units
const ParameterTraits& traitsOf(MountingParameter parameter);
/// @return all parameters, in their order
const std::array<MountingParameter, parameterCount>& allParameters();
/// @return whether a parameter is one of the model alone: always estimated, never corrected
constexpr bool isOfModel(MountingParameter parameter) {
    return parameter == MountingParameter::VideoSmoothing ||
           parameter == MountingParameter::ReflectionDepth;
}

/// A value for each parameter.
using Placement = Eigen::Matrix<double, static_cast<int>(parameterCount), 1>;

/// @return the place of a parameter in a Placement
constexpr Eigen::Index indexOf(MountingParameter parameter) {
    return static_cast<Eigen::Index>(parameter);
}

/// @param stated an installation
/// @param placement its errors; lag, drift and azimuth scale are not part of an installation
/// @return the true installation
Installation placed(const Installation& stated, const Placement& placement);

}  // namespace Workbench
