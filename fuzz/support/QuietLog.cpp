// SPDX-License-Identifier: Apache-2.0
// Runs once before the first input: nothing is written to the system log.
#include <syslog.h>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setlogmask(0);
    return 0;
}
