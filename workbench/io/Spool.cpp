// SPDX-License-Identifier: Apache-2.0
#include "io/Spool.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace Workbench {

Spool::~Spool() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void Spool::fail(const char* doing) const {
    const int error = errno;
    throw InputError(path_, InputError(fmt::format("cannot {}: {}", doing, std::strerror(error))));
}

void Spool::create() {
    std::error_code none;
    path_ = (std::filesystem::temp_directory_path(none) / "veskar-XXXXXX").string();
    descriptor_ = ::mkostemp(path_.data(), O_CLOEXEC);
    if (descriptor_ < 0 || ::unlink(path_.c_str()) != 0) {
        fail("create");
    }
}

void Spool::append(const void* bytes, std::size_t count) {
    const char* const first = static_cast<const char*>(bytes);
    written_.insert(written_.end(), first, first + count);
    if (written_.size() > memoryLimit) {
        writeOut();
    }
}

void Spool::writeOut() {
    if (descriptor_ < 0) {
        create();
    }
    for (std::size_t done = 0; done < written_.size();) {
        const ssize_t count = ::pwrite(descriptor_, written_.data() + done, written_.size() - done,
                                       static_cast<off_t>(inFile_));
        if (count < 0 && errno != EINTR) {
            fail("write");
        }
        done += static_cast<std::size_t>(std::max<ssize_t>(0, count));
        inFile_ += static_cast<std::uint64_t>(std::max<ssize_t>(0, count));
    }
    written_.clear();
}

void Spool::rewind() {
    if (descriptor_ >= 0) {
        // All in one place: reading then never changes over from the file to memory.
        writeOut();
    }
    position_ = 0;
    reading_.clear();
    next_ = 0;
}

void Spool::readIn() {
    reading_.resize(
        static_cast<std::size_t>(std::min<std::uint64_t>(memoryLimit, inFile_ - position_)));
    ssize_t count = 0;
    do {
        count =
            ::pread(descriptor_, reading_.data(), reading_.size(), static_cast<off_t>(position_));
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        fail("read");
    }
    reading_.resize(static_cast<std::size_t>(count));
    position_ += static_cast<std::uint64_t>(count);
    next_ = 0;
}

void Spool::take(void* bytes, std::size_t count) {
    char* to = static_cast<char*>(bytes);
    while (count > 0) {
        if (descriptor_ >= 0 && next_ == reading_.size()) {
            readIn();
        }
        const std::vector<char>& from = descriptor_ >= 0 ? reading_ : written_;
        const std::size_t part = std::min(count, from.size() - next_);
        std::memcpy(to, from.data() + next_, part);
        to += part;
        next_ += part;
        count -= part;
    }
}

}  // namespace Workbench
