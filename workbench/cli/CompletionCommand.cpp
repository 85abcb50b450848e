// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Completion.h"
#include "io/OutputFile.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

namespace Workbench {
namespace {

int complete(const CLI::App& program, const std::string& shell) {
    const std::vector<CommandEntry> tree = commandTree(program);
    OutputFile output("-");
    output.write(shell == "bash"  ? completionForBash(tree)
                 : shell == "zsh" ? completionForZsh(tree)
                                  : completionForFish(tree));
    output.commit();
    return Success;
}

}  // namespace

void addCompletionCommand(CLI::App& program, Action& action) {
    auto shell = std::make_shared<std::string>();
    CLI::App* command = program.add_subcommand(
        "completion", "Print a script that completes commands and options in a shell");
    command->add_option("shell", *shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->footer("Example:\n  source <(veskar completion bash)\n");
    command->callback([shell, &program, &action] {
        action = [shell, &program] { return complete(program, *shell); };
    });
}

}  // namespace Workbench
