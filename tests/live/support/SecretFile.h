// SPDX-License-Identifier: Apache-2.0
// Files with secrets, for the tests of connections.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace VeskarTest {

/// @param path a file
/// @param user its first line
/// @param password its second line
/// @return the path of the file, which other users cannot read
inline std::string secretFile(std::string path, const std::string& user,
                              const std::string& password) {
    std::ofstream(path) << user << "\n" << password << "\n";
    std::filesystem::permissions(path, std::filesystem::perms{0600});
    return path;
}

}  // namespace VeskarTest
