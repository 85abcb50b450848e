// SPDX-License-Identifier: Apache-2.0
// In a program that was built without the live view.
#include <veskar-host/InputError.h>

#include "live/view/LiveView.h"

namespace Veskar::Live {

std::string viewMissing() {
    return VESKAR_VIEW_MISSING;
}

std::unique_ptr<LiveView> makeView(const ViewSettings& /*settings*/,
                                   ViewContent /*content*/) {  // NOLINT(performance-unnecessary-value-param):
                                                               // kept by the other one
    throw Host::InputError(viewMissing());
}

}  // namespace Veskar::Live
