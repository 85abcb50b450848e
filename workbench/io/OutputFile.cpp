// SPDX-License-Identifier: Apache-2.0
#include "io/OutputFile.h"

#include "io/InputError.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {
namespace {

constexpr std::size_t bufferSize = std::size_t{64} << 10;

bool isWrittenDirectly(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

// What a file created with plain open() would get.
mode_t usualMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

std::string directoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

}  // namespace

OutputFile::OutputFile(const std::string& givenPath)
    : path(givenPath), shownName(givenPath == "-" ? "<stdout>" : givenPath) {
    if (path == "-") {
        descriptor = ::dup(STDOUT_FILENO);
    } else if (isWrittenDirectly(path)) {
        descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    } else {
        temporaryPath = path + ".part-XXXXXX";
        descriptor = ::mkostemp(temporaryPath.data(), O_CLOEXEC);
        if (descriptor < 0) {
            temporaryPath.clear();
        }
    }
    if (descriptor < 0) {
        fail("create");
    }
    buffer.reserve(bufferSize + 4096);
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
        const ssize_t count = ::write(descriptor, left.data(), left.size());
        if (count < 0 && errno == EINTR) {
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
    const int directory = ::open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
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
    if (::rename(temporaryPath.c_str(), path.c_str()) != 0) {
        fail("create");
    }
    temporaryPath.clear();
    syncDirectory();
}

}  // namespace Workbench
