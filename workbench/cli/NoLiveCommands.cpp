// SPDX-License-Identifier: Apache-2.0
// The program without its live part.
#include <veskar-host/InputError.h>

#include "cli/Commands.h"
#include "cli/FramePublisher.h"

#include <CLI/CLI.hpp>

namespace Workbench {

void addLiveCommands(CLI::App& program, Action& action) {
    for (const char* name : {"run", "record"}) {
        CLI::App* command = program.add_subcommand(name, "(not in this program)");
        command->allow_extras();
        command->callback([&action] {
            action = []() -> int { throw Veskar::Host::InputError(VESKAR_LIVE_MISSING); };
        });
    }
}

std::unique_ptr<FramePublisher> publisherFor(const std::string&,
                                             const Veskar::Host::Installation&) {
    throw InputError(VESKAR_LIVE_MISSING);
}

}  // namespace Workbench
