// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/OptionChecks.h"
#include "cli/Progress.h"
#include "io/Interruption.h"
#include "io/OutputFile.h"
#include "recording/RecordingWriter.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <cstdint>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

namespace Workbench {
namespace {

struct SimulateOptions {
    std::string scenario;
    std::string output = "-";
    std::uint64_t seed = 1;
    double duration = 0.0;
};

int simulate(const SimulateOptions& options) {
    refuseClashes({{"scenario", options.scenario}}, {{"recording", options.output}});
    Scenario scenario = readScenario(options.scenario);
    if (options.duration > 0.0) {
        scenario.duration = options.duration;
    }
    OutputFile output(options.output);
    Progress progress("simulating");
    Simulation simulation(scenario, options.seed);
    UnknownWords words = wordsToWarnOf(options.scenario == "-" ? "<stdin>" : options.scenario);
    output.write(toJsonLine(simulation.header()));
    simulation.run(
        [&](const RecordingLine& line) {
            words.look(line);
            output.write(std::visit([](const auto& frame) { return toJsonLine(frame); }, line));
        },
        [&](double time) {
            throwIfInterrupted();
            progress.update(time / scenario.duration);
        });
    output.commit();
    return Success;
}

}  // namespace

void addSimulateCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<SimulateOptions>();
    CLI::App* command = program.add_subcommand(
        "simulate", "Play a scenario and record what its sensors report, with the truth");
    command->add_option("scenario", options->scenario, "scenario file, or -")->required();
    command->add_option("-o,--output", options->output, "recording to write (default: -)");
    command
        ->add_option("--seed", options->seed,
                     "seed of everything that is drawn; the same seed gives the same bytes "
                     "(default: 1)")
        ->check(wholeNumber());
    command->add_option("--duration", options->duration, "seconds, instead of the scenario's")
        ->check(within(1e-3, 1e6));
    command->footer(
        "Example:\n  veskar simulate config/scenarios/road.json --seed 7 -o road.jsonl\n");
    command->callback([options, &action] { action = [options] { return simulate(*options); }; });
}

}  // namespace Workbench
