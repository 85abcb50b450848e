// SPDX-License-Identifier: Apache-2.0
#include <veskar/Version.h>

namespace Veskar {

const char* veskarVersion() {
    return VESKAR_VERSION_STRING;
}

}  // namespace Veskar
