// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/OptionChecks.h"
#include "import/Autoferry.h"
#include "import/Csv.h"
#include "import/Kitti.h"
#include "import/Mcap.h"
#include "import/Onvif.h"
#include "import/Results.h"
#include "io/OutputFile.h"
#include "io/Printable.h"
#include "recording/LabelWords.h"

#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

/// @param sources the files of the data set
/// @param path the recording to write
/// @param import reads the data set
template <typename Import>
int importTo(const std::string& path, const std::vector<NamedFile>& sources, Import import) {
    refuseClashes(sources, {{"recording", path}});
    const ImportedRecording recording = import();
    for (const std::string& warning : recording.warnings) {
        warn(fmt::format("{}: {}", sources.front().path, warning));
    }
    OutputFile output(path);
    write(recording, output);
    output.commit();
    return Success;
}

void addOutput(CLI::App& command, std::string& output) {
    command.add_option("-o,--output", output, "recording to write (default: -)");
}

void addAutoferry(CLI::App& command, Action& action) {
    struct Options : AutoferryOptions {
        std::string output = "-";
    };
    auto options = std::make_shared<Options>();
    CLI::App* format =
        command.add_subcommand("autoferry", "Radar positions and camera bearings of two boats");
    format->add_option("detections", options->detections, "..._detections.json")->required();
    format->add_option("groundTruth", options->groundTruth, "..._groundTruth.json")->required();
    format
        ->add_option("--forward", options->forward,
                     "bearing in degrees that becomes forward; the image's seam lies behind it "
                     "(default: -32)")
        ->check(within(-360.0, 360.0));
    addOutput(*format, options->output);
    format->footer(
        "Example:\n  veskar import autoferry scenario13_detections.json "
        "scenario13_groundTruth.json -o boats.jsonl\n");
    format->callback([options, &action] {
        action = [options] {
            return importTo(
                options->output,
                {{"detections", options->detections}, {"ground truth", options->groundTruth}},
                [&] { return importAutoferry(*options); });
        };
    });
}

void addKitti(CLI::App& command, Action& action) {
    struct Options : KittiOptions {
        std::string output = "-";
    };
    auto options = std::make_shared<Options>();
    CLI::App* format = command.add_subcommand(
        "kitti", "Tracking labels: boxes become video tracks, positions become a radar");
    format->add_option("labels", options->labels, "label_02/NNNN.txt")->required();
    format->add_option("calibration", options->calibration, "calib/NNNN.txt")->required();
    format->add_option("--width", options->width, "image width in pixels (default: 1242)")
        ->check(CLI::Range(16, 65536));
    format->add_option("--height", options->height, "image height in pixels (default: 375)")
        ->check(CLI::Range(16, 65536));
    format->add_option("--rate", options->frameRate, "frames per second (default: 10)")
        ->check(within(0.1, 1000.0));
    format->add_option("--camera-height", options->cameraHeight, "metres (default: 1.65)")
        ->check(within(0.1, 100.0));
    format->add_option("--range-std", options->rangeStd, "radar noise, m (default: 0.3)")
        ->check(within(1e-3, 100.0));
    format->add_option("--azimuth-std", options->azimuthStd, "radar noise, degrees (default: 1)")
        ->check(within(1e-3, 45.0));
    format
        ->add_option("--detection-probability", options->detectionProbability,
                     "of the radar (default: 0.9)")
        ->check(within(0.0, 1.0));
    format->add_option("--seed", options->seed, "of the radar's noise and dropout (default: 1)")
        ->check(wholeNumber());
    format->add_flag("!--incomplete-truth", options->isTruthComplete,
                     "mark the truth as incomplete: tracks without a label do not count as false");
    addOutput(*format, options->output);
    format->footer(
        "Example:\n  veskar import kitti label_02/0000.txt calib/0000.txt -o 0000.jsonl\n");
    format->callback([options, &action] {
        action = [options] {
            return importTo(options->output,
                            {{"labels", options->labels}, {"calibration", options->calibration}},
                            [&] { return importKitti(*options); });
        };
    });
}

void addCsv(CLI::App& command, Action& action) {
    struct Options : CsvOptions {
        std::string output = "-";
    };
    auto options = std::make_shared<Options>();
    CLI::App* format = command.add_subcommand(
        "csv", "Tables of a radar and a camera, by a recipe that says what their columns are");
    format->add_option("--recipe", options->recipe, "columns, units, clock and installation")
        ->required();
    format->add_option("--radar", options->radar, "table of the radar, or -");
    format->add_option("--video", options->video, "table of the camera, or -");
    addOutput(*format, options->output);
    format->footer(
        "A radar or a camera without ids is tracked by veskar; the recording says so.\n"
        "\n"
        "Example:\n  veskar import csv --recipe recipe.json --radar radar.csv -o site.jsonl\n");
    format->callback([options, &action] {
        action = [options] {
            return importTo(options->output,
                            {{"recipe", options->recipe},
                             {"radar's table", options->radar},
                             {"camera's table", options->video}},
                            [&] { return importCsv(*options); });
        };
    });
}

