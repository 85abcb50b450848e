// SPDX-License-Identifier: Apache-2.0
// Simulates the path of the test program.
#pragma once

#include <optional>
#include <string>

namespace VeskarTest {

/// During its lifetime readlink() returns a path chosen by the test.
class ExecutableLink {
public:
    /// @param path the result; if empty, the call fails
    explicit ExecutableLink(const std::optional<std::string>& path);
    ~ExecutableLink();
    ExecutableLink(const ExecutableLink&) = delete;
    ExecutableLink& operator=(const ExecutableLink&) = delete;

    /// @return the link last passed to readlink(), whether or not an object lives
    static std::string lastAsked();
};

}  // namespace VeskarTest
