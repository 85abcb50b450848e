// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "calibrate/CalibrationPage.h"
#include "calibrate/CalibrationText.h"
#include "calibrate/Correction.h"
#include "calibrate/DeviceSamples.h"
#include "calibrate/RecordingCalibration.h"
#include "calibrate/SampleSocket.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/OptionChecks.h"
#include "cli/Progress.h"
#include "io/Counted.h"
#include "io/Interruption.h"
#include "io/OutputFile.h"
#include "replay/Settings.h"
#include "report/Page.h"
#include "report/ReportFile.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

struct CalibrateOptions {
    CalibrationTask task;
    double listen = 0.0;  ///< s; 0: recordings are read
    std::string socket = "/tmp/autocalibration.sock";
    std::size_t datagrams = 0;  ///< that end the listening; 0: any number
    std::string installation;
    std::string output;
    std::string apply;
    std::string report = "-";
    std::string page;
    std::string format = "text";
};

FreeParameters askedOfSamples(const CalibrateOptions& options) {
    FreeParameters asked = toldBySamples();
    const std::vector<std::string>& held = options.task.held;
    for (const MountingParameter parameter : allParameters()) {
        if (std::find(held.begin(), held.end(), traitsOf(parameter).name) != held.end()) {
            asked[static_cast<std::size_t>(parameter)] = false;
        }
    }
    return asked;
}

RecordingCalibration readAndCalibrate(const CalibrationTask& task) {
    Progress progress("reading");
    return calibrateRecordings(task, [&](double share) {
        throwIfInterrupted();
        progress.update(share);
    });
}

/// What was measured with one installation, and what it tells.
struct Answer {
    RecordingHeader header;
    CalibrationResult result;
};

/// @return an output that need not be named
std::unique_ptr<OutputFile> outputFor(const std::string& path, OutputFile::Reader reader) {
    return path.empty() ? nullptr : std::make_unique<OutputFile>(path, reader);
}

/// @param writeCopy writes the corrected copy of the recording
int write(const CalibrateOptions& options, const Answer& answer,
          const std::function<void(OutputFile&)>& writeCopy) {
    const auto& [header, result] = answer;
    using Reader = OutputFile::Reader;
    const bool isAlone = options.output.empty() && options.apply.empty() && options.page.empty();
    const auto report = outputFor(options.report, isAlone ? Reader::MayLeave : Reader::MustStay);
    const auto output = outputFor(options.output, Reader::MustStay);
    const auto copy = outputFor(options.apply, Reader::MustStay);
    const auto page = outputFor(options.page, Reader::MustStay);
    report->write(options.format == "json" ? toJsonText(header, result) : toText(header, result));
    if (output) {
        output->write(toJsonLine(corrected(header, result.correction)));
    }
    if (copy) {
        writeCopy(*copy);
    }
    if (page) {
        writePage(calibrationPage, calibrationPageData(header, result), *page);
    }
    const std::array all{report.get(), output.get(), copy.get(), page.get()};
    for (OutputFile* const file : all) {
        if (file != nullptr) {
            file->complete();
        }
    }
    for (OutputFile* const file : all) {
        if (file != nullptr) {
            file->commit();
        }
    }
    return result.isTold() ? Success : NegativeAnswer;
}

int calibrateByRecordings(const CalibrateOptions& options) {
    const std::vector<std::string>& recordings = options.task.recordings;
    std::vector<NamedFile> inputs;
    inputs.reserve(recordings.size());
    for (const std::string& path : recordings) {
        inputs.push_back({"recording", path});
    }
    refuseClashes(inputs, {{"header", options.output},
                           {"corrected recording", options.apply},
                           {"report", options.report},
                           {"page", options.page}});
    if (!options.apply.empty() && (recordings.size() != 1 || recordings.front() == "-")) {
        throw InputError("--apply: takes one recording, which is a file");
    }
    RecordingCalibration calibration;
    try {
        calibration = readAndCalibrate(options.task);
    } catch (const ViolatedConvention& violation) {
        writeError(fmt::format("veskar: {}\n", violation.what()));
        return NegativeAnswer;
    }
    const auto& [stated, result, middle] = calibration;
    return write(options, {stated, result}, [&, middle = middle](OutputFile& copy) {
        applyCorrection(recordings.front(), calibration.result.correction, middle,
                        [&](const std::string& line) { copy.write(line); });
    });
}

