// SPDX-License-Identifier: Apache-2.0
#include "cli/CommandLine.h"

#include <veskar/Version.h>

#include "cli/Commands.h"
#include "cli/Terminal.h"
#include "cli/Usage.h"
#include "io/Interruption.h"
#include "io/Journal.h"
#include "io/OutputFile.h"
#include "io/Printable.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <sstream>
#include <string>

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <fmt/format.h>
#include <syslog.h>
#include <unistd.h>

namespace Workbench {
namespace {

void addFooter(CLI::App& program) {
    program.footer(
        "Exit status: 0 done; 1 done, but the answer is no; 2 wrong usage, wrong input or an "
        "output that cannot be written. Interrupted (Ctrl-C), it ends by the signal and leaves no "
        "unfinished output; shells tell that as 130. A reader of its standard output that leaves "
        "early, as head does, is no error.\n"
        "\"-\" stands for standard input or standard output. An output that is one of the files "
        "to read, or another output, is refused.\n"
        "\n"
        "Example:\n"
        "  veskar simulate config/scenarios/perimeter.json -o perimeter.jsonl\n"
        "  veskar replay perimeter.jsonl -o fused.jsonl --summary\n");
}

// Opens /dev/null in place of closed standard streams. Otherwise the next opened file would get the
// stream's number, and output for the stream would be written to that file. The replacement is
// opened in the wrong direction, so that using the stream still fails.
void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            // open() returns the lowest free number, which is this one.
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

// Runs the subcommand that the arguments name.
int run(CLI::App& program, const Action& action, int count, const char* const* arguments) {
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) {
            writeError(complaintOf(program, error));
            return BadInput;
        }
        // Help and version are printed through exceptions, but are not errors.
        std::ostringstream answer;
        program.exit(error, answer, answer);
        OutputFile output("-");
        output.write(answer.str());
        output.commit();
        return Success;
    }
    if (terminalSettings().isQuiet) {
        openlog("veskar", 0, LOG_USER);
    }
    return action ? action() : Success;
}

}  // namespace

void writeError(const std::string& text) {
    std::fputs(text.c_str(), stderr);
}

void tellFault(const std::string& text) {
    writeError(fmt::format("{}{} {}\n", journalPrefix(LOG_ERR),
                           colored("veskar:", Tone::Fault, STDERR_FILENO), printable(text)));
}

void warn(const std::string& text) {
    if (!terminalSettings().isQuiet) {
        writeError(fmt::format("{}veskar: {} {}\n", journalPrefix(LOG_WARNING),
                               colored("warning:", Tone::Warning, STDERR_FILENO), printable(text)));
    }
}

int runCommandLine(int count, const char* const* arguments) {
    occupyStandardStreams();
    // Writing to a closed pipe, or beyond the size that a file may have, is an error that
    // OutputFile tells, not a signal.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    listenForInterruption();
    // Show messages that the library logs on standard error, too; the journal has them already.
    openlog("veskar", isReadByJournal(STDERR_FILENO) ? 0 : LOG_PERROR, LOG_USER);

    CLI::App program("Tries, tunes and judges the fusion of radar and video tracks.", "veskar");
    program.set_version_flag("-V,--version", std::string("veskar ") + Veskar::veskarVersion());
    program.require_subcommand(1);
    addFooter(program);
    Action action;
    addSimulateCommand(program, action);
    addImportCommand(program, action);
    addReplayCommand(program, action);
    addEvaluateCommand(program, action);
    addExportCommand(program, action);
    addInfoCommand(program, action);
    addCheckCommand(program, action);
    addCalibrateCommand(program, action);
    addReportCommand(program, action);
    addTuneCommand(program, action);
    addLiveCommands(program, action);
    addCompletionCommand(program, action);
    addHelpCommand(program, action);
    addTerminalOptions(program);

    try {
        return run(program, action, count, arguments);
    } catch (const Interrupted& interruption) {
        writeError("veskar: interrupted\n");
        endBy(interruption.signal());
    } catch (const ReaderLeft&) {
        return Success;
    } catch (const std::exception& error) {
        tellFault(error.what());
        return BadInput;
    }
}

}  // namespace Workbench
