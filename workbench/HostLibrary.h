// SPDX-License-Identifier: Apache-2.0
// Makes the names of the library for hosts available in the workbench.
#pragma once

namespace Veskar::Host::Internal {}

namespace Workbench {

using namespace Veskar::Host;
using namespace Veskar::Host::Internal;

}  // namespace Workbench
