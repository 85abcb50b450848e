// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/JudgedFiles.h"
#include "cli/OptionChecks.h"
#include "cli/Progress.h"
#include "evaluate/MomentTables.h"
#include "evaluate/RecordingJudgement.h"
#include "evaluate/RecordingsReport.h"
#include "io/OutputFile.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

struct EvaluateOptions {
    std::vector<std::string> files;
    Excerpt excerpt;
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

RecordingFigures judge(const EvaluateOptions& options, const JudgedFiles& files) {
    JudgementTask task;
    task.recording = files.recording;
    task.excerpt = options.excerpt;
    task.runs = files.runs;
    task.camera = options.camera;
    task.options = options.evaluation;
    task.options.commonFieldOfView = !options.wholeScene;
    task.options.keepsMoments = !options.moments.empty() || !options.objects.empty();
    if (files.runs.empty()) {
        task.settings = readSettings(options.config, options.changes, warn);
    }
    Progress progress("evaluating");
    return judgeRecording(std::move(task), provenanceFor(options.force),
                          [&](double fraction) { progress.update(fraction); });
}

int tellFailures(const std::string& recording, const FusionPipeline::Counts& counts) {
    if (counts.failedFrames == 0) {
        return Success;
    }
    tellFault(fmt::format("{}: the fusion could not associate {} frames; the first: {}", recording,
                          counts.failedFrames, counts.firstFailure));
    return NegativeAnswer;
}

/// @return the files to judge
/// @throw InputError when they do not go together with each other or with the other options
std::vector<JudgedFiles> filesOf(const EvaluateOptions& options) {
    std::vector<NamedFile> inputs;
    for (const std::string& file : options.files) {
        inputs.push_back({inputs.empty() ? "recording" : "fused tracks", file});
    }
    inputs.push_back({"configuration", options.config});
    inputs.push_back({"camera", options.camera});
    refuseClashes(inputs, {{"report", options.output},
                           {"table of moments", options.moments},
                           {"table of objects", options.objects}});
    std::vector<JudgedFiles> files = groupFiles(options.files);
    const bool hasRuns = !files.front().runs.empty();
    const bool isSet =
        !options.config.empty() || !options.changes.empty() || !options.camera.empty();
    if (hasRuns && isSet) {
        throw InputError("evaluate", InputError("--config, --set and --camera are for the fusion; "
                                                "fused tracks state what they were made with"));
    }
    if (options.force && !hasRuns) {
        throw InputError("evaluate", InputError("--force is for fused tracks"));
    }
    if (files.size() > 1 && !(options.moments.empty() && options.objects.empty())) {
        throw InputError("evaluate", InputError("--moments and --objects are of one recording"));
    }
    return files;
}

std::string textOf(const std::vector<EvaluationReport>& reports, const std::string& format) {
    return format == "json"  ? toJsonText(reports)
           : format == "csv" ? toCsv(reports)
                             : toTable(reports);
}

int evaluate(const EvaluateOptions& options) {
    const std::vector<JudgedFiles> files = filesOf(options);
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
    std::vector<EvaluationReport> reports;
    RecordingFigures figures;
    int status = Success;
    for (const JudgedFiles& judged : files) {
        figures = judge(options, judged);
        reports.push_back(figures.report);
        status = std::max<int>(status, tellFailures(judged.recording, figures.counts));
    }
    output.write(textOf(reports, options.format));
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
    return status;
}

}  // namespace

void addEvaluateCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<EvaluateOptions>();
    CLI::App* command = program.add_subcommand(
        "evaluate", "Judge the fusion and each sensor alone by the truth of a recording");
    command
        ->add_option("files", options->files,
                     "recordings with truth, or -, each followed by the tracks that veskar replay "
                     "or another tracker made of it, or - (default: run the fusion)")
        ->required();
    command->add_option("-o,--output", options->output, "report to write (default: -)");
    addSettingsOptions(*command, options->config, options->changes);
    command->add_option("--camera", options->camera, "camera to use instead of the recording's");
    addExcerptOptions(*command, options->excerpt);
    command->add_option("--format", options->format, "table, json or csv (default: table)")
        ->check(CLI::IsMember({"table", "json", "csv"}));
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
    addForceOption(*command, options->force);
    command->footer(
        "The fusion runs on the recording, or its output is given; its confirmed tracks and those "
        "of each sensor are compared with the truth at the same moments, as far as they had "
        "arrived by then.\n"
        "Several runs of a recording are judged side by side, and over several recordings mean and "
        "standard deviation are told, too.\n"
        "Fused tracks that state another recording than the given one are refused unless --force "
        "is given; those of an excerpt belong to the same --start and --end.\n"
        "Exit status 1: the fusion could not associate some frames (too many tracks at once).\n"
        "\n"
        "Example:\n  veskar evaluate perimeter.jsonl --format json -o figures.json\n"
        "  veskar evaluate perimeter.jsonl perimeter.fused.jsonl other.fused.jsonl\n"
        "  veskar evaluate monday.jsonl tuesday.jsonl --config mine.json\n"
        "  veskar evaluate perimeter.jsonl --moments moments.csv --objects objects.csv");
    command->callback([options, &action] { action = [options] { return evaluate(*options); }; });
}

}  // namespace Workbench
