// SPDX-License-Identifier: Apache-2.0
// Lets a disk be full.
#pragma once

#include <csignal>

#include <sys/resource.h>

namespace VeskarTest {

/// While one lives, no file of this process grows beyond so many bytes.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t most) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limited = before_;
        limited.rlim_cur = most;
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
