// SPDX-License-Identifier: Apache-2.0
// The program without `calibrate`.
#include <veskar-host/InputError.h>

#include "cli/Commands.h"

#include <CLI/CLI.hpp>

namespace Workbench {

void addCalibrateCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("calibrate", "(not in this program)");
    command->allow_extras();
    command->callback([&action] {
        action = []() -> int { throw Veskar::Host::InputError(VESKAR_CALIBRATE_MISSING); };
    });
}

}  // namespace Workbench
