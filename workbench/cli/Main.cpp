// SPDX-License-Identifier: Apache-2.0
#include <veskar/HostApplication.h>

#include "cli/CommandLine.h"

int main(int count, char** arguments) {
    // Simulated or replayed data must never calibrate a device, wherever the program is installed.
    Veskar::setCalledFromHostApplication(false);
    return Workbench::runCommandLine(count, arguments);
}
