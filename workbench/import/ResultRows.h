// SPDX-License-Identifier: Apache-2.0
// Reads the results of trackers in the formats of tracking benchmarks.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// A track in one frame. What a file does not state is not finite.
struct ResultRow {
    std::uint64_t line = 0;  ///< in the file, from 1
    int frame = 0;           ///< from 0
    std::int32_t id = 0;
    std::string className = "unknown";  ///< as in the file
    /// 0 to 1; negative where a tracker has none.
    double confidence = std::numeric_limits<double>::quiet_NaN();
    /// Left, top, right, bottom, pixels from the left upper corner.
    Eigen::Vector4d box = Eigen::Vector4d::Constant(std::numeric_limits<double>::quiet_NaN());
    /// On the ground, m: of MOTChallenge in the frame of the file, of KITTI ahead and to the left
    /// of the camera.
    Eigen::Vector2d position = Eigen::Vector2d::Constant(std::numeric_limits<double>::quiet_NaN());
};

/// @param path rows "frame,id,left,top,width,height,confidence" with "x,y,z" or without; frames and
///             pixels count from 1; -1,-1,-1 is no place, width or height of 0 or less no box
/// @return the rows, by frame, in the order of the file
/// @throw InputError with the place of the fault, or that there are no rows
std::vector<ResultRow> readMotResults(const std::string& path);

/// @param path rows with 17 columns and an optional score; rows of type DontCare are left out, and
///             so are sizes
/// @return the rows, by frame, in the order of the file
/// @throw InputError as readMotResults
std::vector<ResultRow> readKittiResults(const std::string& path);

}  // namespace Workbench
