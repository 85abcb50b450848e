// SPDX-License-Identifier: Apache-2.0
#include "config/ParseFailure.h"

#include <syslog.h>

namespace Veskar {

void logParseFailure(const std::exception& reason) {
    syslog(LOG_ERR, "Failed to parse fusion config: %s\n", reason.what());
}

}  // namespace Veskar
