// SPDX-License-Identifier: Apache-2.0
// Several output files in one directory.
#pragma once

#include "io/OutputFile.h"

#include <filesystem>
#include <map>
#include <memory>

namespace Workbench {

/// Files of a directory that is created when needed. Each appears complete or not at all; all are
/// complete before the first appears. Other files of the directory remain.
class DirectoryOutput {
public:
    /// @param path the directory
    explicit DirectoryOutput(std::filesystem::path path) : path_(std::move(path)) {}

    /// @param name path of a file in the directory
    /// @return the file, opened at the first call
    /// @throw InputError when it cannot be created
    OutputFile& file(const std::filesystem::path& name);
    /// @param name as `file`
    /// @return where it is
    std::filesystem::path place(const std::filesystem::path& name) const { return path_ / name; }
    /// Makes the files visible. Must be the last call.
    /// @throw InputError when they cannot be written
    void commit();

private:
    std::filesystem::path path_;
    std::map<std::filesystem::path, std::unique_ptr<OutputFile>> files_;
};

}  // namespace Workbench
