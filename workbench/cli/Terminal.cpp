// SPDX-License-Identifier: Apache-2.0
#include "cli/Terminal.h"

#include <cstdlib>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <unistd.h>

namespace Workbench {
namespace {

bool isSet(const char* variable) {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
    return value != nullptr && *value != '\0';
}

bool isDumb() {
    const char* const terminal = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe)
    return terminal == nullptr || std::string_view(terminal) == "dumb";
}

bool hasColor(int descriptor) {
    const std::string& wish = terminalSettings().color;
    return wish == "always" ||
           (wish == "auto" && ::isatty(descriptor) == 1 && !isSet("NO_COLOR") && !isDumb());
}

void addOptions(CLI::App& command) {
    TerminalSettings& settings = terminalSettings();
    constexpr const char* group = "On the terminal";
    CLI::Option* const quiet =
        command.add_flag("-q,--quiet", settings.isQuiet, "no warnings, no progress; errors only");
    quiet->group(group);
    command.add_flag("-v,--verbose", settings.isVerbose, "say how long each step took")
        ->group(group)
        ->excludes(quiet);
    command.add_flag("!--no-progress", settings.hasProgress, "no progress bar")->group(group);
    command.add_option("--color", settings.color, "auto, always or never (default: auto)")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->group(group);
}

}  // namespace

TerminalSettings& terminalSettings() {
    static TerminalSettings settings;
    return settings;
}

void addTerminalOptions(CLI::App& program) {
    const auto every = [](const CLI::App*) { return true; };
    for (CLI::App* command : program.get_subcommands(static_cast<bool (*)(CLI::App*)>(nullptr))) {
        if (!command->get_subcommands(every).empty()) {
            addTerminalOptions(*command);
        } else if (!command->get_prefix_command()) {
            addOptions(*command);
        }
    }
}

std::string colored(std::string_view text, Tone tone, int descriptor) {
    if (!hasColor(descriptor)) {
        return std::string(text);
    }
    constexpr int sgr[] = {31, 35, 36};  // red, magenta, cyan (ECMA-48, SGR)
    return fmt::format("\033[1;{}m{}\033[0m", sgr[static_cast<int>(tone)], text);
}

}  // namespace Workbench
