// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/FramePublisher.h"
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
#include <optional>
#include <string>
#include <variant>

#include <CLI/CLI.hpp>

namespace Workbench {
namespace {

struct SimulateOptions {
    std::string scenario;
    std::string output;   ///< empty: standard output, unless the frames are published
    std::string publish;  ///< path of a run.json; empty: nothing is published
    std::uint64_t seed = 1;
    double duration = 0.0;

    /// @return the recording to write; empty: none
    std::string recording() const { return output.empty() && publish.empty() ? "-" : output; }
};

/// Receives the header and the lines of a recording.
class SimulationSink {
public:
    SimulationSink(const SimulateOptions& options, const RecordingHeader& header) {
        if (!options.recording().empty()) {
            using Reader = OutputFile::Reader;
            file_.emplace(options.recording(),
                          options.publish.empty() ? Reader::MayLeave : Reader::MustStay);
            file_->write(toJsonLine(header));
        }
        if (!options.publish.empty()) {
            publisher_ = publisherFor(options.publish, header);
        }
    }

    void take(const RecordingLine& line) {
        if (file_) {
            file_->write(std::visit([](const auto& frame) { return toJsonLine(frame); }, line));
        }
        if (const auto* frame = std::get_if<SensorFrame>(&line); frame != nullptr && publisher_) {
            publisher_->publish(*frame);
        }
    }

    void finish() {
        if (publisher_) {
            publisher_->finish();
        }
        if (file_) {
            file_->commit();
        }
    }

private:
    std::optional<OutputFile> file_;
    std::unique_ptr<FramePublisher> publisher_;
};

int simulate(const SimulateOptions& options) {
    refuseClashes({{"scenario", options.scenario}, {"run", options.publish}},
                  {{"recording", options.recording()}});
    Scenario scenario = readScenario(options.scenario);
    if (options.duration > 0.0) {
        scenario.duration = options.duration;
    }
    Progress progress("simulating");
    Simulation simulation(scenario, options.seed);
    UnknownWords words(wordWarnings(options.scenario == "-" ? "<stdin>" : options.scenario));
    SimulationSink sink(options, simulation.header());
    simulation.run(
        [&](const RecordingLine& line) {
            words.look(line);
            sink.take(line);
        },
        [&](double time) {
            throwIfInterrupted();
            progress.update(time / scenario.duration);
        });
    sink.finish();
    return Success;
}

}  // namespace

void addSimulateCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<SimulateOptions>();
    CLI::App* command = program.add_subcommand(
        "simulate", "Play a scenario and record what its sensors report, with the truth");
    command->add_option("scenario", options->scenario, "scenario file, or -")->required();
    command->add_option("-o,--output", options->output,
                        "recording to write (default: -; none with --publish)");
    command->add_option(
        "--publish", options->publish,
        "run.json of a `veskar run`: send its sensors' inputs, which must be topics "
        "of brokers, the reports at their pace, as cameras and radars do");
    command
        ->add_option("--seed", options->seed,
                     "seed of everything that is drawn; the same seed gives the same bytes "
                     "(default: 1)")
        ->check(wholeNumber());
    command->add_option("--duration", options->duration, "seconds, instead of the scenario's")
        ->check(within(1e-3, 1e6));
    command->footer(
        "Example:\n"
        "  veskar simulate config/scenarios/road.json --seed 7 -o road.jsonl\n"
        "  veskar simulate config/scenarios/road.json --publish run.json\n");
    command->callback([options, &action] { action = [options] { return simulate(*options); }; });
}

}  // namespace Workbench
