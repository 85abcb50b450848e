// SPDX-License-Identifier: Apache-2.0
// Exhausts file descriptors.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace VeskarTest {

/// During its lifetime this process can open only a given number of further file descriptors.
class DescriptorLimit {
public:
    explicit DescriptorLimit(unsigned count) {
        const int lowest = open("/dev/null", O_RDONLY | O_CLOEXEC);
        close(lowest);
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit limited = before_;
        limited.rlim_cur = static_cast<rlim_t>(lowest) + count;
        setrlimit(RLIMIT_NOFILE, &limited);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &before_); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

private:
    rlimit before_{};
};

}  // namespace VeskarTest
