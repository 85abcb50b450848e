// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"

#include <veskar/Version.h>

#include "cli/Commands.h"
#include "cli/Interruption.h"
#include "io/Printable.h"

#include <csignal>
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <syslog.h>

namespace Workbench {
namespace {

void addFooter(CLI::App& program) {
    program.footer(
        "Exit status: 0 done; 1 done, but the answer is no; 2 wrong usage, wrong input or an "
        "output that cannot be written.\n"
        "\"-\" stands for standard input or standard output. An output that is one of the files "
        "to read, or another output, is refused.\n"
        "\n"
        "Example:\n"
        "  veskar simulate config/scenarios/perimeter.json -o perimeter.jsonl\n"
        "  veskar replay perimeter.jsonl -o fused.jsonl --summary\n");
}

int parse(CLI::App& program, int count, const char* const* arguments) {
    try {
        program.parse(count, arguments);
        return success;
    } catch (const CLI::ParseError& error) {
        // Help and version end here too, with code 0.
        return program.exit(error, std::cout, std::cerr) == 0 ? success : badInput;
    }
}

}  // namespace

int runCommandLine(int count, const char* const* arguments) {
    // A reader that goes away is an error like any other, with a message and exit status 2.
    std::signal(SIGPIPE, SIG_IGN);
    listenForInterruption();
    // What the library logs is for the person in front of this program, too.
    openlog("veskar", LOG_PERROR, LOG_USER);

    CLI::App program("Tries, tunes and judges the fusion of radar and video tracks.", "veskar");
    program.set_version_flag("--version", std::string("veskar ") + Veskar::veskarVersion());
    program.require_subcommand(1);
    addFooter(program);
    Action action;
    addSimulateCommand(program, action);
    addImportCommand(program, action);
    addReplayCommand(program, action);
    addEvaluateCommand(program, action);
    addCheckCommand(program, action);
    addReportCommand(program, action);

    const int status = parse(program, count, arguments);
    if (status != success || !action) {
        return status;
    }
    try {
        return action();
    } catch (const std::exception& error) {
        fmt::print(stderr, "veskar: {}\n", printable(error.what()));
        return badInput;
    }
}

}  // namespace Workbench
