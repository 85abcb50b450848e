// SPDX-License-Identifier: Apache-2.0
// Any text as fused tracks: they are read or refused with a reason.
#include <veskar-host/InputError.h>

#include "replay/FusedReader.h"
#include "support/InputFile.h"
#include "support/ReadAll.h"
#include "support/Require.h"

using namespace VeskarFuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const InputFile file(asText(data, size));
    try {
        Workbench::FusedReader reader(file.path());
        readAll(reader);
        static_cast<void>(reader.config());
    } catch (const Veskar::Host::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
    }
    return 0;
}
