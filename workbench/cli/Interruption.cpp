// SPDX-License-Identifier: Apache-2.0
#include "cli/Interruption.h"

#include "io/InputError.h"

#include <csignal>

namespace Workbench {
namespace {

volatile std::sig_atomic_t isInterrupted = 0;

void remember(int) {
    isInterrupted = 1;
}

}  // namespace

void listenForInterruption() {
    // The first signal ends the work in good order; the second one ends a program that is stuck.
    struct sigaction action {};
    action.sa_handler = remember;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

void throwIfInterrupted() {
    if (isInterrupted != 0) {
        throw InputError("interrupted");
    }
}

}  // namespace Workbench
