// SPDX-License-Identifier: Apache-2.0
// A directory for a test's files that no other process uses.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace VeskarTest {

/// Created with the object and removed with it, contents included.
class TemporaryDirectory {
public:
    TemporaryDirectory() : path_(testing::TempDir() + "veskar-XXXXXX") {
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

private:
    std::string path_;
};

}  // namespace VeskarTest
