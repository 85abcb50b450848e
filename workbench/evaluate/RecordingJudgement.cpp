// SPDX-License-Identifier: Apache-2.0
#include "evaluate/RecordingJudgement.h"

#include <veskar-host/InputError.h>

#include "evaluate/FusedFeed.h"
#include "host/pipeline/ReplayOptions.h"
#include "io/Interruption.h"
#include "recording/RecordingReader.h"
#include "replay/FusedReader.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>
#include <variant>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// Sorts the values and removes duplicates, so that nothing is evaluated twice.
void sortOnce(std::vector<int>& values) {
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
}

/// Bands out of order are a mistake that sorting would hide: 40, 20.
void requireAscending(const std::vector<double>& bands) {
    const auto fault = std::adjacent_find(bands.begin(), bands.end(), std::greater_equal<>());
    if (fault != bands.end()) {
        throw InputError("bands", InputError(fmt::format("{} comes after {}: they must ascend",
                                                         *std::next(fault), *fault)));
    }
}

void requireTruth(const RecordingReader& reader) {
    if (reader.header().truth == TruthKind::None) {
        throw InputError(reader.input().name(),
                         InputError("the recording has no truth to judge by"));
    }
}

/// Evaluates the whole recording.
/// @param follow passes the fused frames before a line to the evaluation
void judgeLines(RecordingReader& reader, Evaluation& evaluation, RecordingFigures& figures,
                const std::function<void(double)>& progress,
                const std::function<void(const RecordingLine&)>& follow) {
    while (const auto line = reader.next()) {
        throwIfInterrupted();
        follow(*line);
        evaluation.add(*line);
        if (progress) {
            progress(reader.input().fractionRead());
        }
    }
    if (evaluation.instants() == 0) {
        throw InputError(reader.input().name(), InputError("the recording has no truth line"));
    }
    figures.report.instants = evaluation.instants();
    if (figures.report.options.keepsMoments) {
        figures.overTime = evaluation.gospaOverTime();
    }
    figures.report.parts = evaluation.figures();
}

/// Runs the fusion on the recording and evaluates it.
RecordingFigures judgeRun(const JudgementTask& task, RecordingReader& reader,
                          const std::function<void(double)>& progress) {
    const auto& [config, parameters] = task.settings;
    RecordingFigures figures;
    figures.report.header = withCamera(reader.header(), task.camera);
    figures.report.options = task.options;
    const RecordingHeader& header = figures.report.header;
    requireTruth(reader);
    Evaluation evaluation(header, config, task.options);
    FusionPipeline run(
        header, config, [&](const FusedFrame& frame) { evaluation.add(frame); }, parameters,
        replayOptions());
    judgeLines(reader, evaluation, figures, progress, [&](const RecordingLine& line) {
        if (const auto* frame = std::get_if<SensorFrame>(&line)) {
            run.push(*frame);
        } else {
            run.advance(std::get<TruthFrame>(line).time);
        }
    });
    figures.counts = run.counts();
    return figures;
}

/// Evaluates fused tracks from a file, with the installation and the configuration that it states.
RecordingFigures judgeFile(const JudgementTask& task, RecordingReader& reader,
                           const Provenance& provenance,
                           const std::function<void(double)>& progress) {
    FusedReader fused(task.fused);
    provenance.compareNames(fused, reader);
    RecordingFigures figures;
    figures.report.header = headerOfRun(fused, reader.header());
    figures.report.options = task.options;
    requireTruth(reader);
    Evaluation evaluation(figures.report.header, fused.config(), task.options);
    FusedFeed feed(fused, [&](const FusedFrame& frame) { evaluation.add(frame); });
    judgeLines(reader, evaluation, figures, progress,
               [&](const RecordingLine& line) { feed.follow(line); });
    while (fused.next()) {
        // Reads to the end: the digests come after the last fused frame.
        throwIfInterrupted();
    }
    provenance.compareRun(fused, reader);
    return figures;
}

}  // namespace

RecordingFigures judgeRecording(JudgementTask task, const Provenance& provenance,
                                const std::function<void(double)>& progress) {
    requireAscending(task.options.bands);
    sortOnce(task.options.confirmationHits);
    RecordingReader reader(task.recording);
    reader.keepOnly(task.excerpt);
    return task.fused.empty() ? judgeRun(task, reader, progress)
                              : judgeFile(task, reader, provenance, progress);
}

}  // namespace Workbench
