// SPDX-License-Identifier: Apache-2.0
// An output that appears complete or not at all.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace Workbench {

/// @param path a file, or a link that leads to one or to where none is yet; not in a circle
/// @return the place behind all links, where an output of this name is created
std::filesystem::path behindLinks(std::filesystem::path path);
/// @param path a file
/// @return the directory in which it is
std::string directoryOf(const std::filesystem::path& path);

/// Writes a file under a temporary name beside its place and moves it there when it is complete, so
/// that nobody ever sees half of it and an earlier file survives a failure. Symbolic links are
/// followed: the place is where they lead, whether something is there or not. Standard output ("-")
/// and what is no regular file (a pipe, a device) are written directly.
class OutputFile {
public:
    /// @param path the file, or "-"
    /// @throw InputError when it cannot be created
    /// @throw Interrupted when a signal comes while a pipe has no reader
    explicit OutputFile(const std::string& path);
    /// Without commit the temporary file is removed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// @param text appended
    /// @throw InputError when writing fails (full disk, closed pipe)
    /// @throw Interrupted when a signal has come
    void write(std::string_view text);

    /// Hands over what is buffered, for a reader that follows a pipe.
    /// @throw InputError as write
    void flush();

    /// Makes the output durable and visible. Nothing may be written afterwards.
    /// @throw InputError as write, or when the file cannot be moved to its place
    void commit();

    /// @return whether the output is standard output
    bool isStandardOutput() const { return path_ == "-"; }

private:
    [[noreturn]] void fail(const char* doing) const;
    void open();
    void openTemporary();
    void syncDirectory() const;

    std::string path_;
    std::string shownName_;
    std::string target_;         ///< where the path leads
    std::string temporaryPath_;  ///< empty when written directly
    std::string buffer_;
    std::size_t longestWrite_ = 0;  ///< what does not block once the descriptor is ready
    int descriptor_ = -1;
};

}  // namespace Workbench
