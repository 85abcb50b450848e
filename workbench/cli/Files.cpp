// SPDX-License-Identifier: Apache-2.0
#include "cli/Files.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "io/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <optional>
#include <tuple>
#include <utility>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Workbench {
namespace {

/// Identifies a file independently of its name.
struct FileIdentity {
    dev_t device;      ///< of the file, or of the directory in which it would be created
    ino_t inode;       ///< as `device`
    std::string name;  ///< only of a file that does not exist yet: its name in the directory

    bool operator==(const FileIdentity& other) const {
        return std::tie(device, inode, name) == std::tie(other.device, other.inode, other.name);
    }
};

enum class Direction { Input, Output };

struct KnownFile {
    std::string role;
    std::string shownName;
    FileIdentity identity;
};

std::optional<FileIdentity> identityOf(const std::string& name, Direction direction) {
    const bool isInput = direction == Direction::Input;
    struct stat status {};
    const int failure = name == "-" ? ::fstat(isInput ? STDIN_FILENO : STDOUT_FILENO, &status)
                                    : ::stat(name.c_str(), &status);
    if (failure == 0) {
        const bool keepsWhatIsWritten = S_ISREG(status.st_mode) || S_ISBLK(status.st_mode);
        return keepsWhatIsWritten ? std::optional<FileIdentity>({status.st_dev, status.st_ino, ""})
                                  : std::nullopt;
    }
    if (isInput || errno != ENOENT) {
        return std::nullopt;
    }
    const std::filesystem::path place = behindLinks(name);
    if (::stat(directoryOf(place).c_str(), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{status.st_dev, status.st_ino, place.filename()};
}

std::vector<KnownFile> known(const std::vector<NamedFile>& files, Direction direction) {
    const char* stream = direction == Direction::Input ? "<stdin>" : "<stdout>";
    std::vector<KnownFile> found;
    for (const NamedFile& file : files) {
        const auto identity = file.path.empty() ? std::nullopt : identityOf(file.path, direction);
        if (identity) {
            found.push_back({file.role, file.path == "-" ? stream : file.path, *identity});
        }
    }
    return found;
}

// The second of two inputs would find the stream empty; two outputs would be mixed.
void refuseSharedStream(const std::vector<NamedFile>& files, const char* sharing) {
    const auto isStream = [](const NamedFile& file) { return file.path == "-"; };
    const auto first = std::find_if(files.begin(), files.end(), isStream);
    if (first == files.end()) {
        return;
    }
    const auto second = std::find_if(std::next(first), files.end(), isStream);
    if (second != files.end()) {
        throw InputError(
            fmt::format("{} and {} cannot both {}", first->role, second->role, sharing));
    }
}

}  // namespace

void refuseClashes(const std::vector<NamedFile>& inputs, const std::vector<NamedFile>& outputs) {
    refuseSharedStream(inputs, "come from standard input");
    refuseSharedStream(outputs, "go to standard output");
    const std::vector<KnownFile> read = known(inputs, Direction::Input);
    std::vector<KnownFile> written;
    for (KnownFile& output : known(outputs, Direction::Output)) {
        for (const KnownFile& input : read) {
            if (input.identity == output.identity) {
                throw InputError(
                    fmt::format("{}: the {} would overwrite the {}, {}: name another "
                                "file to write to",
                                output.shownName, output.role, input.role, input.shownName));
            }
        }
        for (const KnownFile& other : written) {
            if (other.identity == output.identity) {
                throw InputError(
                    fmt::format("{}: the {} would go to the same file as the {}, {}: "
                                "name two files",
                                output.shownName, output.role, other.role, other.shownName));
            }
        }
        written.push_back(std::move(output));
    }
}

}  // namespace Workbench
