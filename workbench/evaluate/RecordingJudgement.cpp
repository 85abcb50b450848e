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
RecordingFigures judgeFile(const JudgementTask& task, const std::string& run,
                           RecordingReader& reader, const Provenance& provenance,
                           const std::function<void(double)>& progress) {
    FusedReader fused(run);
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

/// Names the fusion, which is the first tracker, when there are several runs.
void nameRun(RecordingFigures& figures, std::size_t place) {
    const std::string name = fmt::format("run {}", place + 1);
    for (PartFigures& part : figures.report.parts) {
        part.trackers.front().tracker = name;
    }
    if (!figures.overTime.empty()) {
        figures.overTime.front().tracker = name;
    }
}

/// Puts the only tracker of a run behind the runs before it and before the sensors.
void insertRun(RecordingFigures run, std::size_t place, const std::string& file,
               RecordingFigures& all) {
    std::vector<PartFigures>& parts = all.report.parts;
    if (toJsonLine(run.report.header) != toJsonLine(all.report.header)) {
        throw InputError(file, InputError("the run has another camera or radar than the first one, "
                                          "so that other objects count: judge it by itself"));
    }
    const auto at = static_cast<std::ptrdiff_t>(place);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        std::vector<TrackerFigures>& trackers = parts[i].trackers;
        trackers.insert(trackers.begin() + at, std::move(run.report.parts[i].trackers.front()));
    }
    if (!run.overTime.empty()) {
        all.overTime.insert(all.overTime.begin() + at, std::move(run.overTime.front()));
    }
}

}  // namespace

RecordingFigures judgeRecording(JudgementTask task, const Provenance& provenance,
                                const std::function<void(double)>& progress) {
    requireAscending(task.options.bands);
    sortOnce(task.options.confirmationHits);
    const std::size_t passes = std::max<std::size_t>(1, task.runs.size());
    RecordingFigures figures;
    for (std::size_t pass = 0; pass < passes; ++pass) {
        const auto progressOfAll = [&](double part) {
            if (progress) {
                progress(part < 0.0
                             ? part
                             : (static_cast<double>(pass) + part) / static_cast<double>(passes));
            }
        };
        RecordingReader reader(task.recording);
        reader.keepOnly(task.excerpt);
        RecordingFigures ofPass =
            task.runs.empty() ? judgeRun(task, reader, progressOfAll)
                              : judgeFile(task, task.runs[pass], reader, provenance, progressOfAll);
        if (passes > 1) {
            nameRun(ofPass, pass);
        }
        if (pass == 0) {
            figures = std::move(ofPass);
            task.options.confirmationHits.clear();  // the sensors are the same with every run
        } else {
            insertRun(std::move(ofPass), pass, task.runs[pass], figures);
        }
    }
    return figures;
}

}  // namespace Workbench
