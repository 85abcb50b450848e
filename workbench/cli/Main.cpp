// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"

int main(int count, char** arguments) {
    return Workbench::runCommandLine(count, arguments);
}
