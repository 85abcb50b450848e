// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/Progress.h"
#include "io/Interruption.h"
#include "report/ReportFile.h"

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

namespace Workbench {
namespace {

struct ReportOptions {
    std::string recording;
    std::string output;
    std::string fused;
    std::string fused2;
    std::string explain;
    std::string explain2;
    MapTiles map;
    Excerpt excerpt;
    bool force = false;
};

int report(const ReportOptions& options) {
    refuseClashes({{"recording", options.recording},
                   {"fused tracks", options.fused},
                   {"other fused tracks", options.fused2},
                   {"explanations", options.explain},
                   {"other explanations", options.explain2}},
                  {{"report", options.output}});
    if (options.fused2.empty() && !options.explain2.empty()) {
        throw InputError("--explain2 needs a second run to explain");
    }
    if (options.map.url.empty() && !options.map.attribution.empty()) {
        throw InputError("--map-attribution needs --map-tiles");
    }
    ReportInputs inputs{
        options.recording, {{options.fused, options.explain}}, options.map, options.excerpt};
    if (!options.fused2.empty()) {
        inputs.runs.push_back({options.fused2, options.explain2});
    }
    Progress progress("reporting");
    writeReport(inputs, options.output, provenanceFor(options.force), [&](const LineReader& input) {
        throwIfInterrupted();
        progress.update(input.fractionRead());
    });
    return Success;
}

}  // namespace

void addReportCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<ReportOptions>();
    CLI::App* command = program.add_subcommand(
        "report", "Show a recording and one or two fusion runs in one HTML file");
    command->add_option("recording", options->recording, "recording")->required();
    command->add_option("fused", options->fused, "fused tracks, as replay writes them")->required();
    command->add_option("fused2", options->fused2, "another run, to be shown beside it");
    command->add_option("-o,--output", options->output, "HTML file to write, or -")->required();
    command->add_option("--explain", options->explain, "what replay --explain wrote of the run");
    command->add_option("--explain2", options->explain2, "the same of the other run");
    addExcerptOptions(*command, options->excerpt);
    command->add_option("--map-tiles", options->map.url,
                        "address of the tiles of a map under the plan, with {z}, {x} and {y}; the "
                        "browser fetches them");
    command->add_option("--map-attribution", options->map.attribution,
                        "whose map it is, shown in the plan");
    addForceOption(*command, options->force);
    command->footer(
        "The file opens in any browser and needs nothing else.\n"
        "Tracks of another recording and explanations of another run are refused unless --force is "
        "given.\n"
        "\n"
        "Example:\n"
        "  veskar replay road.jsonl -o fused.jsonl --explain why.jsonl\n"
        "  veskar report road.jsonl fused.jsonl --explain why.jsonl -o report.html\n");
    command->callback([options, &action] { action = [options] { return report(*options); }; });
}

}  // namespace Workbench
