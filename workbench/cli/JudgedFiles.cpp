// SPDX-License-Identifier: Apache-2.0
#include "cli/JudgedFiles.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "recording/FileFormat.h"

#include <filesystem>
#include <system_error>

namespace Workbench {
namespace {

/// Pipes are not looked into, since what has been read of them is gone.
bool isRecording(const std::string& path) {
    std::error_code none;
    return path != "-" && std::filesystem::is_regular_file(path, none) &&
           formatOf(path) == "veskar-recording";
}

bool isPipe(const std::string& path) {
    std::error_code none;
    return path == "-" || std::filesystem::is_fifo(path, none);
}

}  // namespace

std::vector<JudgedFiles> groupFiles(const std::vector<std::string>& files) {
    std::vector<JudgedFiles> groups;
    for (const std::string& file : files) {
        if (groups.empty() || isRecording(file)) {
            groups.push_back({file, {}});
        } else {
            groups.back().runs.push_back(file);
        }
    }
    const JudgedFiles& first = groups.front();
    for (const JudgedFiles& group : groups) {
        if (isPipe(group.recording) && group.runs.size() > 1) {
            throw InputError(group.recording == "-" ? "<stdin>" : group.recording,
                             InputError("is read once for each run: name a file"));
        }
        if (group.runs.size() != first.runs.size()) {
            throw InputError(group.recording,
                             InputError("has another number of runs than " + first.recording +
                                        "; runs are compared by their places"));
        }
    }
    return groups;
}

}  // namespace Workbench
