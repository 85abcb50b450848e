// SPDX-License-Identifier: Apache-2.0
#include "io/OutputFile.h"

#include "io/InputError.h"
#include "io/Interruption.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} << 10;

// What a file created with plain open() would get.
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

OutputFile::OutputFile(const std::string& givenPath)
    : path(givenPath), shownName(givenPath == "-" ? "<stdout>" : givenPath) {
    open();
    if (descriptor < 0) {
        fail("create");
    }
    struct stat status {};
    const bool isFile = ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    longestWrite = isFile ? std::numeric_limits<std::size_t>::max() : PIPE_BUF;
    buffer.reserve(bufferSize + 4096);
}

void OutputFile::open() {
    if (isStandardOutput()) {
        descriptor = ::dup(STDOUT_FILENO);
        return;
    }
    struct stat status {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor = openFile(path, O_WRONLY);
    } else if (exists || errno == ENOENT) {  // and not links in a circle
        openTemporary();
    }
}

void OutputFile::openTemporary() {
    target = behindLinks(path);
    // Without the file's own name: that may be as long as a name can be.
    temporaryPath = directoryOf(target) + "/veskar.part-XXXXXX";
    descriptor = ::mkostemp(temporaryPath.data(), O_CLOEXEC);
    if (descriptor < 0) {
        temporaryPath.clear();
    }
}

OutputFile::~OutputFile() {
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (!temporaryPath.empty()) {
        ::unlink(temporaryPath.c_str());
    }
}

void OutputFile::fail(const char* doing) const {
    throw InputError(fmt::format("{}: cannot {}: {}", shownName, doing, std::strerror(errno)));
}

void OutputFile::write(std::string_view text) {
    buffer += text;
    if (buffer.size() >= bufferSize) {
        flush();
    }
}

void OutputFile::flush() {
    std::string_view left = buffer;
    while (!left.empty()) {
        waitFor({{descriptor, POLLOUT, 0}});
        const ssize_t count = ::write(descriptor, left.data(), std::min(left.size(), longestWrite));
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count < 0) {
            fail("write");
        }
        left.remove_prefix(static_cast<std::size_t>(count));
    }
    buffer.clear();
}

void OutputFile::syncDirectory() const {
    const int directory = ::open(directoryOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        ::fsync(directory);
        ::close(directory);
    }
}

void OutputFile::commit() {
    flush();
    if (!temporaryPath.empty() &&
        (::fchmod(descriptor, usualMode()) != 0 || ::fsync(descriptor) != 0)) {
        fail("write");
    }
    // Some file systems report a failed write only here.
    if (::close(std::exchange(descriptor, -1)) != 0) {
        fail("write");
    }
    if (temporaryPath.empty()) {
        return;
    }
    if (::rename(temporaryPath.c_str(), target.c_str()) != 0) {
        fail("create");
    }
    temporaryPath.clear();
    syncDirectory();
}

}  // namespace Workbench
