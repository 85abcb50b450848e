// SPDX-License-Identifier: Apache-2.0
// Any text as fused tracks: they are read or refused with a reason.
#include <veskar-host/InputError.h>

#include "replay/FusedReader.h"
#include "support/InputFile.h"
#include "support/Require.h"

#include <syslog.h>

using namespace VeskarFuzz;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setlogmask(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const InputFile file(asText(data, size));
    try {
        Workbench::FusedReader reader(file.path());
        while (reader.next()) {
        }
        static_cast<void>(reader.config());
    } catch (const Workbench::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
    }
    return 0;
}
