// SPDX-License-Identifier: Apache-2.0
// Programs that tests start.
#pragma once

#include "src/net/FileDescriptor.h"

#include <string>
#include <vector>

#include <sys/types.h>

namespace VeskarTest {

/// Runs a program to its end, without its output.
/// @throw std::runtime_error when it fails
void runCommand(const std::vector<std::string>& arguments);

/// A program that runs until the object is destroyed, or the test program ends, even if that
/// crashes.
class Daemon {
public:
    /// Returns when the program has written a text to its standard error, and reads on.
    /// @throw std::runtime_error when it ends without that
    Daemon(const std::vector<std::string>& arguments, const std::string& ready);
    ~Daemon();
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

    /// @param number of a signal that the program gets
    void signal(int number) const;

private:
    pid_t process_ = -1;
    Veskar::FileDescriptor log_;
};

}  // namespace VeskarTest
