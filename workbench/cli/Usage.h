// SPDX-License-Identifier: Apache-2.0
// What the program says of wrong usage.
#pragma once

#include "cli/Commands.h"

#include <string>

namespace CLI {
class ParseError;
}  // namespace CLI

namespace Workbench {

/// @param program the program after its arguments were refused
/// @param error why they were
/// @return sentences for the user, ending with a line feed: the command that was meant, the fault
///         with the nearest known word, and how to get help
std::string complaintOf(const CLI::App& program, const CLI::ParseError& error);

/// Adds `help`, which shows the help of the program or of a command.
/// @copydetails addSimulateCommand
void addHelpCommand(CLI::App& program, Action& action);

}  // namespace Workbench
