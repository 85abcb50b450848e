// SPDX-License-Identifier: Apache-2.0
// The commands with their options, as plain data for those who describe them.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace Workbench {

/// An option of a command.
struct OptionEntry {
    std::vector<std::string> names;   ///< with their dashes: "-o", "--output"
    std::string description;          ///< one line
    bool takesValue;                  ///< or is a flag
    std::vector<std::string> values;  ///< the only ones that it takes; empty: any, as file names
};

/// A command, the program included.
struct CommandEntry {
    std::vector<std::string> path;  ///< "veskar", "import", "kitti"
    std::string description;        ///< one line
    std::vector<OptionEntry> options;
    std::vector<std::string> commands;  ///< names of its own commands
};

/// @param program a program
/// @return it and all commands below, each before its own commands
std::vector<CommandEntry> commandTree(const CLI::App& program);

}  // namespace Workbench
