// SPDX-License-Identifier: Apache-2.0
// The values of a configuration as JSON.
#pragma once

#include <string>

namespace Veskar {

/// @return the value as JSON text; a real with a fraction or exponent and the fewest digits that
///         give it back exactly, null when it is not finite
std::string jsonOf(double value);
/// @copydoc jsonOf(double)
std::string jsonOf(int value);
/// @copydoc jsonOf(double)
std::string jsonOf(bool value);

}  // namespace Veskar
