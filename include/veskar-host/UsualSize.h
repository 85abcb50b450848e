// SPDX-License-Identifier: Apache-2.0
// Typical object sizes.
#pragma once

#include <veskar-host/ExportHost.h>

#include <string_view>

#include <Eigen/Core>

namespace Veskar::Host {

/// @param className an object class, see Vocabulary.h
/// @return length, width and height of a typical object of the class, m; those of a person for
///         other classes
VESKAR_HOST_EXPORT Eigen::Vector3d usualSize(std::string_view className);

}  // namespace Veskar::Host
