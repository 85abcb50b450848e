// SPDX-License-Identifier: Apache-2.0
#include "host/recording/RotatingFile.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Veskar::Host::Internal {
namespace {

[[noreturn]] void fail(const std::string& path, int reason = errno) {
    throw std::system_error(reason, std::generic_category(), path);
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

/// A file without its header is none: it is not left behind.
void RotatingFile::open() {
    rotate();
    descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0666);
    if (descriptor_ < 0) {
        fail(path_);
    }
    size_ = 0;
    try {
        appendToFile(header_);
    } catch (...) {
        close();
        ::unlink(path_.c_str());
        throw;
    }
}

void RotatingFile::close() {
    if (descriptor_ >= 0) {
        ::close(std::exchange(descriptor_, -1));
    }
}

/// Renames from the oldest on; each takes the place of the one before.
void RotatingFile::rotate() const {
    const auto numbered = [this](std::size_t number) {
        return number == 0 ? path_ : path_ + "." + std::to_string(number);
    };
    if (kept_ == 0) {
        if (::unlink(path_.c_str()) != 0 && errno != ENOENT) {
            fail(path_);
        }
        return;
    }
    for (std::size_t number = kept_; number > 0; --number) {
        const std::string from = numbered(number - 1);
        if (std::rename(from.c_str(), numbered(number).c_str()) != 0 && errno != ENOENT) {
            fail(from);
        }
    }
}

void RotatingFile::append(std::string_view line) {
    const bool isFull =
        rotateAfter_ > 0 && size_ > header_.size() && size_ + line.size() > rotateAfter_;
    if (isFull) {
        sync();
        close();
    }
    if (descriptor_ < 0) {
        open();
    }
    appendToFile(line);
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
    // What was written of the line is taken back. A short write means that there is no more room.
    const int reason = count < 0 ? errno : ENOSPC;
    if (::ftruncate(descriptor_, static_cast<off_t>(size_)) != 0) {
        // The file ends with half a line; the next one is another file.
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
