// SPDX-License-Identifier: Apache-2.0
// The keys of a scenario. docs/scenarios.md describes them.
#pragma once

#include "HostLibrary.h"
#include "host/json/Keys.h"

#include <array>
#include <cstddef>

namespace Workbench {

/// Objects of a scenario, those of its crowds included.
constexpr std::size_t mostObjects = 10000;

inline constexpr std::array scenarioKeys{
    Key{"name", Wanted::Text},
    Key{"description", Wanted::Text, isOptional},
    Key{"duration", Wanted::Number, isRequired, {leastPositive, 1e6}},
    Key{"camera", Wanted::Object},
    Key{"radar", Wanted::Object},
    Key{"site", Wanted::Object, isOptional},
    Key{"videoSensor", Wanted::Object, isOptional},
    Key{"radarSensor", Wanted::Object, isOptional},
    Key{"walls", Wanted::Array, isOptional},
    Key{"objects", Wanted::Array},
};

/// Those that both sensors have.
inline constexpr std::array sensorKeys{
    Key{"rate", Wanted::Number, isOptional, {0.01, 1000.0}},
    Key{"phase", Wanted::Number, isOptional, fromZero},
    Key{"latency", Wanted::Number, isOptional, {0.0, 10.0}},
    Key{"jitter", Wanted::Number, isOptional, {0.0, 10.0}},
    Key{"timestampError", Wanted::Number, isOptional, {-10.0, 10.0}},
    Key{"detectionProbability", Wanted::Number, isOptional, {0.0, 1.0}},
    Key{"maximumRange", Wanted::Number, isOptional, notTiny},
    Key{"falseAlarms", Wanted::Number, isOptional, {0.0, 100.0}},
    Key{"bursts", Wanted::Number, isOptional, {0.0, 6000.0}},
    Key{"burstDuration", Wanted::Number, isOptional, notTiny},
    Key{"idChurn", Wanted::Number, isOptional, {0.0, 6000.0}},
    Key{"emptyFrames", Wanted::Boolean, isOptional},
    Key{"mountingError", Wanted::Object, isOptional},
    Key{"outages", Wanted::Array, isOptional},
    Key{"persistent", Wanted::Array, isOptional},
};

inline constexpr std::array videoSensorKeys =
    joined(sensorKeys, std::array{
                           Key{"minimumBoxHeight", Wanted::Number, isOptional, {0.0, 2.0}},
                           Key{"edgeStd", Wanted::Number, isOptional, {leastPositive, 1.0}},
                           Key{"footStd", Wanted::Number, isOptional, {0.0, 1.0}},
                           Key{"footTime", Wanted::Number, isOptional, notTiny},
                           Key{"classConfusion", Wanted::Number, isOptional, {0.0, 1.0}},
                           Key{"occlusionLimit", Wanted::Number, isOptional, {0.0, 1.0}},
                       });

inline constexpr std::array radarSensorKeys =
    joined(sensorKeys, std::array{
                           Key{"rangeStd", Wanted::Number, isOptional, notTiny},
                           Key{"azimuthStd", Wanted::Number, isOptional, {leastPositive, 90.0}},
                           Key{"reflectionStd", Wanted::Number, isOptional, {0.0, 2.0}},
                           Key{"reflectionTime", Wanted::Number, isOptional, notTiny},
                           Key{"rangeResolution", Wanted::Number, isOptional, fromZero},
                           Key{"azimuthResolution", Wanted::Number, isOptional, {0.0, 180.0}},
                           Key{"hiddenFactor", Wanted::Number, isOptional, {0.0, 1.0}},
                           Key{"minimumRadialSpeed", Wanted::Number, isOptional, fromZero},
                       });

inline constexpr std::array mountingErrorKeys{
    Key{"yaw", Wanted::Number, isOptional},
    Key{"pitch", Wanted::Number, isOptional},
    Key{"roll", Wanted::Number, isOptional},
    Key{"height", Wanted::Number, isOptional},
};

inline constexpr std::array outageKeys{
    Key{"from", Wanted::Number, isRequired, fromZero},
    Key{"to", Wanted::Number, isRequired, fromZero},
};

inline constexpr std::array wallKeys{
    Key{"from", Wanted::Array, isRequired, anyNumber, 2},
    Key{"to", Wanted::Array, isRequired, anyNumber, 2},
};

inline constexpr std::array persistentKeys{
    Key{"position", Wanted::Array, isRequired, anyNumber, 2},
    Key{"probability", Wanted::Number, isOptional, {0.0, 1.0}},
    Key{"wander", Wanted::Number, isOptional, fromZero},
    Key{"class", Wanted::Text, isOptional},
    Key{"from", Wanted::Number, isOptional, fromZero},
    Key{"to", Wanted::Number, isOptional, fromZero},
};

inline constexpr std::array objectKeys{
    Key{"class", Wanted::Text},
    Key{"size", Wanted::Array, isOptional, aboveZero, 3},
    Key{"color", Wanted::Text, isOptional},
    Key{"upperClothingColor", Wanted::Text, isOptional},
    Key{"lowerClothingColor", Wanted::Text, isOptional},
    Key{"mode", Wanted::Text, isOptional},
    Key{"path", Wanted::Array, isOptional},
    Key{"area", Wanted::Array, isOptional, anyNumber, 4},
    Key{"count", Wanted::Integer, isOptional, {1.0, mostObjects}},
    Key{"start", Wanted::Number, isOptional, fromZero},
    Key{"pause", Wanted::Number, isOptional, fromZero},
    // Or an array of the least and the greatest.
    Key{"speed", Wanted::Number, isRequired, {leastPositive, 200.0}},
};

}  // namespace Workbench
