// SPDX-License-Identifier: Apache-2.0
// The workbench's functions; veskar/workbench.py gives them their Python form.
#include "FusionTurn.h"
#include "Progress.h"
#include "Table.h"
#include "check/DocumentCheck.h"
#include "check/RecordingCheck.h"
#include "evaluate/RecordingJudgement.h"
#include "io/OutputFile.h"
#include "recording/RecordingWriter.h"
#include "replay/Replay.h"
#include "report/ReportFile.h"
#include "simulate/Simulation.h"
#include "simulate/scenario/Scenario.h"

#include <cmath>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace Bindings {
namespace {

using Workbench::Settings;

/// @param config replaces that of the file; none: that of the file
Settings settingsOf(const std::string& file, const std::vector<std::string>& changes,
                    const std::optional<Veskar::Config>& config) {
    Settings settings = Workbench::readSettings(file, changes, warnInPython);
    settings.config = config.value_or(settings.config);
    return settings;
}

Workbench::UnknownWords::Tell wordWarnings(const std::string& name) {
    return [name](const char* key, const std::string& word, const std::string& advice) {
        warnInPython(name + ": " + key + " \"" + word + "\" is " + advice);
    };
}

void simulate(const std::string& path, const std::string& output, std::uint64_t seed,
              std::optional<double> duration, const py::object& listener) {
    Progress progress(listener);
    const py::gil_scoped_release unlocked;
    Workbench::Scenario scenario = Workbench::readScenario(path);
    scenario.duration = duration.value_or(scenario.duration);
    Workbench::Simulation simulation(scenario, seed);
    Workbench::UnknownWords words(wordWarnings(path));
    Workbench::OutputFile file(output);
    file.write(toJsonLine(simulation.header()));
    simulation.run(
        [&](const Workbench::RecordingLine& line) {
            words.look(line);
            file.write(std::visit([](const auto& frame) { return toJsonLine(frame); }, line));
        },
        [&](double time) { progress(time / scenario.duration); });
    file.commit();
}

py::dict countsOf(const Workbench::FusionPipeline::Counts& counts) {
    py::dict numbers;
    numbers["video_frames"] = counts.videoFrames;
    numbers["radar_frames"] = counts.radarFrames;
    numbers["ignored_frames"] = counts.ignoredFrames;
    numbers["added_frames"] = counts.addedFrames;
    numbers["failed_frames"] = counts.failedFrames;
    numbers["first_failure"] = counts.firstFailure;
    numbers["fusion_seconds"] = counts.fusionSeconds;
    return numbers;
}

py::dict replay(const std::string& recording, const std::string& output,
                const std::string& explanations, const std::string& camera,
                const std::string& installation, bool withTags, const std::string& configFile,
                const std::vector<std::string>& changes,
                const std::optional<Veskar::Config>& config, const py::object& listener) {
    Workbench::ReplayTask task;
    task.recording = recording;
    task.output = output;
    task.explanations = explanations;
    task.camera = camera;
    task.installation = installation;
    task.withTags = withTags;
    task.settings = settingsOf(configFile, changes, config);
    Progress progress(listener);
    Workbench::ReplayHooks hooks;
    hooks.progress = [&](double fraction) { progress(fraction); };
    hooks.unknownWord = wordWarnings(recording);
    const FusionTurn turn(FusionTurn::Holder::Function, "replay");
    Workbench::FusionPipeline::Counts counts;
    {
        const py::gil_scoped_release unlocked;
        counts = Workbench::replay(task, hooks);
    }
    return countsOf(counts);
}

/// GOSPA of a tracker over time, and its matches, as columns.
py::dict seriesOf(const Workbench::GospaSeries& series, bool isTruthComplete) {
    Table<2, 3, 0> moments({"missed", "false"}, {"time", "gospa", "localisation_cost"}, {});
    Table<2, 1, 0> matches({"object", "track"}, {"time"}, {});
    for (const Workbench::GospaMoment& moment : series.moments) {
        moments.add({moment.gospa.missed, moment.gospa.falseTracks},
                    {moment.time, isTruthComplete ? moment.gospa.distance : unknown,
                     moment.gospa.localisationCost},
                    {});
        for (const auto& [object, track] : moment.matches) {
            matches.add({object, track}, {moment.time}, {});
        }
    }
    py::dict columns;
    columns["moments"] = moments.take();
    columns["matches"] = matches.take();
    return columns;
}

py::dict evaluate(const std::string& recording, const std::string& fused, const std::string& camera,
                  const std::string& configFile, const std::vector<std::string>& changes,
                  const std::optional<Veskar::Config>& config, const py::dict& options, bool force,
                  const py::object& listener) {
    Workbench::JudgementTask task;
    task.recording = recording;
    if (!fused.empty()) {
        task.runs = {fused};
    }
    task.camera = camera;
    task.options.cutoff = options["cutoff"].cast<double>();
    task.options.bands = options["bands"].cast<std::vector<double>>();
    task.options.confirmationHits = options["hits"].cast<std::vector<int>>();
    task.options.commonFieldOfView = !options["whole_scene"].cast<bool>();
    task.options.keepsMoments = true;
    if (fused.empty()) {
        task.settings = settingsOf(configFile, changes, config);
    }
    Progress progress(listener);
    const Workbench::Provenance provenance(
        force ? Workbench::Mismatch::Forced : Workbench::Mismatch::Refused, warnInPython);
    std::optional<FusionTurn> turn;
    if (fused.empty()) {
        turn.emplace(FusionTurn::Holder::Function, "evaluation");
    }
    Workbench::RecordingFigures figures;
    {
        const py::gil_scoped_release unlocked;
        figures = Workbench::judgeRecording(std::move(task), provenance,
                                            [&](double fraction) { progress(fraction); });
    }
    py::dict result;
    result["json"] = toJsonText(figures.report);
    result["table"] = toTable(figures.report);
    result["counts"] = fused.empty() ? py::object(countsOf(figures.counts)) : py::none();
    py::dict overTime;
    for (const Workbench::GospaSeries& series : figures.overTime) {
        overTime[series.tracker.c_str()] =
            seriesOf(series, figures.report.header.truth == Workbench::TruthKind::Complete);
    }
    result["over_time"] = overTime;
    return result;
}

py::list check(const std::string& path, const py::object& listener) {
    Progress progress(listener);
    Workbench::Findings findings;
    {
        const py::gil_scoped_release unlocked;
        const Workbench::DocumentKind kind = Workbench::kindOfDocument(path);
        findings = kind == Workbench::DocumentKind::Recording
                       ? Workbench::checkRecording(path,
                                                   [&](const Workbench::LineReader& input) {
                                                       progress(input.fractionRead());
                                                   })
                             .findings
                       : Workbench::checkDocument(path, kind);
    }
    const char* const words[] = {"fault", "warning", "note"};
    py::list found;
    for (const Workbench::Finding& finding : findings) {
        found.append(py::make_tuple(words[static_cast<int>(finding.severity)], finding.line,
                                    finding.key, finding.value, finding.message,
                                    Workbench::toText(finding, path)));
    }
    return found;
}

void report(const std::string& recording,
            const std::vector<std::pair<std::string, std::string>>& runs, const std::string& output,
            bool force, const py::object& listener) {
    Workbench::ReportInputs inputs{recording, {}};
    for (const auto& [fused, explanations] : runs) {
        inputs.runs.push_back({fused, explanations});
    }
    Progress progress(listener);
    const Workbench::Provenance provenance(
        force ? Workbench::Mismatch::Forced : Workbench::Mismatch::Refused, warnInPython);
    const py::gil_scoped_release unlocked;
    Workbench::writeReport(inputs, output, provenance, [&](const Workbench::LineReader& input) {
        progress(input.fractionRead());
    });
}

}  // namespace

void bindWorkbench(py::module_& module) {
    module.def("_simulate", simulate);
    module.def("_replay", replay);
    module.def("_evaluate", evaluate);
    module.def("_check", check);
    module.def("_report", report);
}

}  // namespace Bindings
