// SPDX-License-Identifier: Apache-2.0
// In a program that was built without the live view.
#include <veskar-host/InputError.h>

#include "live/view/LiveView.h"

namespace Veskar::Live {

std::string viewMissing() {
    return VESKAR_VIEW_MISSING;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): kept by the other one
std::unique_ptr<LiveView> makeView(const ViewSettings& /*settings*/, ViewContent /*content*/) {
    throw Host::InputError(viewMissing());
}

}  // namespace Veskar::Live
