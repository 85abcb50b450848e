// SPDX-License-Identifier: Apache-2.0
// An output that appears complete or not at all.
#pragma once

#include <string>
#include <string_view>

namespace Workbench {

/// Writes a file under a temporary name beside its place and moves it there when it is complete, so
/// that nobody ever sees half of it and an earlier file survives a failure. Standard output ("-")
/// and what is no regular file (a pipe, a device) are written directly.
class OutputFile {
public:
    /// @param path the file, or "-"
    /// @throw InputError when it cannot be created
    explicit OutputFile(const std::string& path);
    /// Without commit the temporary file is removed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// @param text appended
    /// @throw InputError when writing fails (full disk, closed pipe)
    void write(std::string_view text);

    /// Hands over what is buffered, for a reader that follows a pipe.
    /// @throw InputError as write
    void flush();

    /// Makes the output durable and visible. Nothing may be written afterwards.
    /// @throw InputError as write, or when the file cannot be moved to its place
    void commit();

    /// @return whether the output is standard output
    bool isStandardOutput() const { return path == "-"; }

private:
    [[noreturn]] void fail(const char* doing) const;
    void syncDirectory() const;

    std::string path;
    std::string temporaryPath;  ///< empty when written directly
    std::string shownName;
    std::string buffer;
    int descriptor = -1;
};

}  // namespace Workbench
