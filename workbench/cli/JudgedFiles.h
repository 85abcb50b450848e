// SPDX-License-Identifier: Apache-2.0
// The files that `evaluate` is given: recordings, each followed by its runs.
#pragma once

#include <string>
#include <vector>

namespace Workbench {

/// A recording and what was made of it.
struct JudgedFiles {
    std::string recording;
    std::vector<std::string> runs;
};

/// @param files at least one. The first is a recording; each other one is a further recording when
///              it is a regular file that states to be one, and otherwise (also a pipe) a run of
///              the recording before it
/// @return recordings and their runs, in the given order
/// @throw InputError when a file cannot be read, a pipe would be read more than once, or the
///                   recordings have different numbers of runs
std::vector<JudgedFiles> groupFiles(const std::vector<std::string>& files);

}  // namespace Workbench
