// SPDX-License-Identifier: Apache-2.0
#include "replay/Replay.h"

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
#include "replay/WriteBehind.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

namespace Workbench {
namespace {

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
    void complete(const std::string& closing) {
        if (file_) {
            explainer_.finish();
            file_->write(closing);
            file_->complete();
        }
    }
    void commit() {
        if (file_) {
            file_->commit();
        }
    }

private:
    std::unique_ptr<OutputFile> file_;
    Explainer explainer_;
};

/// Runs the fusion on the whole recording.
void feed(RecordingReader& reader, FusionPipeline& run, bool inRealTime, const ReplayHooks& hooks) {
    Pace pace;
    UnknownWords words(hooks.unknownWord);
    ReadAhead lines(reader);
    while (const auto line = lines.next()) {
        throwIfInterrupted();
        if (hooks.unknownWord) {
            words.look(*line);
        }
        if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
            if (inRealTime) {
                pace.waitFor(frame->received);
            }
            run.push(*frame);
        }
        if (hooks.progress) {
            hooks.progress(lines.fractionRead());
        }
    }
    if (const std::optional<double> end = lines.end()) {
        if (inRealTime) {
            pace.waitFor(*end);
        }
        run.advance(*end);
    }
}

}  // namespace

FusionPipeline::Counts replay(const ReplayTask& task, const ReplayHooks& hooks) {
    const auto& [config, parameters] = task.settings;
    RecordingReader reader(task.recording, TruthLines::Skip);
    reader.keepOnly(task.excerpt);
    const RecordingHeader header =
        withCamera(withInstallation(reader.header(), task.installation), task.camera);
    const bool isCsv = task.format == ReplayTask::Format::Csv;

    using Reader = OutputFile::Reader;
    OutputFile output(task.output, task.explanations.empty() ? Reader::MayLeave : Reader::MustStay);
    output.write(isCsv ? csvHeader()
                       : fusedHeaderLine(header, config.toJson(), parameters.toJson()));
    WriteBehind writer(
        output,
        [&](LineText& text, const FusedFrame& frame) {
            if (hooks.fused) {
                hooks.fused(frame);
            }
            if (isCsv) {
                appendCsvRows(text, frame);
            } else {
                append(text, frame);
            }
        },
        task.inRealTime ? WriteBehind::Flush::EveryFrame : WriteBehind::Flush::WhenFull);
    FusionPipeline::Options options = replayOptions();
    options.withTags = task.withTags;
    FusionPipeline run(
        header, config, [&](const FusedFrame& frame) { writer.write(frame); }, parameters, options);
    ExplanationOutput explanations(task.explanations);
    run.setObserver(explanations.observer());
    feed(reader, run, task.inRealTime, hooks);
    const std::string closing =
        closingLine(digestsOfRun(reader.digest(), header, config.toJson(), parameters.toJson()));
    explanations.complete(closing);
    writer.finish();
    if (!isCsv) {
        output.write(closing);
    }
    output.complete();
    explanations.commit();
    output.commit();
    return run.counts();
}

}  // namespace Workbench
