// SPDX-License-Identifier: Apache-2.0
#include "live/transport/Descriptor.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace Veskar::Live {

FileDescriptor withoutWaiting(int descriptor, int access) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        throw std::system_error(errno, std::generic_category(), "fstat");
    }
    if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode)) {
        const std::string name = "/proc/self/fd/" + std::to_string(descriptor);
        FileDescriptor own(::open(name.c_str(), access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
        if (own) {
            return own;
        }
    }
    FileDescriptor own(::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    if (!own) {
        throw std::system_error(errno, std::generic_category(), "fcntl");
    }
    if (!S_ISREG(status.st_mode)) {
        // Also of whoever shares it; the other choice is to wait for a reader that never reads.
        ::fcntl(own.get(), F_SETFL, ::fcntl(own.get(), F_GETFL) | O_NONBLOCK);
    }
    return own;
}

std::string textOf(int errorNumber) {
    return std::generic_category().message(errorNumber);
}

}  // namespace Veskar::Live
