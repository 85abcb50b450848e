// SPDX-License-Identifier: Apache-2.0
#include "export/DirectoryOutput.h"

#include <veskar-host/InputError.h>

#include "HostLibrary.h"

#include <system_error>

namespace Workbench {

OutputFile& DirectoryOutput::file(const std::filesystem::path& name) {
    std::unique_ptr<OutputFile>& file = files_[name];
    if (!file) {
        const std::filesystem::path directory = place(name).parent_path();
        std::error_code failure;
        std::filesystem::create_directories(directory, failure);
        if (failure) {
            throw InputError(directory, InputError("cannot create it: " + failure.message()));
        }
        file = std::make_unique<OutputFile>(place(name), OutputFile::Reader::MustStay);
    }
    return *file;
}

void DirectoryOutput::commit() {
    for (const auto& entry : files_) {
        entry.second->complete();
    }
    for (const auto& entry : files_) {
        entry.second->commit();
    }
}

}  // namespace Workbench
