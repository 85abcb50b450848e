// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FusedFrame.h>
#include <veskar-host/InputError.h>

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/OptionChecks.h"
#include "cli/Progress.h"
#include "evaluate/EvaluationReport.h"
#include "evaluate/FusedFeed.h"
#include "host/pipeline/ReplayOptions.h"
#include "io/Interruption.h"
#include "io/OutputFile.h"
#include "recording/RecordingReader.h"
#include "replay/FusedReader.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

struct EvaluateOptions {
    std::string recording;
    std::string fused;
    std::string output = "-";
    std::string config;
    std::vector<std::string> changes;
    std::string camera;
    std::string format = "table";
    bool wholeScene = false;
    bool force = false;
    EvaluationOptions evaluation;
};

/// Sorts the values and removes duplicates, so that nothing is evaluated twice.
void sortOnce(std::vector<int>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

/// Bands out of order are a mistake that sorting would hide: "--bands 40 20".
void requireAscending(const std::vector<double>& bands) {
    const auto fault = std::adjacent_find(bands.begin(), bands.end(), std::greater_equal<>());
    if (fault != bands.end()) {
        throw InputError(
            fmt::format("--bands: {} comes after {}: they must ascend", *std::next(fault), *fault));
    }
}

/// Evaluates the whole recording.
/// @param follow passes the fused frames before a line to the evaluation
/// @return the report
std::string judge(RecordingReader& reader, Evaluation& evaluation, EvaluationReport report,
                  const std::string& format,
                  const std::function<void(const RecordingLine&)>& follow) {
    Progress progress("evaluating");
    while (const auto line = reader.next()) {
        throwIfInterrupted();
        follow(*line);
        evaluation.add(*line);
        progress.update(reader.input().fractionRead());
    }
    if (evaluation.instants() == 0) {
        throw InputError(reader.input().name(), InputError("the recording has no truth line"));
    }
    report.instants = evaluation.instants();
    report.parts = evaluation.figures();
    return format == "json" ? toJsonText(report) : toTable(report);
}

void requireTruth(const RecordingReader& reader) {
    if (reader.header().truth == TruthKind::None) {
        throw InputError(reader.input().name(),
                         InputError("the recording has no truth to judge by"));
    }
}

/// Runs the fusion on the recording and evaluates it.
int judgeRun(const EvaluateOptions& options, RecordingReader& reader,
             const EvaluationOptions& wishes) {
    const auto [config, parameters] = readSettings(options.config, options.changes);
    const RecordingHeader header = withCamera(reader.header(), options.camera);
    requireTruth(reader);
    OutputFile output(options.output);
    Evaluation evaluation(header, config, wishes);
    FusionPipeline run(
        header, config, [&](const FusedFrame& frame) { evaluation.add(frame); }, parameters,
        replayOptions());
    output.write(judge(reader, evaluation, {header, wishes, 0, {}}, options.format,
                       [&](const RecordingLine& line) {
                           if (const auto* frame = std::get_if<SensorFrame>(&line)) {
                               run.push(*frame);
                           } else {
                               run.advance(std::get<TruthFrame>(line).time);
                           }
                       }));
    output.commit();
    if (run.counts().failedFrames > 0) {
        writeError(
            fmt::format("veskar: {}: the fusion could not associate {} frames; the first: {}\n",
                        options.recording, run.counts().failedFrames, run.counts().firstFailure));
        return NegativeAnswer;
    }
    return Success;
}

/// Evaluates fused tracks from a file, with the installation and the configuration that it states.
int judgeFile(const EvaluateOptions& options, RecordingReader& reader,
              const EvaluationOptions& wishes) {
    FusedReader fused(options.fused);
    const Provenance provenance = provenanceFor(options.force);
    provenance.compareNames(fused, reader);
    const RecordingHeader header = headerOfRun(fused, reader.header());
    requireTruth(reader);
    OutputFile output(options.output);
    Evaluation evaluation(header, fused.config(), wishes);
    FusedFeed feed(fused, [&](const FusedFrame& frame) { evaluation.add(frame); });
    const std::string report = judge(reader, evaluation, {header, wishes, 0, {}}, options.format,
                                     [&](const RecordingLine& line) { feed.follow(line); });
    while (fused.next()) {
        // Reads to the end: the digests come after the last fused frame.
        throwIfInterrupted();
    }
    provenance.compareRun(fused, reader);
    output.write(report);
    output.commit();
    return Success;
}

int evaluate(const EvaluateOptions& options) {
    refuseClashes({{"recording", options.recording},
                   {"fused tracks", options.fused},
                   {"configuration", options.config},
                   {"camera", options.camera}},
                  {{"report", options.output}});
    RecordingReader reader(options.recording);
    EvaluationOptions wishes = options.evaluation;
    wishes.commonFieldOfView = !options.wholeScene;
    requireAscending(wishes.bands);
    sortOnce(wishes.confirmationHits);
    return options.fused.empty() ? judgeRun(options, reader, wishes)
                                 : judgeFile(options, reader, wishes);
}

}  // namespace

void addEvaluateCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<EvaluateOptions>();
    CLI::App* command = program.add_subcommand(
        "evaluate", "Judge the fusion and each sensor alone by the truth of a recording");
    command->add_option("recording", options->recording, "recording with truth, or -")->required();
    CLI::Option* fused = command->add_option(
        "fused", options->fused,
        "tracks that veskar replay made of this recording, or - (default: run the fusion)");
    command->add_option("-o,--output", options->output, "report to write (default: -)");
    for (CLI::Option* option : addSettingsOptions(*command, options->config, options->changes)) {
        option->excludes(fused);
    }
    command->add_option("--camera", options->camera, "camera to use instead of the recording's")
        ->excludes(fused);
    command->add_option("--format", options->format, "table or json (default: table)")
        ->check(CLI::IsMember({"table", "json"}));
    command
        ->add_option("--cutoff", options->evaluation.cutoff,
                     "cutoff of GOSPA and OSPA and distance of similarity zero, m; a track counts "
                     "as matched within half of it (default: 5)")
        ->check(within(1e-3, 1e6));
    command
        ->add_option("--bands", options->evaluation.bands,
                     "where range bands begin, m (default: 0 20 40 80)")
        ->check(CLI::NonNegativeNumber & number());
    command
        ->add_option("--hits", options->evaluation.confirmationHits,
                     "how often a single sensor must have seen a track for it to count (default: 3 "
                     "8 15)")
        ->check(CLI::Range(1, 1000000));
    command->add_flag("--whole-scene", options->wholeScene,
                      "judge also where only one sensor can see");
    addForceOption(*command, options->force)->needs(fused);
    command->footer(
        "The fusion runs on the recording, or its output is given; its confirmed tracks and those "
        "of each sensor are compared with the truth at the same moments, as far as they had "
        "arrived by then.\n"
        "Fused tracks that state another recording than the given one are refused unless --force "
        "is given.\n"
        "Exit status 1: the fusion could not associate some frames (too many tracks at once).\n"
        "\n"
        "Example:\n  veskar evaluate perimeter.jsonl --format json -o figures.json\n"
        "  veskar evaluate perimeter.jsonl perimeter.fused.jsonl");
    command->callback([options, &action] { action = [options] { return evaluate(*options); }; });
}

}  // namespace Workbench
