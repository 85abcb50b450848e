// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/OptionChecks.h"
#include "cli/Progress.h"
#include "export/Export.h"
#include "io/Interruption.h"

#include <algorithm>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

struct ExportOptions {
    ExportTask task;
    std::string format;
    std::tuple<double, double, double> site;
    std::vector<std::string> layers;
    bool force = false;
};

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (const ExportFormat& format : exportFormats()) {
        names.emplace_back(format.name);
    }
    return names;
}

int exportFiles(const ExportOptions& options) {
    std::vector<NamedFile> inputs{{"recording", options.task.recording}};
    for (const std::string& run : options.task.runs) {
        inputs.push_back({"fused tracks", run});
    }
    const auto format =
        std::find_if(exportFormats().begin(), exportFormats().end(),
                     [&](const ExportFormat& one) { return one.name == options.format; });
    if (format->isDirectory && options.task.output == "-") {
        throw InputError("--output",
                         InputError(fmt::format("{} consists of several files: name a directory",
                                                options.format)));
    }
    refuseClashes(inputs, {{"export", options.task.output}});
    Progress progress("exporting");
    exportTo(options.task, *format, provenanceFor(options.force), [&](const LineReader& input) {
        throwIfInterrupted();
        progress.update(input.fractionRead());
    });
    return Success;
}

void addSite(CLI::App& command, ExportOptions& options) {
    command
        .add_option("--site", options.site,
                    "where the device is, instead of what the recording says: latitude, longitude, "
                    "and the heading of its x axis clockwise from north, degrees")
        ->type_name("LATITUDE LONGITUDE HEADING")
        ->check(within(-90.0, 90.0).application_index(0).description(""))
        ->check(within(-180.0, 180.0).application_index(1).description(""))
        ->check(within(-360.0, 360.0).application_index(2).description(""));
}

}  // namespace

void addExportCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<ExportOptions>();
    CLI::App* command = program.add_subcommand(
        "export", "Write a recording and its runs in a format that other programs read");
    command->add_option("recording", options->task.recording, "recording, or -")->required();
    command->add_option("fused", options->task.runs,
                        "fused tracks that veskar replay made of this recording");
    command
        ->add_option("--to", options->format,
                     "csv, geojson, mcap, mot, kitti, onvif-xml or onvif-json")
        ->required()
        ->check(CLI::IsMember(formatNames()));
    command->add_option("-o,--output", options->task.output,
                        "file to write (default: -); directory for mot and kitti");
    command
        ->add_option("--layer", options->layers,
                     "write only this: truth, video, radar or fused; may be repeated")
        ->allow_extra_args(false)
        ->check(CLI::IsMember(exportLayers()));
    addExcerptOptions(*command, options->task.excerpt);
    addSite(*command, *options);
    addForceOption(*command, options->force);
    command->footer(
        "The tracks of the sensors are placed on the ground as the fusion does it. GeoJSON needs "
        "to know where the device is.\n"
        "MOT and KITTI have the files and names that TrackEval expects: truth, and every other "
        "layer as a tracker, at the times of the truth, or of the video frames without truth.\n"
        "ONVIF is one document per line; the sensors' layers are their own reports.\n"
        "Fused tracks that state another recording than the given one are refused unless --force "
        "is given.\n"
        "\n"
        "Example:\n"
        "  veskar export road.jsonl fused.jsonl --to csv -o road.csv\n"
        "  veskar export road.jsonl --to geojson --site 55.7 13.2 140 -o road.geojson\n"
        "  veskar export road.jsonl fused.jsonl --to mcap -o road.mcap\n"
        "  veskar export road.jsonl fused.jsonl --to mot -o trackeval\n");
    command->callback([options, command, &action] {
        options->task.layers = {options->layers.begin(), options->layers.end()};
        if (command->count("--site") > 0) {
            const auto& [latitude, longitude, heading] = options->site;
            options->task.site = Site{latitude, longitude, heading};
        }
        action = [options] { return exportFiles(*options); };
    });
}

}  // namespace Workbench