std::vector<Veskar::CalibrationPayload> collect(const CalibrateOptions& options) {
    using Clock = std::chrono::steady_clock;
    SampleSocket socket(options.socket);
    writeError(fmt::format("veskar: listening to {} for {:g} s\n", options.socket, options.listen));
    Progress progress("listening");
    const auto start = Clock::now();
    const std::chrono::duration<double> duration(options.listen);
    const auto deadline = start + std::chrono::duration_cast<Clock::duration>(duration);
    std::vector<Veskar::CalibrationPayload> payloads;
    std::size_t leftOut = 0;
    std::string reason;
    while (const std::optional<std::string> datagram = socket.receive(deadline)) {
        try {
            payloads.push_back(parseSamples(*datagram));
        } catch (const InputError& error) {
            if (leftOut++ == 0) {
                reason = error.what();
            }
        }
        progress.update((Clock::now() - start) / duration);
        if (payloads.size() == options.datagrams) {
            break;
        }
    }
    if (leftOut > 0) {
        writeError(fmt::format("veskar: {}: {} left out; the first: {}\n", options.socket,
                               counted(leftOut, "datagram"), reason));
    }
    return payloads;
}

void refuseOptionsOfRecordings(const CalibrateOptions& options) {
    if (!options.task.recordings.empty()) {
        throw InputError("--listen takes no recordings");
    }
    if (!options.apply.empty()) {
        throw InputError("--apply: takes one recording, which is a file");
    }
    if (!options.task.estimated.empty()) {
        throw InputError("--estimate " + options.task.estimated.front() +
                         ": samples of a device tell pitch, roll and height of the camera only");
    }
    if (options.installation.empty()) {
        throw InputError("--listen: --installation is needed, the one that the device was given");
    }
}

int calibrateBySamples(const CalibrateOptions& options) {
    refuseOptionsOfRecordings(options);
    refuseClashes({{"installation", options.installation}},
                  {{"header", options.output}, {"report", options.report}, {"page", options.page}});
    RecordingHeader header;
    header.name = "calibration";
    header = withInstallation(header, options.installation);
    const auto payloads = collect(options);
    return write(options, {header, calibrate(payloads, header, askedOfSamples(options))}, {});
}

int calibrate(const CalibrateOptions& options) {
    if (options.listen > 0.0) {
        return calibrateBySamples(options);
    }
    if (options.task.recordings.empty()) {
        throw InputError("a recording is needed, or --listen");
    }
    return calibrateByRecordings(options);
}

}  // namespace

void addCalibrateCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<CalibrateOptions>();
    CLI::App* command = program.add_subcommand(
        "calibrate", "Estimate how a device is really mounted, from recordings made with it");
    command->add_option("recordings", options->task.recordings,
                        "recordings of one installation, or -");
    CLI::Option* listen =
        command
            ->add_option("--listen", options->listen,
                         "seconds to collect the samples that a device sends, instead of reading "
                         "recordings")
            ->check(within(0.1, 1e7));
    command
        ->add_option("--installation", options->installation,
                     "what the device was given: a header, or a file with camera and radar")
        ->needs(listen);
    command
        ->add_option("--socket", options->socket,
                     "where the device sends (default: /tmp/autocalibration.sock)")
        ->needs(listen);
    command->add_option("--datagrams", options->datagrams, "end as soon as so many have come")
        ->check(wholeNumber())
        ->needs(listen);
    command->add_option("-o,--output", options->output,
                        "write a header with the corrected installation, for replay "
                        "--installation and run.json");
    command->add_option("--apply", options->apply,
                        "write a corrected copy of the recording: installation, radar time stamps, "
                        "azimuths");
    command->add_option("--report", options->report, "answer to write (default: -)");
    command->add_option("--format", options->format, "text or json (default: text)")
        ->check(CLI::IsMember({"text", "json"}));
    command->add_option("--page", options->page,
                        "HTML page to write: the answer, and the errors of all pairs");
    command
        ->add_option("--estimate", options->task.estimated, "further values to estimate, by name")
        ->allow_extra_args(false)
        ->check(CLI::IsMember(calibratedNames()));
    command->add_option("--hold", options->task.held, "values to take as stated, by name")
        ->allow_extra_args(false)
        ->check(CLI::IsMember(calibratedNames()));
    command->footer(
        "Only significant errors are corrected. Values that the recordings cannot tell are named, "
        "with what a person should walk so that they can.\n"
        "Exit status 1: none of the values could be told, or the recording violates a convention.\n"
        "\n"
        "Example:\n"
        "  veskar calibrate perimeter.jsonl -o corrected.json\n"
        "  veskar replay perimeter.jsonl --installation corrected.json -o fused.jsonl\n"
        "  veskar calibrate --listen 600 --installation device.json -o corrected.json");
    command->callback([options, &action] { action = [options] { return calibrate(*options); }; });
}

}  // namespace Workbench
