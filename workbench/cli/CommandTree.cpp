// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandTree.h"

#include <sstream>

#include <CLI/CLI.hpp>

namespace Workbench {
namespace {

/// The words of an option that takes only certain ones, from "{jsonl,csv}".
std::vector<std::string> valuesOf(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    const std::size_t begin = type.find('{');
    const std::size_t end = type.find('}');
    std::vector<std::string> values;
    if (begin == std::string::npos || end == std::string::npos) {
        return values;
    }
    std::istringstream words(type.substr(begin + 1, end - begin - 1));
    for (std::string word; std::getline(words, word, ',');) {
        values.push_back(word);
    }
    return values;
}

OptionEntry entryOf(const CLI::Option& option) {
    OptionEntry entry{
        {}, option.get_description(), option.get_items_expected_max() > 0, valuesOf(option)};
    for (const std::string& name : option.get_snames()) {
        entry.names.push_back("-" + name);
    }
    for (const std::string& name : option.get_lnames()) {
        entry.names.push_back("--" + name);
    }
    return entry;
}

void add(const CLI::App& app, std::vector<std::string> path, std::vector<CommandEntry>& tree) {
    path.push_back(app.get_name());
    CommandEntry entry{path, app.get_description(), {}, {}};
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_positional()) {
            entry.options.push_back(entryOf(*option));
        }
    }
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    for (const CLI::App* command : commands) {
        entry.commands.push_back(command->get_name());
    }
    tree.push_back(entry);
    for (const CLI::App* command : commands) {
        add(*command, path, tree);
    }
}

}  // namespace

std::vector<CommandEntry> commandTree(const CLI::App& program) {
    std::vector<CommandEntry> tree;
    add(program, {}, tree);
    return tree;
}

}  // namespace Workbench
