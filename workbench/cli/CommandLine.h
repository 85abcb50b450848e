// SPDX-License-Identifier: Apache-2.0
// The program as a function.
#pragma once

#include <string>

namespace Workbench {

/// What the program's exit status says.
enum ExitStatus {
    Success = 0,         ///< it ran
    NegativeAnswer = 1,  ///< it ran, and the answer is no: not everything could be fused
    BadInput = 2         ///< wrong usage, wrong input, or an output that cannot be written
};

/// Parses the arguments and runs the subcommand they name. Messages go to standard error. A signal
/// that asks the program to end does so once unfinished outputs are removed: the function does not
/// return then.
///
/// @param count number of arguments, the program's name included
/// @param arguments the arguments
/// @return an ExitStatus
int runCommandLine(int count, const char* const* arguments);

/// Writes to standard error. Where that fails there is nobody to tell: it is no fault.
/// @param text as it is to appear
void writeError(const std::string& text);

/// Warns on standard error, as writeError does.
/// @param text what of, without a line's end; what a terminal would not show as it is, is escaped
void warn(const std::string& text);

}  // namespace Workbench
