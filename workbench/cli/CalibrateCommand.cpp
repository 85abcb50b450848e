// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "calibrate/Calibration.h"
#include "calibrate/CalibrationInput.h"
#include "calibrate/CalibrationText.h"
#include "calibrate/Correction.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Progress.h"
#include "io/Interruption.h"
#include "io/OutputFile.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

struct CalibrateOptions {
    std::vector<std::string> recordings;
    std::string output;
    std::string apply;
    std::string report = "-";
    std::string format = "text";
    std::vector<std::string> more;
    std::vector<std::string> held;
};

std::vector<std::string> parameterNames() {
    std::vector<std::string> names;
    for (const Parameter parameter : allParameters()) {
        if (!isOfModel(parameter)) {
            names.emplace_back(traitsOf(parameter).name);
        }
    }
    return names;
}

bool contains(const std::vector<std::string>& list, const std::string& name) {
    return std::find(list.begin(), list.end(), name) != list.end();
}

FreeParameters askedBy(const CalibrateOptions& options) {
    FreeParameters asked{};
    for (const Parameter parameter : allParameters()) {
        const ParameterTraits& traits = traitsOf(parameter);
        const bool isAsked = traits.isAskedFor || contains(options.more, traits.name);
        asked[static_cast<std::size_t>(parameter)] =
            isAsked && !contains(options.held, traits.name);
    }
    if (asked[static_cast<std::size_t>(Parameter::CameraYaw)] &&
        asked[static_cast<std::size_t>(Parameter::RadarYaw)]) {
        throw InputError(
            "--estimate radar.yaw: only the angle between both sensors can be told; add --hold "
            "camera.yaw");
    }
    return asked;
}

std::string installationText(const Installation& installation) {
    RecordingHeader header;
    static_cast<Installation&>(header) = installation;
    header.site.reset();
    return toJsonLine(header);
}

CalibrationInput read(const std::string& path) {
    Progress progress("reading");
    return readForCalibration(path, [&](double share) {
        throwIfInterrupted();
        progress.update(share);
    });
}

std::string shownName(const std::string& path) {
    return path == "-" ? "<stdin>" : path;
}

int calibrate(const CalibrateOptions& options) {
    std::vector<NamedFile> inputs;
    for (const std::string& path : options.recordings) {
        inputs.push_back({"recording", path});
    }
    refuseClashes(inputs, {{"header", options.output},
                           {"corrected recording", options.apply},
                           {"report", options.report}});
    const FreeParameters asked = askedBy(options);
    if (!options.apply.empty() &&
        (options.recordings.size() != 1 || options.recordings.front() == "-")) {
        throw InputError("--apply: takes one recording, which is a file");
    }
    std::optional<RecordingHeader> header;
    std::vector<CalibrationScene> scenes;
    for (const std::string& path : options.recordings) {
        CalibrationInput input = read(path);
        if (!input.fault.empty()) {
            writeError(fmt::format("veskar: {}: {}; correct that first (veskar check)\n",
                                   shownName(path), input.fault));
            return NegativeAnswer;
        }
        if (!header) {
            header = input.header;
        } else if (installationText(*header) != installationText(input.header)) {
            throw InputError(shownName(path), InputError("states another installation than " +
                                                         shownName(options.recordings.front())));
        }
        scenes.push_back(std::move(input.scene));
    }
    const CalibrationResult result = calibrate(*header, scenes, asked);

    OutputFile report(options.report);
    report.write(options.format == "json" ? toJsonText(*header, result) : toText(*header, result));
    if (!options.output.empty()) {
        OutputFile output(options.output);
        output.write(toJsonLine(corrected(*header, result.correction)));
        output.commit();
    }
    if (!options.apply.empty()) {
        OutputFile output(options.apply);
        applyCorrection(options.recordings.front(), result.correction, scenes.front().middle(),
                        [&](const std::string& line) { output.write(line); });
        output.commit();
    }
    report.commit();
    return result.isTold() ? Success : NegativeAnswer;
}

}  // namespace

void addCalibrateCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<CalibrateOptions>();
    CLI::App* command = program.add_subcommand(
        "calibrate", "Estimate how a device is really mounted, from recordings made with it");
    command->add_option("recordings", options->recordings, "recordings of one installation, or -")
        ->required();
    command->add_option("-o,--output", options->output,
                        "write a header with the corrected installation, for replay "
                        "--installation and run.json");
    command->add_option("--apply", options->apply,
                        "write a corrected copy of the recording: installation, radar time stamps, "
                        "azimuths");
    command->add_option("--report", options->report, "answer to write (default: -)");
    command->add_option("--format", options->format, "text or json (default: text)")
        ->check(CLI::IsMember({"text", "json"}));
    command->add_option("--estimate", options->more, "further values to estimate, by name")
        ->allow_extra_args(false)
        ->check(CLI::IsMember(parameterNames()));
    command->add_option("--hold", options->held, "values to take as stated, by name")
        ->allow_extra_args(false)
        ->check(CLI::IsMember(parameterNames()));
    command->footer(
        "Only significant errors are corrected. Values that the recordings cannot tell are named, "
        "with what a person should walk so that they can.\n"
        "Exit status 1: none of the values could be told, or the recording violates a convention.\n"
        "\n"
        "Example:\n"
        "  veskar calibrate perimeter.jsonl -o corrected.json\n"
        "  veskar replay perimeter.jsonl --installation corrected.json -o fused.jsonl");
    command->callback([options, &action] { action = [options] { return calibrate(*options); }; });
}

}  // namespace Workbench
