// SPDX-License-Identifier: Apache-2.0
// The ends of a pipe.
#pragma once

#include "src/net/FileDescriptor.h"
#include "support/SystemCall.h"

#include <array>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace VeskarTest {

/// A pipe; both ends wait unless asked not to.
struct Pipe {
    explicit Pipe(int flags = 0) {
        std::array<int, 2> ends{};
        checked(::pipe2(ends.data(), O_CLOEXEC | flags), "pipe2");
        reader = Veskar::FileDescriptor(ends[0]);
        writer = Veskar::FileDescriptor(ends[1]);
    }

    Veskar::FileDescriptor reader;
    Veskar::FileDescriptor writer;
};

/// Writes all of a text.
inline void writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        text.remove_prefix(static_cast<std::size_t>(
            checked(static_cast<int>(::write(descriptor, text.data(), text.size())), "write")));
    }
}

/// Lets the next writer to a pipe wait.
inline void fill(const Pipe& pipe) {
    const std::string page(4096, 'x');
    checked(::fcntl(pipe.writer.get(), F_SETPIPE_SZ, page.size()), "fcntl");
    checked(::fcntl(pipe.writer.get(), F_SETFL, O_NONBLOCK), "fcntl");
    while (::write(pipe.writer.get(), page.data(), page.size()) > 0) {
    }
    checked(::fcntl(pipe.writer.get(), F_SETFL, 0), "fcntl");
}

/// @return what can be read at once
inline std::string readSome(int descriptor) {
    std::string text(std::size_t{1} << 20, '\0');
    const ssize_t count = ::read(descriptor, text.data(), text.size());
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

}  // namespace VeskarTest
