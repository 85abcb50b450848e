// SPDX-License-Identifier: Apache-2.0
// Ctrl-C without debris.
#pragma once

namespace Workbench {

/// From now on SIGINT and SIGTERM are remembered instead of ending the process at once, so that
/// unfinished outputs are removed.
void listenForInterruption();

/// @throw InputError when a signal has come; called once per frame
void throwIfInterrupted();

}  // namespace Workbench
