// SPDX-License-Identifier: Apache-2.0
#include <veskar/HostApplication.h>

#include "cli/CommandLine.h"

int main(int count, char** arguments) {
    // Wherever the program is installed: what it makes up or replays must not calibrate a device.
    Veskar::setCalledFromHostApplication(false);
    return Workbench::runCommandLine(count, arguments);
}
