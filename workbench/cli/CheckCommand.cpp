// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "check/DocumentCheck.h"
#include "check/RecordingCheck.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Progress.h"
#include "cli/Terminal.h"
#include "io/Counted.h"
#include "io/Interruption.h"
#include "io/LineReader.h"
#include "io/OutputFile.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace Workbench {
namespace {

struct CheckOptions {
    std::vector<std::string> documents;
    std::string kind;
    std::string format = "text";
    std::string output = "-";
    bool strict = false;
};

/// What was found in one document.
struct CheckedDocument {
    std::string name;
    RecordingCheckResult result;
};

const std::map<std::string, DocumentKind> kinds{{"configuration", DocumentKind::Configuration},
                                                {"camera", DocumentKind::Camera},
                                                {"scenario", DocumentKind::Scenario},
                                                {"run", DocumentKind::Run},
                                                {"recording", DocumentKind::Recording}};

DocumentKind kindOf(const std::string& document, const std::string& stated) {
    if (!stated.empty()) {
        return kinds.at(stated);
    }
    if (document == "-") {
        throw InputError("<stdin>", InputError("say with --as what it is"));
    }
    return kindOfDocument(document);
}

RecordingCheckResult check(const std::string& document, DocumentKind kind) {
    if (kind != DocumentKind::Recording) {
        return {checkDocument(document, kind), {}, std::nullopt};
    }
    Progress progress("checking");
    return checkRecording(document, [&](const LineReader& input) {
        throwIfInterrupted();
        progress.update(input.fractionRead());
    });
}

std::uint64_t count(const Findings& findings, Severity severity) {
    std::uint64_t sum = 0;
    for (const Finding& finding : findings) {
        sum += finding.severity == severity ? finding.count : 0;
    }
    return sum;
}

Tone toneOf(Severity severity) {
    switch (severity) {
        case Severity::Fault:
            return Tone::Fault;
        case Severity::Warning:
            return Tone::Warning;
        default:
            return Tone::Note;
    }
}

/// @param isShown whether it goes to standard output, where it may have colours
std::string toText(const std::vector<CheckedDocument>& checked, bool isShown) {
    std::string text;
    for (const auto& [name, result] : checked) {
        for (const Finding& finding : result.findings) {
            const std::string word = wordOf(finding.severity);
            const Tone tone = toneOf(finding.severity);
            text += toText(finding, name, isShown ? colored(word, tone, STDOUT_FILENO) : word);
            text += '\n';
        }
        text += fmt::format("{}: {}, {}\n", name,
                            counted(count(result.findings, Severity::Fault), "fault"),
                            counted(count(result.findings, Severity::Warning), "warning"));
    }
    return text;
}

nlohmann::ordered_json toJson(const Estimated& estimated) {
    return {{"value", estimated.value},
            {"std", estimated.std},
            {"significant", estimated.isSignificant}};
}

nlohmann::ordered_json toJson(const CheckedDocument& checked) {
    const auto& [name, result] = checked;
    nlohmann::ordered_json json{{"document", name},
                                {"faults", count(result.findings, Severity::Fault)},
                                {"warnings", count(result.findings, Severity::Warning)},
                                {"findings", nlohmann::ordered_json::array()}};
    for (const Finding& finding : result.findings) {
        json["findings"].push_back({{"severity", wordOf(finding.severity)},
                                    {"line", finding.line},
                                    {"key", finding.key},
                                    {"value", finding.value},
                                    {"message", finding.message},
                                    {"count", finding.count}});
    }
    json["conventions"] = nlohmann::ordered_json::array();
    for (const Convention& convention : result.conventions) {
        json["conventions"].push_back({{"name", convention.name},
                                       {"key", convention.finding.key},
                                       {"message", convention.finding.message}});
    }
    if (result.mounting) {
        // The names include the unit, so that scripts do not confuse radians and degrees.
        json["installation"] = {{"samples", result.mounting->samples},
                                {"blocks", result.mounting->blocks},
                                {"yawRadians", toJson(result.mounting->yaw)},
                                {"pitchRadians", toJson(result.mounting->pitch)},
                                {"heightMetres", toJson(result.mounting->height)},
                                {"lagSeconds", toJson(result.mounting->lag)}};
    }
    return json;
}

/// @return one object, or an array of them when several documents were asked for
std::string toJsonText(const std::vector<CheckedDocument>& checked, bool isOne) {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const CheckedDocument& one : checked) {
        all.push_back(toJson(one));
    }
    return (isOne ? all[0] : all)
               .dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
           "\n";
}

/// @return whether the document passes
bool isAccepted(const Findings& findings, const CheckOptions& options) {
    return !hasFault(findings) && !(options.strict && count(findings, Severity::Warning) > 0);
}

int check(const CheckOptions& options) {
    std::vector<NamedFile> inputs;
    for (const std::string& document : options.documents) {
        inputs.push_back({"document", document});
    }
    refuseClashes(inputs, {{"report", options.output}});
    const bool isOne = options.documents.size() == 1;
    OutputFile output(options.output);
    std::vector<CheckedDocument> checked;
    int status = Success;
    for (const std::string& document : options.documents) {
        try {
            checked.push_back({document == "-" ? "<stdin>" : document,
                               check(document, kindOf(document, options.kind))});
            const bool passes = isAccepted(checked.back().result.findings, options);
            status = std::max<int>(status, passes ? Success : NegativeAnswer);
        } catch (const InputError& error) {
            if (isOne) {
                throw;
            }
            // The others are checked all the same.
            tellFault(error.what());
            status = BadInput;
        }
    }
    output.write(options.format == "json" ? toJsonText(checked, isOne)
                                          : toText(checked, options.output == "-"));
    output.commit();
    return status;
}

}  // namespace

void addCheckCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App* command = program.add_subcommand(
        "check",
        "Say what is wrong with a configuration, a camera, a scenario, run.json or a recording");
    command->add_option("document", options->documents, "files, or -")->required();
    command
        ->add_option("--as", options->kind,
                     "configuration, camera, scenario, run or recording (default: what each looks "
                     "like)")
        ->check(CLI::IsMember({"configuration", "camera", "scenario", "run", "recording"}));
    command->add_option("--format", options->format, "text or json (default: text)")
        ->check(CLI::IsMember({"text", "json"}));
    command->add_option("-o,--output", options->output, "report to write (default: -)");
    command->add_flag("--strict", options->strict, "let warnings count in the exit status");
    command->footer(
        "A recording's objects that both sensors see also tell whether camera and radar point the "
        "same way, how high the camera really hangs, and how late the radar's time stamps are.\n"
        "Exit status 1: there are faults, or with --strict warnings; warnings alone leave it 0. Of "
        "several documents all are checked, and the worst counts.\n"
        "\n"
        "Example:\n  veskar check config/fusion.json --strict\n  veskar check perimeter.jsonl");
    command->callback([options, &action] { action = [options] { return check(*options); }; });
}

}  // namespace Workbench
