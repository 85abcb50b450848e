// SPDX-License-Identifier: Apache-2.0
// Error handling of system calls in tests.
#pragma once

#include <cerrno>
#include <system_error>

namespace VeskarTest {

/// @return the result of a system call
/// @throw std::system_error when it is negative
inline int checked(int result, const char* what) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return result;
}

}  // namespace VeskarTest
