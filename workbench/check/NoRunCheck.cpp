// SPDX-License-Identifier: Apache-2.0
// In a program that was built without `run`.
#include <veskar-host/InputError.h>

#include "check/RunCheck.h"

namespace Workbench {

void checkRun(const std::string&, const LocatedValue&, Findings&) {
    throw Veskar::Host::InputError(VESKAR_LIVE_MISSING);
}

}  // namespace Workbench
