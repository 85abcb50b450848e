// SPDX-License-Identifier: Apache-2.0
// Completion of commands and options in shells.
#pragma once

#include "cli/CommandTree.h"

#include <string>
#include <vector>

namespace Workbench {

/// Scripts that complete commands, options and the values of options that take only certain ones;
/// file names otherwise.
/// @param tree the program and its commands
/// @return a script for /usr/share/bash-completion/completions/veskar
std::string completionForBash(const std::vector<CommandEntry>& tree);
/// @param tree as above
/// @return a function _veskar for a directory of zsh's fpath
std::string completionForZsh(const std::vector<CommandEntry>& tree);
/// @param tree as above
/// @return a script for /usr/share/fish/vendor_completions.d/veskar.fish
std::string completionForFish(const std::vector<CommandEntry>& tree);

}  // namespace Workbench
