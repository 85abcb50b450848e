// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Inputs.h"
#include "cli/Interruption.h"
#include "cli/Progress.h"
#include "evaluate/EvaluationReport.h"
#include "io/InputError.h"
#include "io/OutputFile.h"
#include "recording/RecordingReader.h"
#include "replay/FusedTrack.h"
#include "replay/Replay.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

struct Options {
    std::string recording;
    std::string output = "-";
    std::string config;
    std::string camera;
    std::string format = "table";
    bool wholeScene = false;
    EvaluationOptions evaluation;
};

int evaluate(const Options& options) {
    const Veskar::Config config = readConfiguration(options.config).config;
    RecordingReader reader(options.recording);
    const RecordingHeader header = withCamera(reader.header(), options.camera);
    if (header.truth == TruthKind::None) {
        throw InputError(reader.input().name() + ": the recording has no truth to judge by");
    }
    OutputFile output(options.output);
    Progress progress("evaluating");
    EvaluationOptions wishes = options.evaluation;
    wishes.commonFieldOfView = !options.wholeScene;
    std::sort(wishes.bands.begin(), wishes.bands.end());
    Evaluation evaluation(header, config, wishes);
    const HostAdapter adapter(header, config);
    Replay replay(header, config, [&](FrameReading reading) {
        evaluation.add(placed(std::move(reading), adapter));
    });
    while (const auto line = reader.next()) {
        throwIfInterrupted();
        if (const auto* truth = std::get_if<TruthFrame>(&*line)) {
            replay.advance(truth->time);
        }
        evaluation.add(*line);
        if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
            replay.feed(*frame);
        }
        progress.update(reader.input().fractionRead());
    }
    if (evaluation.instants() == 0) {
        throw InputError(reader.input().name() + ": the recording has no truth line");
    }
    const EvaluationReport report{header, wishes, evaluation.instants(), evaluation.figures()};
    output.write(options.format == "json" ? toJsonText(report) : toTable(report));
    output.commit();
    if (replay.counts().failedFrames > 0) {
        fmt::print(stderr, "veskar: {}: the fusion could not associate {} frames; the first: {}\n",
                   options.recording, replay.counts().failedFrames, replay.counts().firstFailure);
        return negativeAnswer;
    }
    return success;
}

}  // namespace

void addEvaluateCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand(
        "evaluate", "Judge the fusion and each sensor alone by the truth of a recording");
    command->add_option("recording", options->recording, "recording with truth, or -")->required();
    command->add_option("-o,--output", options->output, "report to write (default: -)");
    command->add_option("--config", options->config,
                        "configuration of the fusion (default: the shipped one)");
    command->add_option("--camera", options->camera, "camera to use instead of the recording's");
    command->add_option("--format", options->format, "table or json (default: table)")
        ->check(CLI::IsMember({"table", "json"}));
    command
        ->add_option("--cutoff", options->evaluation.cutoff,
                     "cutoff of GOSPA and OSPA and distance of similarity zero, m; a track counts "
                     "as matched within half of it (default: 5)")
        ->check(CLI::Range(1e-3, 1e6));
    command
        ->add_option("--bands", options->evaluation.bands,
                     "where range bands begin, m (default: 0 20 40 80)")
        ->check(CLI::NonNegativeNumber);
    command
        ->add_option("--hits", options->evaluation.confirmationHits,
                     "how often a single sensor must have seen a track for it to count (default: 3 "
                     "8 15)")
        ->check(CLI::Range(1, 1000000));
    command->add_flag("--whole-scene", options->wholeScene,
                      "judge also where only one sensor can see");
    command->footer(
        "The fusion runs on the recording; its confirmed tracks and those of each sensor are "
        "compared with the truth at the same moments, as far as they had arrived by then.\n"
        "Exit status 1: the fusion could not associate some frames (too many tracks at once).\n"
        "\n"
        "Example:\n  veskar evaluate perimeter.jsonl --format json -o figures.json");
    command->callback([options, &action] { action = [options] { return evaluate(*options); }; });
}

}  // namespace Workbench
