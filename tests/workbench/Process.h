// SPDX-License-Identifier: Apache-2.0
// Runs the program as its users do.
#pragma once

#include <string>
#include <vector>

namespace VeskarTest {

/// What a process left behind.
struct Outcome {
    int status;          ///< exit status; -N when signal N ended it
    std::string output;  ///< standard output
    std::string errors;  ///< standard error
};

/// @param arguments program and arguments
/// @param input standard input
/// @return what came of it
Outcome run(const std::vector<std::string>& arguments, const std::string& input = "");

/// @param arguments arguments of the veskar program
/// @param input standard input
/// @return what came of it
Outcome veskar(std::vector<std::string> arguments, const std::string& input = "");

/// @param name a file in tests/workbench/data
/// @return its path
std::string dataFile(const std::string& name);

/// @param path a file
/// @return its text
std::string slurp(const std::string& path);

/// @param path a file
/// @param text its new text
void spill(const std::string& path, const std::string& text);

/// A directory of its own for a test, removed with everything in it.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// @param name a file name
    /// @return its path in the directory
    std::string operator/(const std::string& name) const { return path + "/" + name; }
    /// @return names of all files in it, sorted
    std::vector<std::string> names() const;

private:
    std::string path;
};

}  // namespace VeskarTest
