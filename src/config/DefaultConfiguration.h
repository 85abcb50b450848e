// SPDX-License-Identifier: Apache-2.0
// The shipped configuration, compiled in.
#pragma once

namespace Veskar {

/// JSON text of config/fusion.json.
extern const char* const defaultConfiguration;

}  // namespace Veskar
