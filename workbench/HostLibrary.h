// SPDX-License-Identifier: Apache-2.0
// The workbench speaks in the words of the library for hosts.
#pragma once

namespace Veskar::Host::Internal {}

namespace Workbench {

using namespace Veskar::Host;
using namespace Veskar::Host::Internal;

}  // namespace Workbench
