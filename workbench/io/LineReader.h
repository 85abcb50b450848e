// SPDX-License-Identifier: Apache-2.0
// Reads text line by line in constant memory.
#pragma once

#include "io/Compression.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace Workbench {

/// The lines of a file, or of standard input when the path is "-". What is compressed with gzip or
/// Zstandard is recognised by its first bytes and read as the text that it holds.
class LineReader {
public:
    /// @param path the file, or "-"
    /// @throw InputError when it cannot be opened
    /// @throw Interrupted when a signal comes while a pipe has no writer
    explicit LineReader(const std::string& path);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Reads the next line.
    ///
    /// @param line receives the line without its end; valid until the next call, with `padding`
    ///        readable bytes behind it
    /// @return false at the end of the file
    /// @throw InputError when reading fails, the line is longer than maximumLineLength, or
    /// compressed
    ///        data are damaged or not complete
    /// @throw Interrupted when a signal has come
    bool next(std::string_view& line);

    /// Makes a waiting call of next fail, and every later one that would wait. Only this function
    /// may be called by another thread.
    void stop();

    /// @return whether the last line had no line end: the file ends there
    bool lastLineIsOpen() const { return openEnded_; }
    /// @return number of the line last read, from 1
    std::uint64_t lineNumber() const { return number_; }
    /// @return how much of a regular file has been handed out (of a compressed one, read), 0 to 1;
    ///         negative when that is unknown
    double fractionRead() const;
    /// @return name for messages: the path, or "<stdin>"
    const std::string& name() const { return shownName_; }
    /// @return "NAME:LINE", the place of the line last read
    std::string place() const;

    /// Longer lines are taken as garbage and rejected.
    static constexpr std::size_t maximumLineLength = std::size_t{64} << 20;
    /// Parsers that read whole machine words may read this far beyond the end of a line.
    static constexpr std::size_t padding = 64;

private:
    bool fill();
    std::size_t readPlain();
    std::size_t readCompressed();
    std::size_t read(char* to, std::size_t room);
    void waitForInput() const;

    std::string shownName_;
    int descriptor_ = -1;
    int stopDescriptor_ = -1;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    bool atEnd_ = false;
    bool openEnded_ = false;
    std::uint64_t number_ = 0;
    std::uint64_t consumed_ = 0;
    std::uint64_t total_ = 0;  ///< size of a regular file, bytes; 0 when it is not known
    std::unique_ptr<Decoder> decoder_;
    std::vector<char> compressed_;     ///< read, and the next to be decoded
    std::size_t compressedBegin_ = 0;  ///< of what has not been decoded
    std::size_t compressedEnd_ = 0;
    std::uint64_t decoded_ = 0;  ///< compressed bytes so far
    bool isBeginning_ = true;    ///< nothing has been read
};

}  // namespace Workbench
