// SPDX-License-Identifier: Apache-2.0
// How large objects usually are.
#pragma once

#include <string>

#include <Eigen/Core>

namespace Workbench {

/// @param className an object class, see Vocabulary.h
/// @return length, width and height of a usual object of the class, m; those of a person when the
///         class says nothing
Eigen::Vector3d usualSize(const std::string& className);

}  // namespace Workbench
