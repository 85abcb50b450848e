// SPDX-License-Identifier: Apache-2.0
#include "live/service/ProcessUsage.h"

#include <ctime>
#include <fstream>

#include <unistd.h>

namespace Veskar::Live {

ProcessUsage ProcessUsage::now() {
    ProcessUsage usage;
    std::ifstream statm("/proc/self/statm");
    double total = 0.0;
    double resident = 0.0;
    if (statm >> total >> resident) {
        usage.memory = resident * static_cast<double>(::sysconf(_SC_PAGESIZE));
    }
    timespec time{};
    if (::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time) == 0) {
        usage.cpuSeconds =
            static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
    }
    return usage;
}

}  // namespace Veskar::Live
