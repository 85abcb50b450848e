// SPDX-License-Identifier: Apache-2.0
// The files of a command: what it reads and what it writes.
#pragma once

#include <string>
#include <vector>

namespace Workbench {

/// A file and what it is to the command that was given it.
struct NamedFile {
    std::string role;  ///< as "recording"
    std::string path;  ///< "-": standard input or output; empty: none was given
};

/// Refuses to write to a file that the command reads, or to write two outputs to one file. Files
/// are compared, not names: a link to a file, or a stream that was redirected to it, is that file,
/// and so is the place where a file does not exist yet. Devices, pipes and sockets keep nothing
/// that could be lost and may be named more than once; "-" may not, neither among the inputs nor
/// among the outputs.
///
/// Belongs before anything is opened for writing.
///
/// @param inputs what the command reads
/// @param outputs what the command writes
/// @throw InputError naming both files or, where both are "-", both roles
void refuseClashes(const std::vector<NamedFile>& inputs, const std::vector<NamedFile>& outputs);

}  // namespace Workbench
