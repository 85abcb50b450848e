// SPDX-License-Identifier: Apache-2.0
// How a parser of a configuration document says what it refused.
#pragma once

#include <exception>

namespace Veskar {

/// Writes why a document was refused to the system log, at error priority.
void logParseFailure(const std::exception& reason);

}  // namespace Veskar
