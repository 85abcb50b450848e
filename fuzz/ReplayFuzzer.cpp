// SPDX-License-Identifier: Apache-2.0
// `veskar replay` on any text: what can be read goes through the fusion, and the fused tracks that
// come out are ones that a reader takes.
#include <veskar-host/InputError.h>
#include <veskar/Config.h>

#include "host/pipeline/ReplayOptions.h"
#include "recording/RecordingReader.h"
#include "replay/FusedJson.h"
#include "replay/FusedReader.h"
#include "support/InputFile.h"
#include "support/ReadAll.h"
#include "support/Require.h"

#include <string>
#include <variant>

using namespace VeskarFuzz;
using Workbench::RecordingReader;

namespace {

const Veskar::Config& config() {
    static const Veskar::Config shipped = Veskar::Config::defaults();
    return shipped;
}

/// Replays to the end or to the first fault of the text.
std::string replay(RecordingReader& reader) {
    std::string fused = Workbench::fusedHeaderLine(reader.header(), config().toJson(), "{}");
    Workbench::FusionPipeline run(
        reader.header(), config(),
        [&](const Workbench::FusedFrame& frame) { fused += toJsonLine(frame); }, {},
        Workbench::replayOptions());
    try {
        while (const auto line = reader.next()) {
            if (const auto* frame = std::get_if<Workbench::SensorFrame>(&*line)) {
                run.push(*frame);
            }
        }
    } catch (const Veskar::Host::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
    }
    return fused;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const InputFile file(asText(data, size));
    std::string fused;
    try {
        RecordingReader reader(file.path(), Workbench::TruthLines::Skip);
        fused = replay(reader);
    } catch (const Veskar::Host::InputError&) {
        return 0;  // faulty header
    }
    const InputFile output(fused);
    Workbench::FusedReader reader(output.path());
    readAll(reader);
    return 0;
}
