// SPDX-License-Identifier: Apache-2.0
// Who closes a file descriptor.
#pragma once

#include <utility>

#include <unistd.h>

namespace Veskar {

/// Owns a file descriptor and closes it at the end. Without one it is empty.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// @param opened what open(), socket() and the like return; negative: none
    explicit FileDescriptor(int opened) : number_(opened) {}
    ~FileDescriptor() { reset(); }
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    explicit operator bool() const { return number_ >= 0; }
    /// @return the descriptor, still owned; negative without one
    int get() const { return number_; }
    /// Closes the descriptor, if there is one.
    void reset() {
        if (number_ >= 0) {
            ::close(number_);
            number_ = -1;
        }
    }

private:
    int number_ = -1;
};

}  // namespace Veskar
