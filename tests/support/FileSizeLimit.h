// SPDX-License-Identifier: Apache-2.0
// Lets a disk be full.
#pragma once

#include <csignal>
#include <cstdint>

#include <sys/resource.h>

namespace VeskarTest {

/// While one lives, no file of this process grows beyond so many bytes.
class FileSizeLimit {
public:
    /// @param most bytes of a file
    explicit FileSizeLimit(std::uintmax_t most) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limited = before_;
        limited.rlim_cur = static_cast<rlim_t>(most);
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*handler_)(int);
    rlimit before_{};
};

}  // namespace VeskarTest
