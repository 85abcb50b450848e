// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/Progress.h"
#include "io/OutputFile.h"
#include "replay/Replay.h"
#include "replay/Summary.h"

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

struct ReplayOptions {
    std::string recording;
    Excerpt excerpt;
    std::string output = "-";
    std::string config;
    std::vector<std::string> changes;
    std::string camera;
    std::string installation;
    std::string format = "jsonl";
    std::string explain;
    bool realtime = false;
    bool tags = false;
    bool summary = false;
};

/// The summary must not mix with tracks or explanations on standard output.
bool summaryGoesToStandardOutput(const ReplayOptions& options) {
    return options.summary && options.output != "-" && options.explain != "-";
}

int tell(const ReplayOptions& options, const FusionPipeline::Counts& counts,
         const Summary& summary) {
    if (options.summary) {
        const std::string text = summary.text(counts);
        if (summaryGoesToStandardOutput(options)) {
            OutputFile output("-");
            output.write(text);
            output.commit();
        } else {
            writeError(text);
        }
    }
    if (counts.failedFrames > 0) {
        tellFault(fmt::format("{}: the fusion could not associate {} of {} frames; the first: {}",
                              options.recording, counts.failedFrames,
                              counts.videoFrames + counts.radarFrames + counts.addedFrames,
                              counts.firstFailure));
        return NegativeAnswer;
    }
    return Success;
}

void checkFiles(const ReplayOptions& options) {
    refuseClashes({{"recording", options.recording},
                   {"configuration", options.config},
                   {"camera", options.camera},
                   {"installation", options.installation}},
                  {{"tracks", options.output},
                   {"explanations", options.explain},
                   {"summary", summaryGoesToStandardOutput(options) ? "-" : ""}});
}

ReplayTask taskOf(const ReplayOptions& options) {
    ReplayTask task;
    task.recording = options.recording;
    task.excerpt = options.excerpt;
    task.output = options.output;
    task.explanations = options.explain;
    task.camera = options.camera;
    task.installation = options.installation;
    task.format = options.format == "csv" ? ReplayTask::Format::Csv : ReplayTask::Format::JsonLines;
    task.inRealTime = options.realtime;
    task.withTags = options.tags;
    task.settings = readSettings(options.config, options.changes, warn);
    return task;
}

FusionPipeline::Counts replayWithSummary(const ReplayOptions& options, Summary& summary) {
    Progress progress("replaying");
    ReplayHooks hooks;
    hooks.progress = [&](double fraction) { progress.update(fraction); };
    hooks.unknownWord = wordWarnings(options.recording == "-" ? "<stdin>" : options.recording);
    if (options.summary) {
        hooks.fused = [&](const FusedFrame& frame) { summary.add(frame); };
    }
    return replay(taskOf(options), hooks);
}

int runReplay(const ReplayOptions& options) {
    checkFiles(options);
    Summary summary;
    const FusionPipeline::Counts counts = replayWithSummary(options, summary);
    return tell(options, counts, summary);
}

}  // namespace

void addReplayCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<ReplayOptions>();
    CLI::App* command = program.add_subcommand(
        "replay", "Send a recording through the fusion and write the fused tracks");
    command->add_option("recording", options->recording, "recording, or -")->required();
    command->add_option("-o,--output", options->output, "fused tracks to write (default: -)");
    addSettingsOptions(*command, options->config, options->changes);
    addExcerptOptions(*command, options->excerpt);
    command->add_option("--camera", options->camera, "camera to use instead of the recording's");
    command->add_option("--installation", options->installation,
                        "installation to use instead of the recording's: a header, or a file with "
                        "camera and radar");
    command->add_option("--format", options->format, "jsonl or csv (default: jsonl)")
        ->check(CLI::IsMember({"jsonl", "csv"}));
    command->add_option("--explain", options->explain,
                        "write for every fused frame why each candidate pair was or was not fused, "
                        "as JSON Lines");
    command->add_flag("--realtime", options->realtime,
                      "keep the recording's pace instead of going as fast as possible");
    command->add_flag("--tags", options->tags, "add the detection priority's tags");
    command->add_flag("--summary", options->summary, "print what happened");
    command->footer(
        "Exit status 1: the fusion could not associate some frames (too many tracks at once).\n"
        "\n"
        "Example:\n  veskar replay road.jsonl --config fusion.json -o fused.jsonl --summary\n");
    command->callback([options, &action] { action = [options] { return runReplay(*options); }; });
}

}  // namespace Workbench
