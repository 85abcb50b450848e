// SPDX-License-Identifier: Apache-2.0
#include "host/recording/RotatingFile.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Veskar::Host::Internal {
namespace {

[[noreturn]] void fail(const std::string& path, int reason = errno) {
    throw std::system_error(reason, std::generic_category(), path);
}

/// @return whether there is a file, which is then a regular one
bool exists(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        if (errno != ENOENT) {
            fail(path);
        }
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        fail(path + ": is no regular file", EEXIST);
    }
    return true;
}

/// Brings the names of files to the disk. Not every file system can do that.
void syncDirectoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string directory = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

}  // namespace

RotatingFile::RotatingFile(std::string path, std::string header, std::uint64_t rotateAfter,
                           std::size_t kept)
    : path_(std::move(path)), header_(std::move(header)), rotateAfter_(rotateAfter), kept_(kept) {
    open();
}

RotatingFile::~RotatingFile() {
    close();
}

/// A file whose header cannot be written is removed.
void RotatingFile::open() {
    makeWay();
    descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0666);
    if (descriptor_ < 0) {
        fail(path_);
    }
    // Says that it is in use. Where the file system has no locks, files that hold nothing are kept.
    ::flock(descriptor_, LOCK_EX | LOCK_NB);
    size_ = 0;
    try {
        appendToFile(header_);
    } catch (...) {
        close();
        ::unlink(path_.c_str());
        throw;
    }
    syncDirectoryOf(path_);
}

void RotatingFile::close() {
    if (descriptor_ >= 0) {
        ::close(std::exchange(descriptor_, -1));
    }
}

std::string RotatingFile::numbered(std::size_t number) const {
    return number == 0 ? path_ : path_ + "." + std::to_string(number);
}

/// Renames the file and those behind it, from the oldest on: each takes the place of the one
/// before. A gap in their numbers takes the last one. Without the file there is nothing to do: what
/// was tried in vain before must not push another recording out.
void RotatingFile::makeWay() const {
    if (!exists(path_)) {
        return;
    }
    if (kept_ == 0 || !isWorthKeeping()) {
        if (::unlink(path_.c_str()) != 0) {
            fail(path_);
        }
        return;
    }
    std::size_t free = 1;
    while (free < kept_ && exists(numbered(free))) {
        ++free;
    }
    for (std::size_t number = free; number > 0; --number) {
        const std::string from = numbered(number - 1);
        if (std::rename(from.c_str(), numbered(number).c_str()) != 0) {
            fail(from);
        }
    }
}

/// @return whether the file holds lines, or another object holds it open and may write some
bool RotatingFile::isWorthKeeping() const {
    const int descriptor = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
    const bool isFree = descriptor >= 0 && ::flock(descriptor, LOCK_EX | LOCK_NB) == 0;
    // The lock ends with the descriptor, behind the look at the file.
    const bool isWorth = !isFree || holdsLines();
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    return isWorth;
}

/// @return whether the file holds more than the header of such a file, or nothing at all
bool RotatingFile::holdsLines() const {
    std::ifstream file(path_);
    if (header_.empty()) {
        return file.peek() != std::ifstream::traits_type::eof();
    }
    constexpr std::size_t telling = 27;  // {"format":"veskar-recording
    std::string line;
    const bool isHeader = std::getline(file, line) && !file.eof() &&
                          line.compare(0, telling, header_, 0, telling) == 0;
    return !isHeader || file.peek() != std::ifstream::traits_type::eof();
}

void RotatingFile::append(std::string_view line) {
    if (rotateAfter_ > 0 && size_ + line.size() > rotateAfter_) {
        rotate();
    }
    if (descriptor_ < 0) {
        open();
    }
    appendToFile(line);
}

void RotatingFile::rotate() {
    if (size_ > header_.size()) {
        sync();
        close();
    }
}

void RotatingFile::appendToFile(std::string_view line) {
    ssize_t count = 0;
    do {
        count = ::write(descriptor_, line.data(), line.size());
    } while (count < 0 && errno == EINTR);
    if (count == static_cast<ssize_t>(line.size())) {
        size_ += line.size();
        return;
    }
    // Removes a partly written line. A short write means that the disk is full.
    const int reason = count < 0 ? errno : ENOSPC;
    if (::ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) {
        // The file ends with half a line; continue in a new file.
        close();
    }
    fail(path_, reason);
}

void RotatingFile::sync() {
    if (descriptor_ >= 0 && ::fdatasync(descriptor_) != 0) {
        fail(path_);
    }
}

}  // namespace Veskar::Host::Internal
