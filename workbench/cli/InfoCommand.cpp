// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Inputs.h"
#include "cli/Progress.h"
#include "info/FileInfo.h"
#include "io/Interruption.h"
#include "io/LineReader.h"
#include "io/OutputFile.h"
#include "io/Printable.h"
#include "recording/FileFormat.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

struct InfoOptions {
    std::vector<std::string> files;
    Excerpt excerpt;
    std::string format = "text";
    std::string output = "-";
};

/// Words of files may hold control characters.
std::string printableLines(const std::string& text) {
    std::istringstream lines(text);
    std::string safe;
    for (std::string line; std::getline(lines, line);) {
        safe += printable(line) + "\n";
    }
    return safe;
}

/// @param tell receives what one file contains
template <typename Tell>
void look(const std::string& path, const Excerpt& excerpt, Tell tell) {
    Progress progress("reading");
    const auto follow = [&](const LineReader& input) {
        throwIfInterrupted();
        progress.update(input.fractionRead());
    };
    if (formatOf(path) == "veskar-fused") {
        if (!excerpt.isAll()) {
            throw InputError(path, InputError("--start and --end are for recordings"));
        }
        tell(infoOfFused(path, follow));
    } else {
        tell(infoOfRecording(path, excerpt, follow));
    }
}

int info(const InfoOptions& options) {
    std::vector<NamedFile> inputs;
    for (const std::string& file : options.files) {
        inputs.push_back({"file", file});
        if (file == "-") {
            throw InputError("<stdin>", InputError("is read twice by info: name a file"));
        }
    }
    refuseClashes(inputs, {{"info", options.output}});
    OutputFile output(options.output);
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const std::string& file : options.files) {
        look(file, options.excerpt, [&](const auto& contents) {
            if (options.format == "json") {
                all.push_back(toJson(contents));
                all.back()["file"] = file;
            } else {
                output.write(printableLines(file + ": " + toText(contents)));
            }
        });
    }
    if (options.format == "json") {
        output.write((all.size() == 1 ? all[0] : all)
                         .dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
                     "\n");
    }
    output.commit();
    return Success;
}

}  // namespace

void addInfoCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<InfoOptions>();
    CLI::App* command = program.add_subcommand(
        "info", "Say what is in recordings and fused tracks: duration, rates, ids, classes");
    command->add_option("file", options->files, "recordings or fused tracks")->required();
    command->add_option("--format", options->format, "text or json (default: text)")
        ->check(CLI::IsMember({"text", "json"}));
    addExcerptOptions(*command, options->excerpt);
    command->add_option("-o,--output", options->output, "file to write (default: -)");
    command->footer("Example:\n  veskar info road.jsonl fused.jsonl\n");
    command->callback([options, &action] { action = [options] { return info(*options); }; });
}

}  // namespace Workbench
