// SPDX-License-Identifier: Apache-2.0
// The subcommands.
#pragma once

#include <functional>

namespace CLI {
class App;
}  // namespace CLI

namespace Workbench {

/// The action of the chosen subcommand; it returns an ExitStatus.
using Action = std::function<int()>;

/// Each function adds a subcommand to the program, which stores its action when it is chosen.
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
void addExportCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addCheckCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addInfoCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addReportCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addTuneCommand(CLI::App& program, Action& action);
/// @copydoc addSimulateCommand
void addCompletionCommand(CLI::App& program, Action& action);
/// Adds `calibrate`; where the program was built without it, it says why.
/// @param program as above
/// @param action as above
void addCalibrateCommand(CLI::App& program, Action& action);
/// Adds `run` and `record`; where the program was built without them, they say why.
/// @param program as above
/// @param action as above
void addLiveCommands(CLI::App& program, Action& action);

}  // namespace Workbench
