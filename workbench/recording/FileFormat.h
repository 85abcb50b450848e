// SPDX-License-Identifier: Apache-2.0
// Which format a file states in its header.
#pragma once

#include <string>

namespace Workbench {

/// @param path a file; not a pipe, since what is read of it here would be missing later
/// @return the member "format" of its first line, as "veskar-recording" or "veskar-fused"; empty
///         when the line is no object with such a text
/// @throw InputError when the file cannot be read
std::string formatOf(const std::string& path);

}  // namespace Workbench
