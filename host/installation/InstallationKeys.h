// SPDX-License-Identifier: Apache-2.0
// The keys of an installation and of the header of a recording.
#pragma once

#include "host/installation/RecordingHeader.h"
#include "host/json/Keys.h"

#include <array>

namespace Veskar::Host::Internal {

inline constexpr std::array cameraKeys{
    Key{"bdc", Wanted::Boolean},
    Key{"rotation", Wanted::Object},
    Key{"resolution", Wanted::Array, isRequired, {1.0, 65536.0}, 2},
    Key{"sensorOffset", Wanted::Array, isRequired, anyNumber, 2},
    Key{"imageToRadiansPolynomial", Wanted::Array, isRequired, anyNumber, 4},
    Key{"radiansToImagePolynomial", Wanted::Array, isRequired, anyNumber, 4},
    Key{"fov", Wanted::Array, isRequired, anyNumber, 2},
    Key{"position", Wanted::Array, isRequired, anyNumber, 3},
};

inline constexpr std::array rotationKeys{
    Key{"pitch"},
    Key{"yaw"},
    Key{"roll"},
};

inline constexpr std::array radarKeys{
    Key{"position", Wanted::Array, isRequired, anyNumber, 3},
    Key{"rotation", Wanted::Object},
    Key{"rangeStd", Wanted::Number, isRequired, notTiny},
    Key{"azimuthStd", Wanted::Number, isRequired, {leastPositive, 90.0}},
    Key{"velocityStd", Wanted::Number, isRequired, notTiny},
    Key{"fieldOfView", Wanted::Number, isOptional, {leastPositive, 360.0}},
    Key{"maximumRange", Wanted::Number, isOptional, notTiny},
};

inline constexpr std::array siteKeys{
    Key{"latitude", Wanted::Number, isRequired, {-90.0, 90.0}},
    Key{"longitude", Wanted::Number, isRequired, {-180.0, 180.0}},
    Key{"heading", Wanted::Number, isRequired, {-360.0, 360.0}},
};

inline constexpr std::array installationKeys{
    Key{"camera", Wanted::Object},
    Key{"radar", Wanted::Object},
    Key{"site", Wanted::Object, isOptional},
};

inline constexpr std::array headerKeys{
    Key{"format", Wanted::Text},
    Key{"version", Wanted::Integer, isRequired, {recordingVersion, recordingVersion}},
    Key{"name", Wanted::Text, isOptional},
    Key{"origin", Wanted::Text, isOptional},
    Key{"licence", Wanted::Text, isOptional},
    Key{"camera", Wanted::Object},
    Key{"radar", Wanted::Object},
    Key{"site", Wanted::Object, isOptional},
    Key{"epoch", Wanted::Number, isOptional},
    // Its upper limit, 2^63 - 1, is no number of this type: the reader states it.
    Key{"seed", Wanted::Integer, isOptional, fromZero},
    Key{"truth", Wanted::Text, isOptional},
};

}  // namespace Veskar::Host::Internal
