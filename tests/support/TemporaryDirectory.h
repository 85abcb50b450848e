// SPDX-License-Identifier: Apache-2.0
// A directory for a test's files that no other process uses.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace VeskarTest {

/// Created with the object and removed with it, contents included.
class TemporaryDirectory {
public:
    TemporaryDirectory() : path_(std::filesystem::temp_directory_path() / "veskar-test-XXXXXX") {
        if (mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error("cannot make " + path_);
        }
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    /// @return the path of a file in it
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    std::string operator/(const std::string& name) const { return file(name); }
    /// @return names of all files in it, sorted
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) {
            found.push_back(entry.path().filename());
        }
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    std::string path_;
};

}  // namespace VeskarTest
