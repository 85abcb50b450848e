// SPDX-License-Identifier: Apache-2.0
// Recognises the host application.
#pragma once

#include <veskar/Export.h>

namespace Veskar {

/// Whether this process is the analytics application that the socket outputs are meant for: the
/// path of its executable contains "quandrelwatcher".
///
/// Not cached; safe from any thread.
///
/// @return false also when the path cannot be read
VESKAR_EXPORT bool calledFromQWR();

}  // namespace Veskar
