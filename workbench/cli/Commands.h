// SPDX-License-Identifier: Apache-2.0
// The subcommands.
#pragma once

#include <functional>

namespace CLI {
class App;
}  // namespace CLI

namespace Workbench {

/// Receives what the chosen subcommand does; it returns an ExitStatus.
using Action = std::function<int()>;

/// Each adds its subcommand to the program; when it is chosen, its action is stored.
/// @param program the program
/// @param action receives the action of the chosen subcommand
void addSimulateCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addImportCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addReplayCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addEvaluateCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addCheckCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addReportCommand(CLI::App& program, Action& action);

}  // namespace Workbench
