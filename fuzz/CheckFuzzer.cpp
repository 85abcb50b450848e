// SPDX-License-Identifier: Apache-2.0
// `veskar check` on any text: it ends with findings, whatever it takes the text for, or with the
// error that the text cannot be read at all, and what it calls a good recording is one.
#include <veskar-host/InputError.h>

#include "check/DocumentCheck.h"
#include "check/RecordingCheck.h"
#include "recording/RecordingReader.h"
#include "support/InputFile.h"
#include "support/ReadAll.h"
#include "support/Require.h"

#include <string>

using namespace VeskarFuzz;

namespace {

bool isReadable(const std::string& path) {
    try {
        Workbench::RecordingReader reader(path);
        readAll(reader);
        return true;
    } catch (const Veskar::Host::InputError&) {
        return false;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const InputFile file(asText(data, size));
    try {
        const auto kind = Workbench::kindOfDocument(file.path());
        if (kind != Workbench::DocumentKind::Recording) {
            Workbench::checkDocument(file.path(), kind);
            return 0;
        }
        const auto result = Workbench::checkRecording(file.path(), [](const auto&) {});
        require(isReadable(file.path()) || hasFault(result.findings),
                "what is refused has a fault");
    } catch (const Veskar::Host::InputError&) {
        // Damaged compressed data and a line that is too long, which the program reports.
        require(!isReadable(file.path()), "what cannot be checked cannot be read");
    }
    return 0;
}
