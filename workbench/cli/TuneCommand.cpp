// SPDX-License-Identifier: Apache-2.0
// `veskar tune` is a program of the Python package.
#include <veskar-host/InputError.h>

#include "cli/Commands.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <sys/auxv.h>
#include <unistd.h>

namespace Workbench {
namespace {

// Where the Python package installs its program, seen from this one; empty when that is not known.
std::filesystem::path installedTuner() {
    // Unlike /proc/self/exe, it is there in a bare root, too.
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel gives addresses as numbers
    const auto* const started = reinterpret_cast<const char*>(::getauxval(AT_EXECFN));
    std::error_code fault;
    const std::filesystem::path self = std::filesystem::canonical(started, fault);
    if (fault) {
        return {};
    }
    return self.parent_path().parent_path() / VESKAR_LIBEXEC_DIR / "veskar" / "veskar-tune";
}

int becomeTuner(std::vector<std::string> words) {
    words.insert(words.begin(), "veskar-tune");
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    ::execv(installedTuner().c_str(), arguments.data());
    ::execvp(arguments[0], arguments.data());
    if (errno == ENOENT) {
        throw Veskar::Host::InputError(
            "tune is in the Python package: install python3-veskar, python3-optuna and "
            "python3-scipy");
    }
    throw Veskar::Host::InputError(fmt::format("veskar-tune: {}", std::strerror(errno)));
}

}  // namespace

void addTuneCommand(CLI::App& program, Action& action) {
    CLI::App* command =
        program.add_subcommand("tune", "Search for better settings (in the Python package)");
    command->prefix_command();
    command->footer(
        "Takes a study document and options, which `veskar tune STUDY --help` lists.\n"
        "\n"
        "Example:\n"
        "  veskar tune study.json -o tuned");
    command->callback(
        [command, &action] { action = [command] { return becomeTuner(command->remaining()); }; });
}

}  // namespace Workbench
