// SPDX-License-Identifier: Apache-2.0
// How large objects usually are.
#pragma once

#include <veskar-host/ExportHost.h>

#include <string_view>

#include <Eigen/Core>

namespace Veskar::Host {

/// @param className an object class, see Vocabulary.h
/// @return length, width and height of a usual object of the class, m; those of a person when the
///         class says nothing
VESKAR_HOST_EXPORT Eigen::Vector3d usualSize(std::string_view className);

}  // namespace Veskar::Host
