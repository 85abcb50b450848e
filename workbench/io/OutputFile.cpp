// SPDX-License-Identifier: Apache-2.0
#include "io/OutputFile.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/FileError.h"
#include "io/Interruption.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} << 10;

// The mode that open() would give a new file.
mode_t usualMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

}  // namespace

std::filesystem::path behindLinks(std::filesystem::path path) {
    std::error_code none;
    while (std::filesystem::is_symlink(path, none)) {
        path = path.parent_path() / std::filesystem::read_symlink(path);
    }
    return path;
}

std::string directoryOf(const std::filesystem::path& path) {
    return path.has_parent_path() ? path.parent_path() : ".";
}

OutputFile::OutputFile(const std::string& path, Reader reader)
    : path_(path), reader_(reader), shownName_(path == "-" ? "<stdout>" : path) {
    open();
    if (descriptor_ < 0) {
        fail("create");
    }
    struct stat status {};
    const bool isFile = ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode);
    longestWrite_ = isFile ? std::numeric_limits<std::size_t>::max() : PIPE_BUF;
    buffer_.reserve(bufferSize + 4096);
    if (!isStandardOutput()) {
        encoder_ = encoderFor(path);
    }
}

void OutputFile::open() {
    if (isStandardOutput()) {
        descriptor_ = ::dup(STDOUT_FILENO);
        return;
    }
    struct stat status {};
    const bool exists = ::stat(path_.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = openFile(path_, O_WRONLY);
    } else if (exists || errno == ENOENT) {  // but not circular links
        openTemporary();
    }
}

void OutputFile::openTemporary() {
    target_ = behindLinks(path_);
    // Does not contain the file's name, which may have the maximum length already.
    temporaryPath_ = directoryOf(target_) + "/veskar.part-XXXXXX";
    descriptor_ = ::mkostemp(temporaryPath_.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        temporaryPath_.clear();
    }
}

OutputFile::~OutputFile() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
    if (!temporaryPath_.empty()) {
        ::unlink(temporaryPath_.c_str());
    }
}

void OutputFile::fail(const char* doing) const {
    const int number = errno;
    throw FileError(shownName_, number, std::string("cannot ") + doing + ": ");
}

void OutputFile::write(std::string_view text) {
    buffer_ += text;
    if (buffer_.size() >= bufferSize) {
        writeOut(Encoder::Until::Convenient);
    }
}

void OutputFile::flush() {
    writeOut(Encoder::Until::Now);
}

void OutputFile::writeOut(Encoder::Until until) {
    std::string compressed;
    if (encoder_) {
        compressed = encoder_->encode(buffer_, until);
    }
    std::string_view left = encoder_ ? compressed : buffer_;
    while (!left.empty()) {
        waitFor({{descriptor_, POLLOUT, 0}});
        const ssize_t count =
            ::write(descriptor_, left.data(), std::min(left.size(), longestWrite_));
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count < 0 && errno == EPIPE && isStandardOutput() && reader_ == Reader::MayLeave) {
            throw ReaderLeft();
        }
        if (count < 0) {
            fail("write");
        }
        left.remove_prefix(static_cast<std::size_t>(count));
    }
    buffer_.clear();
}

void OutputFile::syncDirectory() const {
    const int directory = ::open(directoryOf(target_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        ::fsync(directory);
        ::close(directory);
    }
}

void OutputFile::complete() {
    if (!isComplete_) {
        writeOut(Encoder::Until::End);
        isComplete_ = true;
    }
}

void OutputFile::commit() {
    complete();
    if (!temporaryPath_.empty() &&
        (::fchmod(descriptor_, usualMode()) != 0 || ::fsync(descriptor_) != 0)) {
        fail("write");
    }
    // Some file systems report a failed write only here.
    if (::close(std::exchange(descriptor_, -1)) != 0) {
        fail("write");
    }
    if (temporaryPath_.empty()) {
        return;
    }
    if (::rename(temporaryPath_.c_str(), target_.c_str()) != 0) {
        fail("create");
    }
    temporaryPath_.clear();
    syncDirectory();
}

}  // namespace Workbench
