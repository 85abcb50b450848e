// SPDX-License-Identifier: Apache-2.0
#include "live/view/ViewSettings.h"

namespace Veskar::Live {

bool ViewSettings::isLocal() const {
    return place.host == "127.0.0.1" || place.host == "::1" || place.host == "localhost" ||
           place.host == "lo";
}

}  // namespace Veskar::Live
