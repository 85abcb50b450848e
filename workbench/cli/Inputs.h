// SPDX-License-Identifier: Apache-2.0
// Inputs that several subcommands read.
#pragma once

#include "recording/Excerpt.h"
#include "recording/LabelWords.h"
#include "replay/Provenance.h"

#include <array>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace Workbench {

/// Adds the options for the configuration and for single values.
/// @param command the subcommand
/// @param config receives the path of the configuration
/// @param changes receives the single values, as "KEY=VALUE"
/// @return the options
std::array<CLI::Option*, 2> addSettingsOptions(CLI::App& command, std::string& config,
                                               std::vector<std::string>& changes);

/// Adds the options for a part of the recording.
/// @param command the subcommand
/// @param excerpt receives the part
void addExcerptOptions(CLI::App& command, Excerpt& excerpt);

/// @param name name of the file that contains the words
/// @return warns on standard error of words outside the vocabulary
UnknownWords::Tell wordWarnings(const std::string& name);

/// Adds the option that permits combining files that were not made from each other.
/// @param command the subcommand
/// @param force receives whether the option was given
/// @return the option
CLI::Option* addForceOption(CLI::App& command, bool& force);

/// @param force the value of the option
/// @return the comparison of files; its warnings go to standard error
Provenance provenanceFor(bool force);

}  // namespace Workbench
