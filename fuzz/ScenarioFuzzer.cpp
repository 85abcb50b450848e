// SPDX-License-Identifier: Apache-2.0
// Any text as a scenario: what `check` finds good can be simulated, in bounded work, and gives
// lines that a reader takes.
#include <veskar-host/InputError.h>

#include "check/DocumentCheck.h"
#include "io/Compression.h"
#include "recording/RecordingReader.h"
#include "recording/RecordingWriter.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"
#include "support/InputFile.h"
#include "support/ReadAll.h"
#include "support/Require.h"

#include <algorithm>
#include <optional>
#include <string>

using namespace VeskarFuzz;

namespace {

struct Enough {};

std::optional<Workbench::Scenario> read(const std::string& path) {
    try {
        return Workbench::readScenario(path);
    } catch (const Veskar::Host::InputError& error) {
        require(*error.what() != '\0', "a refusal has a reason");
        return std::nullopt;
    }
}

std::string play(Workbench::Scenario scenario) {
    constexpr std::size_t enough = 200000;  // bytes
    scenario.duration = std::min(scenario.duration, 1.0);
    Workbench::Simulation simulation(scenario, 1);
    std::string text = toJsonLine(simulation.header());
    try {
        simulation.run(
            [&](const Workbench::RecordingLine& line) {
                text += std::visit([](const auto& frame) { return toJsonLine(frame); }, line);
                if (text.size() > enough) {
                    throw Enough();
                }
            },
            [](double) {});
    } catch (const Enough&) {
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (Workbench::decoderOf(asText(data, size))) {
        return 0;  // damaged compressed data cannot be read; recordings show that this is told
    }
    const InputFile file(asText(data, size));
    const auto findings = Workbench::checkDocument(file.path(), Workbench::DocumentKind::Scenario);
    const auto scenario = read(file.path());
    require(scenario.has_value() || hasFault(findings), "what is refused has a fault");
    if (scenario && scenario->objects.size() <= 8) {
        const InputFile recording(play(*scenario));
        Workbench::RecordingReader reader(recording.path());
        readAll(reader);
    }
    return 0;
}