void addOnvif(CLI::App& command, Action& action) {
    struct Options : OnvifOptions {
        std::string output = "-";
    };
    auto options = std::make_shared<Options>();
    CLI::App* format = command.add_subcommand(
        "onvif", "Logs of ONVIF scene descriptions, XML or JSON, of a camera and a radar");
    format->add_option("logs", options->logs, "what a device sent, each; or -")->required();
    format
        ->add_option("--installation", options->installation,
                     "camera and radar: a recording, or an object as in its header")
        ->required();
    format->add_option("--video", options->video, "modules (Source) that are the camera's");
    format->add_option("--radar", options->radar, "modules (Source) that are the radar's");
    format->add_option("--ignore", options->ignored, "modules (Source) to leave out");
    for (const char* option : {"--video", "--radar", "--ignore"}) {
        format->get_option(option)->type_name("MODULE")->allow_extra_args(false);
    }
    addOutput(*format, options->output);
    format->footer(
        "JSON objects stand one on a line, XML documents one after the other. Modules that are not "
        "named are told by their first object: a camera's has a shape.\n"
        "\n"
        "Example:\n  veskar import onvif camera.xml radar.json --installation site.json "
        "-o site.jsonl\n");
    format->callback([options, &action] {
        action = [options] {
            std::vector<NamedFile> sources;
            for (const std::string& log : options->logs) {
                sources.push_back({"log", log});
            }
            sources.push_back({"installation", options->installation});
            return importTo(options->output, sources, [&] { return importOnvif(*options); });
        };
    });
}

void addMcap(CLI::App& command, Action& action) {
    struct Options : McapOptions {
        std::string output = "-";
    };
    auto options = std::make_shared<Options>();
    CLI::App* format = command.add_subcommand(
        "mcap", "ROS 2 messages of a radar and a camera: RadarTracks, RadarScan, Detection2DArray");
    format->add_option("log", options->log, "MCAP file, as ros2 bag records it")->required();
    format
        ->add_option("--installation", options->installation,
                     "camera and radar: a recording, or an object as in its header")
        ->required();
    format->add_option("--radar", options->radar, "topic of the radar (default: the only one)");
    format->add_option("--video", options->video, "topic of the camera (default: the only one)");
    for (const char* option : {"--radar", "--video"}) {
        format->get_option(option)->type_name("TOPIC");
    }
    addOutput(*format, options->output);
    format->footer(
        "Example:\n  veskar import mcap drive.mcap --installation site.json -o drive.jsonl\n");
    format->callback([options, &action] {
        action = [options] {
            return importTo(options->output,
                            {{"log", options->log}, {"installation", options->installation}},
                            [&] { return importMcap(*options); });
        };
    });
}

/// Adds a format of results of other trackers.
void addResults(CLI::App& command, Action& action, const char* name, const char* description,
                const char* rateHelp, const ResultsFormat& results) {
    struct Options : ResultsOptions {
        std::string output = "-";
    };
    auto options = std::make_shared<Options>();
    CLI::App* format = command.add_subcommand(name, description);
    format->add_option("results", options->results, "what the tracker wrote")->required();
    format->add_option("recording", options->recording, "the recording that it tracked, or -")
        ->required();
    format->add_option("--rate", options->frameRate, rateHelp)->check(within(0.1, 1000.0));
    format->add_option("-o,--output", options->output, "fused tracks to write (default: -)");
    format->footer(fmt::format(
        "The fused tracks go to veskar evaluate and veskar report like those of veskar replay.\n"
        "\n"
        "Example:\n  veskar import {} results.txt road.jsonl -o other.jsonl\n",
        name));
    format->callback([options, results, &action] {
        action = [options, results] {
            refuseClashes({{"results", options->results}, {"recording", options->recording}},
                          {{"fused tracks", options->output}});
            OutputFile output(options->output);
            for (const std::string& word : importResults(*options, results, output)) {
                warn(fmt::format("{}: class \"{}\" is {}; imported as \"unknown\"",
                                 options->results, printable(word),
                                 adviceOn(WordKind::Class, word).value_or("")));
            }
            output.commit();
            return Success;
        };
    });
}

}  // namespace

void addImportCommand(CLI::App& program, Action& action) {
    CLI::App* command = program.add_subcommand("import",
                                               "Make a recording of a public data set, or a run of "
                                               "another tracker's results");
    command->require_subcommand(1);
    command->footer(
        "Example:\n  veskar import autoferry scenario13_detections.json "
        "scenario13_groundTruth.json -o boats.jsonl\n");
    addAutoferry(*command, action);
    addKitti(*command, action);
    addCsv(*command, action);
    addMcap(*command, action);
    addOnvif(*command, action);
    addResults(
        *command, action, "mot", "Results of another tracker in the format of MOTChallenge",
        "frames per second, frame 1 at time 0 (default: the frames are the moments of truth, "
        "or the video frames without truth)",
        {readMotResults, false});
    addResults(
        *command, action, "kitti-results",
        "Results of another tracker in the tracking format of KITTI",
        "frames per second, frame 0 at time 0 (default: the frames are the moments of truth, "
        "or the video frames without truth)",
        {readKittiResults, true});
}

}  // namespace Workbench
