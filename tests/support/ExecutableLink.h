// SPDX-License-Identifier: Apache-2.0
// Lets a test say where its program stands.
#pragma once

#include <optional>
#include <string>

namespace VeskarTest {

/// While one lives, readlink() gives an answer of the test's own.
class ExecutableLink {
public:
    /// @param path the answer; with none, the call fails
    explicit ExecutableLink(const std::optional<std::string>& path);
    ~ExecutableLink();
    ExecutableLink(const ExecutableLink&) = delete;
    ExecutableLink& operator=(const ExecutableLink&) = delete;

    /// @return the link that readlink() was last asked for, whether or not one lives
    static std::string lastAsked();
};

}  // namespace VeskarTest
