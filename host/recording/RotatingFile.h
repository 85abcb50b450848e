// SPDX-License-Identifier: Apache-2.0
// A rotated file of lines that ends with a complete line even after write errors.
#pragma once

#include <veskar-host/ExportHost.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Veskar::Host::Internal {

/// Lines after a header, each written with a single write. Throws std::system_error on faults.
class VESKAR_HOST_EXPORT RotatingFile {
public:
    /// @param path the file; an existing one is rotated, unless it has no line behind its header
    ///             and nobody writes it: a host that fails again and again must not push recordings
    ///             out
    /// @param header first line of every file
    /// @param rotateAfter size in bytes that is not exceeded; 0: no limit
    /// @param kept number of rotated files that are kept
    RotatingFile(std::string path, std::string header, std::uint64_t rotateAfter, std::size_t kept);
    ~RotatingFile();
    RotatingFile(const RotatingFile&) = delete;
    RotatingFile& operator=(const RotatingFile&) = delete;

    /// Appends a line completely or not at all.
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
    bool isWorthKeeping() const;
    bool holdsLines() const;
    std::string numbered(std::size_t number) const;
    void appendToFile(std::string_view line);

    std::string path_;
    std::string header_;
    std::uint64_t rotateAfter_;
    std::size_t kept_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;  ///< bytes of the complete lines in the file
};

}  // namespace Veskar::Host::Internal
