// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/OptionChecks.h"
#include "cli/Progress.h"
#include "evaluate/MomentTables.h"
#include "evaluate/RecordingJudgement.h"
#include "io/OutputFile.h"

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
    Excerpt excerpt;
    std::string fused;
    std::string output = "-";
    std::string config;
    std::vector<std::string> changes;
    std::string camera;
    std::string format = "table";
    std::string moments;
    std::string objects;
    bool wholeScene = false;
    bool force = false;
    EvaluationOptions evaluation;
};

RecordingFigures judge(const EvaluateOptions& options) {
    JudgementTask task;
    task.recording = options.recording;
    task.excerpt = options.excerpt;
    task.fused = options.fused;
    task.camera = options.camera;
    task.options = options.evaluation;
    task.options.commonFieldOfView = !options.wholeScene;
    task.options.keepsMoments = !options.moments.empty() || !options.objects.empty();
    if (options.fused.empty()) {
        task.settings = readSettings(options.config, options.changes, warn);
    }
    Progress progress("evaluating");
    return judgeRecording(std::move(task), provenanceFor(options.force),
                          [&](double fraction) { progress.update(fraction); });
}

int evaluate(const EvaluateOptions& options) {
    refuseClashes({{"recording", options.recording},
                   {"fused tracks", options.fused},
                   {"configuration", options.config},
                   {"camera", options.camera}},
                  {{"report", options.output},
                   {"table of moments", options.moments},
                   {"table of objects", options.objects}});
    using Reader = OutputFile::Reader;
    const bool isAlone = options.moments.empty() && options.objects.empty();
    OutputFile output(options.output, isAlone ? Reader::MayLeave : Reader::MustStay);
    std::vector<std::unique_ptr<OutputFile>> tables;
    const auto open = [&](const std::string& path) -> OutputFile* {
        return path.empty()
                   ? nullptr
                   : tables.emplace_back(std::make_unique<OutputFile>(path, Reader::MustStay))
                         .get();
    };
    OutputFile* const moments = open(options.moments);
    OutputFile* const objects = open(options.objects);
    const RecordingFigures figures = judge(options);
    output.write(options.format == "json" ? toJsonText(figures.report) : toTable(figures.report));
    if (moments != nullptr) {
        moments->write(
            momentTable(figures.report.header, figures.overTime, formOf(options.moments)));
    }
    if (objects != nullptr) {
        objects->write(objectTable(figures.overTime, formOf(options.objects)));
    }
    for (const auto& table : tables) {
        table->complete();
    }
    output.complete();
    for (const auto& table : tables) {
        table->commit();
    }
    output.commit();
    if (figures.counts.failedFrames > 0) {
        writeError(fmt::format(
            "veskar: {}: the fusion could not associate {} frames; the first: {}\n",
            options.recording, figures.counts.failedFrames, figures.counts.firstFailure));
        return NegativeAnswer;
    }
    return Success;
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
    addExcerptOptions(*command, options->excerpt);
    command->add_option("--format", options->format, "table or json (default: table)")
        ->check(CLI::IsMember({"table", "json"}));
    command->add_option(
        "--moments", options->moments,
        "also write GOSPA of every tracker at every moment of truth: a table, CSV or, "
        "when the name ends in .json, JSON");
    command->add_option("--objects", options->objects,
                        "also write what became of every object with every tracker, as --moments");
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
        "is given; those of an excerpt belong to the same --start and --end.\n"
        "Exit status 1: the fusion could not associate some frames (too many tracks at once).\n"
        "\n"
        "Example:\n  veskar evaluate perimeter.jsonl --format json -o figures.json\n"
        "  veskar evaluate perimeter.jsonl perimeter.fused.jsonl\n"
        "  veskar evaluate perimeter.jsonl --moments moments.csv --objects objects.csv");
    command->callback([options, &action] { action = [options] { return evaluate(*options); }; });
}

}  // namespace Workbench
