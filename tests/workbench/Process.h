// SPDX-License-Identifier: Apache-2.0
// Runs the program as a user does.
#pragma once

#include "support/TemporaryDirectory.h"

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace VeskarTest {

/// Results of a process.
struct Outcome {
    int status;          ///< exit status; -N when signal N ended it
    std::string output;  ///< standard output
    std::string errors;  ///< standard error
};

/// @param arguments program and arguments
/// @param input standard input
/// @return its results
Outcome run(const std::vector<std::string>& arguments, const std::string& input = "");

/// @param arguments arguments of the veskar program
/// @param input standard input
/// @return its results
Outcome veskar(std::vector<std::string> arguments, const std::string& input = "");

/// The veskar program, running in parallel to the test.
class RunningProgram {
public:
    /// Descriptors of the standard streams; if negative, an empty input, and files.
    struct Streams {
        int input = -1;
        int output = -1;
        int errors = -1;
    };

    /// @param arguments arguments of the program
    /// @param streams its standard streams
    /// @param ignored a signal that it inherits as ignored; 0: none
    RunningProgram(std::vector<std::string> arguments, const Streams& streams, int ignored = 0);
    /// Kills it if it still runs.
    ~RunningProgram();
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    /// Waits until it handles signals and is blocked in a wait.
    void awaitIdle() const;
    /// Waits until a condition holds, at most a minute.
    /// @param condition polled
    void await(const std::function<bool()>& condition) const;
    /// Waits until it has written to its standard output, which is a file.
    void awaitOutput() const;
    /// @param signal sent to it
    void send(int signal) const;
    /// @return its process
    pid_t id() const { return child_; }
    /// @return what it has written to its standard error, which is a file
    std::string errors() const;
    /// @return its results; status -SIGKILL when it did not end within a minute
    Outcome finish();

private:
    bool listens() const;

    TemporaryDirectory directory_;
    pid_t child_ = -1;
};

/// @param name a file in tests/workbench/data
/// @return its path
std::string dataFile(const std::string& name);

/// @param path a file
/// @return its text
std::string slurp(const std::string& path);

/// @param path a file
/// @param text its new text
void spill(const std::string& path, const std::string& text);

}  // namespace VeskarTest
