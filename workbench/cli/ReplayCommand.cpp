// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/Progress.h"
#include "host/fused/FusedText.h"
#include "host/pipeline/ReplayOptions.h"
#include "io/Interruption.h"
#include "io/OutputFile.h"
#include "recording/ReadAhead.h"
#include "recording/RecordingReader.h"
#include "replay/Explainer.h"
#include "replay/FusedCsv.h"
#include "replay/FusedJson.h"
#include "replay/RunDigests.h"
#include "replay/Summary.h"
#include "replay/WriteBehind.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

struct ReplayOptions {
    std::string recording;
    std::string output = "-";
    std::string config;
    std::vector<std::string> changes;
    std::string camera;
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

// Delays frames until as much wall time has passed as recorded time.
class Pace {
public:
    void waitFor(double time) {
        if (!isRunning_) {
            isRunning_ = true;
            first_ = time;
        }
        // Limits the waiting time to what the clock can represent.
        constexpr double longest = 1e9;
        const std::chrono::duration<double> elapsed(std::min(time - first_, longest));
        sleepUntil(start_ + std::chrono::duration_cast<Clock::duration>(elapsed));
    }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point start_ = Clock::now();
    double first_ = 0.0;
    bool isRunning_ = false;
};

/// Output of the explanations, if requested.
class ExplanationOutput {
public:
    explicit ExplanationOutput(const std::string& path)
        : file_(path.empty() ? nullptr
                             : std::make_unique<OutputFile>(path, OutputFile::Reader::MustStay)),
          explainer_([this](const std::string& line) { file_->write(line); }, replayUptime) {}

    Veskar::FusionObserver* observer() { return file_ ? &explainer_ : nullptr; }
    void finish(const std::string& closing) {
        if (file_) {
            explainer_.finish();
            file_->write(closing);
            file_->commit();
        }
    }

private:
    std::unique_ptr<OutputFile> file_;
    Explainer explainer_;
};

/// Runs the fusion on the whole recording.
void feed(RecordingReader& reader, FusionPipeline& run, bool inRealTime) {
    Progress progress("replaying");
    Pace pace;
    UnknownWords words = wordsToWarnOf(reader.input().name());
    ReadAhead lines(reader);
    while (const auto line = lines.next()) {
        throwIfInterrupted();
        words.look(*line);
        if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
            if (inRealTime) {
                pace.waitFor(frame->received);
            }
            run.push(*frame);
        }
        progress.update(lines.fractionRead());
    }
    if (const std::optional<double> end = lines.end()) {
        if (inRealTime) {
            pace.waitFor(*end);
        }
        run.advance(*end);
    }
}

int finish(const ReplayOptions& options, const FusionPipeline& run, const Summary& summary) {
    if (options.summary) {
        const std::string text = summary.text(run.counts());
        if (summaryGoesToStandardOutput(options)) {
            OutputFile output("-");
            output.write(text);
            output.commit();
        } else {
            writeError(text);
        }
    }
    const FusionPipeline::Counts& counts = run.counts();
    if (counts.failedFrames > 0) {
        writeError(fmt::format(
            "veskar: {}: the fusion could not associate {} of {} frames; the first: {}\n",
            options.recording, counts.failedFrames,
            counts.videoFrames + counts.radarFrames + counts.addedFrames, counts.firstFailure));
        return NegativeAnswer;
    }
    return Success;
}

void checkFiles(const ReplayOptions& options) {
    refuseClashes({{"recording", options.recording},
                   {"configuration", options.config},
                   {"camera", options.camera}},
                  {{"tracks", options.output},
                   {"explanations", options.explain},
                   {"summary", summaryGoesToStandardOutput(options) ? "-" : ""}});
}

int replay(const ReplayOptions& options) {
    checkFiles(options);
    const auto [config, parameters] = readSettings(options.config, options.changes);
    RecordingReader reader(options.recording, TruthLines::Skip);
    const RecordingHeader header = withCamera(reader.header(), options.camera);
    const bool isCsv = options.format == "csv";

    using Reader = OutputFile::Reader;
    OutputFile output(options.output,
                      options.explain.empty() ? Reader::MayLeave : Reader::MustStay);
    output.write(isCsv ? csvHeader()
                       : fusedHeaderLine(header, config.toJson(), parameters.toJson()));
    Summary summary;
    WriteBehind writer(
        output,
        [&](LineText& text, const FusedFrame& frame) {
            if (options.summary) {
                summary.add(frame);
            }
            if (isCsv) {
                appendCsvRows(text, frame);
            } else {
                append(text, frame);
            }
        },
        options.realtime ? WriteBehind::Flush::EveryFrame : WriteBehind::Flush::WhenFull);
    FusionPipeline::Options replaying = replayOptions();
    replaying.withTags = options.tags;
    FusionPipeline run(
        header, config, [&](const FusedFrame& frame) { writer.write(frame); }, parameters,
        replaying);
    ExplanationOutput explanations(options.explain);
    run.setObserver(explanations.observer());
    feed(reader, run, options.realtime);
    const std::string closing =
        closingLine(digestsOfRun(reader.digest(), header, config.toJson(), parameters.toJson()));
    explanations.finish(closing);
    writer.finish();
    if (!isCsv) {
        output.write(closing);
    }
    output.commit();
    return finish(options, run, summary);
}

}  // namespace

void addReplayCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<ReplayOptions>();
    CLI::App* command = program.add_subcommand(
        "replay", "Send a recording through the fusion and write the fused tracks");
    command->add_option("recording", options->recording, "recording, or -")->required();
    command->add_option("-o,--output", options->output, "fused tracks to write (default: -)");
    addSettingsOptions(*command, options->config, options->changes);
    command->add_option("--camera", options->camera, "camera to use instead of the recording's");
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
    command->callback([options, &action] { action = [options] { return replay(*options); }; });
}

}  // namespace Workbench
