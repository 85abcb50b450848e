// SPDX-License-Identifier: Apache-2.0
// The contents of a recording: the installation and the frames of sensors and truth.
// docs/recording-format.md describes the text format.
#pragma once

#include <veskar-host/SensorFrame.h>

#include "HostLibrary.h"
#include "host/installation/RecordingHeader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// The true state of an object. Its position is the point of its footprint nearest to the device.
struct TruthObject {
    std::int32_t id = 0;                    ///< of the object
    std::string className = "unknown";      ///< see Vocabulary.h
    Eigen::Vector2d position{0.0, 0.0};     ///< the reference point, device frame, m
    Eigen::Vector2d velocity{0.0, 0.0};     ///< device frame, m/s
    std::optional<Eigen::Vector3d> size;    ///< length, width, height, m
    std::optional<Eigen::Vector2d> centre;  ///< centre of the footprint, device frame, m
    bool inVideo = true;                    ///< inside the camera's field of view
    bool inRadar = true;                    ///< inside the radar's field of view
};

/// All objects at one time.
struct TruthFrame {
    double time = 0.0;                 ///< seconds
    std::vector<TruthObject> objects;  ///< may be empty
};

/// A line of a recording after the first.
using RecordingLine = std::variant<SensorFrame, TruthFrame>;

}  // namespace Workbench
