// SPDX-License-Identifier: Apache-2.0
// The program as a function.
#pragma once

#include <string>

namespace Workbench {

/// Exit status of the program.
enum ExitStatus {
    Success = 0,         ///< it ran
    NegativeAnswer = 1,  ///< it ran with a negative result: not everything could be fused
    BadInput = 2         ///< wrong usage, wrong input, or an output that cannot be written
};

/// Parses the arguments and runs the subcommand they name. Messages go to standard error. On a
/// signal that ends the program, unfinished outputs are removed and the process ends by that
/// signal; the function does not return then.
///
/// @param count number of arguments, the program's name included
/// @param arguments the arguments
/// @return an ExitStatus
int runCommandLine(int count, const char* const* arguments);

/// Writes to standard error; failures are ignored.
/// @param text written unchanged
void writeError(const std::string& text);

/// Tells a fault on standard error with writeError; the journal takes it as an error.
/// @param text the fault, without line end; control characters are escaped
void tellFault(const std::string& text);

/// Prints a warning to standard error with writeError, unless the user wants none; the journal
/// takes it as one.
/// @param text the warning, without line end; control characters are escaped
void warn(const std::string& text);

}  // namespace Workbench
