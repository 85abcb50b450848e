// SPDX-License-Identifier: Apache-2.0
// The input and output files of a command.
#pragma once

#include <string>
#include <vector>

namespace Workbench {

/// A file and its role in a command.
struct NamedFile {
    std::string role;  ///< as "recording"
    std::string path;  ///< "-": standard input or output; empty: none was given
};

/// Rejects outputs that would overwrite an input or each other. Files are compared by identity, not
/// by name: a link to a file, or a stream redirected to it, counts as that file, and so does the
/// place of a file that does not exist yet. Devices, pipes and sockets hold no data that could be
/// overwritten and may be named more than once; "-" may be named only once among the inputs and
/// once among the outputs.
///
/// Must be called before any output is opened.
///
/// @param inputs files that the command reads
/// @param outputs files that the command writes
/// @throw InputError naming both files or, where both are "-", both roles
void refuseClashes(const std::vector<NamedFile>& inputs, const std::vector<NamedFile>& outputs);

}  // namespace Workbench
