// SPDX-License-Identifier: Apache-2.0
#include "cli/Usage.h"

#include <veskar-host/InputError.h>
#include <veskar/NearestWord.h>

#include "HostLibrary.h"
#include "cli/CommandLine.h"
#include "io/OutputFile.h"
#include "io/Printable.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

using Words = std::vector<std::string>;

bool isOption(const std::string& word) {
    return word.size() > 1 && word[0] == '-';
}

Words commandsOf(const CLI::App& app) {
    Words names;
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

/// Long options with their dashes.
Words optionsOf(const CLI::App& app) {
    Words names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

std::string hint(const std::string& word, const Words& known) {
    const std::string nearest = Veskar::nearestWord(word, known);
    // Any three letters are near any others.
    const bool isFar = nearest.empty() || (word.size() <= 3 && word[0] != nearest[0]);
    return isFar ? "" : fmt::format("; is {} meant?", nearest);
}

/// The command that the arguments named, as far as they did.
const CLI::App& chosen(const CLI::App& program) {
    const std::vector<CLI::App*> commands = program.get_subcommands();
    return commands.empty() ? program : chosen(*commands.front());
}

/// "veskar import kitti"
std::string fullName(const CLI::App& app) {
    const CLI::App* parent = app.get_parent();
    return parent == nullptr ? app.get_name() : fullName(*parent) + " " + app.get_name();
}

std::string faultOf(const CLI::App& program, const CLI::App& command,
                    const CLI::ParseError& error) {
    const Words left = program.remaining(true);
    const Words commands = commandsOf(command);
    if (!commands.empty() && !left.empty() && !isOption(left.front())) {
        return fmt::format("no command {}{}", left.front(), hint(left.front(), commands));
    }
    const auto unknown = std::find_if(left.begin(), left.end(), isOption);
    if (unknown != left.end()) {
        const std::string name = unknown->substr(0, unknown->find('='));
        return fmt::format("no option {}{}", name, hint(name, optionsOf(command)));
    }
    if (!left.empty()) {
        return fmt::format("{} is one argument too many", left.front());
    }
    return commands.empty() ? error.what() : "which command?";
}

/// @param words names of a command and of its subcommands
const CLI::App& commandNamed(const CLI::App& program, const Words& words) {
    const CLI::App* found = &program;
    for (const std::string& word : words) {
        const std::vector<const CLI::App*> matches =
            found->get_subcommands([&](const CLI::App* one) { return one->get_name() == word; });
        if (matches.empty()) {
            throw InputError(fmt::format("no command {}{}", word, hint(word, commandsOf(*found))));
        }
        found = matches.front();
    }
    return *found;
}

int showHelp(const CLI::App& program, const Words& words) {
    const CLI::App& command = commandNamed(program, words);
    OutputFile output("-");
    // App::help would show that of the command that was given, which is "help".
    output.write(program.get_formatter()->make_help(&command, fullName(command),
                                                    CLI::AppFormatMode::Normal));
    output.commit();
    return Success;
}

}  // namespace

std::string complaintOf(const CLI::App& program, const CLI::ParseError& error) {
    const CLI::App& command = chosen(program);
    const std::string name = fullName(command);
    return fmt::format("{}: {}\nRun \"{} --help\" for more information.\n", name,
                       printable(faultOf(program, command, error)), name);
}

void addHelpCommand(CLI::App& program, Action& action) {
    auto words = std::make_shared<Words>();
    CLI::App* command = program.add_subcommand("help", "Show the help of a command");
    command->add_option("command", *words, "a command, and one of its commands");
    command->footer("Example:\n  veskar help import kitti\n");
    command->callback([words, &program, &action] {
        action = [words, &program] { return showHelp(program, *words); };
    });
}

}  // namespace Workbench
