// SPDX-License-Identifier: Apache-2.0
#include "support/ExecutableLink.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace VeskarTest {
namespace {

bool pretends = false;
std::optional<std::string> pretended;
std::string asked;

ssize_t answer(const char* path, char* buffer, std::size_t size) {
    asked = path;
    if (!pretends) {
        return syscall(SYS_readlinkat, AT_FDCWD, path, buffer, size);
    }
    if (!pretended) {
        errno = ENOENT;
        return -1;
    }
    return static_cast<ssize_t>(pretended->copy(buffer, size));
}

}  // namespace

ExecutableLink::ExecutableLink(const std::optional<std::string>& path) {
    pretends = true;
    pretended = path;
}

ExecutableLink::~ExecutableLink() {
    pretends = false;
}

std::string ExecutableLink::lastAsked() {
    return asked;
}

}  // namespace VeskarTest

// This definition overrides that of the C library.
// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name)
extern "C" ssize_t readlink(const char* path, char* buffer, std::size_t size) noexcept {
    return VeskarTest::answer(path, buffer, size);
}
