// SPDX-License-Identifier: Apache-2.0
// A file of lines that is complete up to its last line whatever happens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Veskar::Host::Internal {

/// Lines behind a header, each handed to the system with one write. Faults are std::system_error.
class RotatingFile {
public:
    /// @param path the file; one that is there is rotated
    /// @param header first line of every file
    /// @param rotateAfter bytes; 0: never
    /// @param kept rotated files
    RotatingFile(std::string path, std::string header, std::uint64_t rotateAfter, std::size_t kept);
    ~RotatingFile();
    RotatingFile(const RotatingFile&) = delete;
    RotatingFile& operator=(const RotatingFile&) = delete;

    /// Appends a line whole or not at all.
    /// @param line with line end
    void append(std::string_view line);
    /// Lets the next line begin a file, unless the file has none yet.
    void rotate();
    /// Brings everything to the disk.
    void sync();

private:
    void open();
    void close();
    void makeWay() const;
    std::string numbered(std::size_t number) const;
    void appendToFile(std::string_view line);

    std::string path_;
    std::string header_;
    std::uint64_t rotateAfter_;
    std::size_t kept_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;  ///< of the lines that stand in the file
};

}  // namespace Veskar::Host::Internal
