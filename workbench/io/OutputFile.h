// SPDX-License-Identifier: Apache-2.0
// An output that appears complete or not at all.
#pragma once

#include "io/Compression.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace Workbench {

/// @param path a file, or a link to an existing or future file; not a circular link
/// @return the path behind all links, where the output is created
std::filesystem::path behindLinks(std::filesystem::path path);
/// @param path a file
/// @return the directory that contains it
std::string directoryOf(const std::filesystem::path& path);

/// The reader of standard output has seen enough, as `head` has.
class ReaderLeft : public std::exception {
public:
    const char* what() const noexcept override { return "the reader of standard output has left"; }
};

/// Writes to a temporary file in the same directory and renames it when it is complete, so that no
/// partial output becomes visible and an existing file survives a failure. Symbolic links are
/// followed, whether their target exists or not. Standard output ("-") and files that are not
/// regular (pipes, devices) are written directly. Files whose names end in ".gz" or ".zst" are
/// compressed.
class OutputFile {
public:
    /// Whether the reader of standard output may leave before its end. It must stay where something
    /// else would remain unfinished, too.
    enum class Reader : std::uint8_t { MayLeave, MustStay };

    /// @param path the file, or "-"
    /// @param reader what is expected of a reader of standard output
    /// @throw InputError when it cannot be created
    /// @throw Interrupted when a signal comes while a pipe has no reader
    explicit OutputFile(const std::string& path, Reader reader = Reader::MayLeave);
    /// Removes the temporary file unless commit was called.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// @param text appended
    /// @throw InputError when writing fails (full disk, closed pipe)
    /// @throw ReaderLeft when the reader of standard output has left and may do so
    /// @throw Interrupted when a signal has come
    void write(std::string_view text);

    /// Writes the buffered text, for readers of a pipe.
    /// @throw InputError as write
    void flush();

    /// Writes all that is left, so that little can fail in commit: of several outputs, all are
    /// completed before the first is committed. Nothing may be written afterwards.
    /// @throw InputError as write
    void complete();

    /// Completes the output and makes it durable and visible. Must be the last call.
    /// @throw InputError as write, or when the file cannot be renamed
    void commit();

    /// @return whether the output is standard output
    bool isStandardOutput() const { return path_ == "-"; }

private:
    [[noreturn]] void fail(const char* doing) const;
    void writeOut(Encoder::Until until);
    void open();
    void openTemporary();
    void syncDirectory() const;

    std::string path_;
    Reader reader_;
    std::string shownName_;
    std::string target_;         ///< the file behind all links
    std::string temporaryPath_;  ///< empty when written directly
    std::string buffer_;
    std::unique_ptr<Encoder> encoder_;  ///< nothing: it is not compressed
    std::size_t longestWrite_ = 0;      ///< bytes that do not block once the descriptor is ready
    int descriptor_ = -1;
    bool isComplete_ = false;
};

}  // namespace Workbench
