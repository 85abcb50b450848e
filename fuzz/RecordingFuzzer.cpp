// SPDX-License-Identifier: Apache-2.0
// Any text as a recording: it is read or refused with a reason, and what was read is the same once
// it has been written and read again.
#include <veskar-host/InputError.h>

#include "recording/RecordingReader.h"
#include "recording/RecordingWriter.h"
#include "support/InputFile.h"
#include "support/Require.h"

#include <string>
#include <variant>

using namespace VeskarFuzz;
using Workbench::RecordingReader;

namespace {

struct Reading {
    std::string text;  ///< the lines as written again
    bool isWhole = false;
};

Reading readAndWrite(std::string_view text) {
    const InputFile file(text);
    Reading reading;
    try {
        RecordingReader reader(file.path());
        reading.text = toJsonLine(reader.header());
        while (const auto line = reader.next()) {
            reading.text += std::visit([](const auto& frame) { return toJsonLine(frame); }, *line);
        }
        reading.isWhole = true;
    } catch (const Veskar::Host::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
    }
    return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Reading first = readAndWrite(asText(data, size));
    if (first.isWhole) {
        const Reading second = readAndWrite(first.text);
        // Times are rounded to a microsecond: two closer frames would get the same time.
        require(!second.isWhole || second.text == first.text, "writing and reading agree");
    }
    return 0;
}
