// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "check/DocumentCheck.h"
#include "check/RecordingCheck.h"
#include "cli/CommandLine.h"
#include "cli/Commands.h"
#include "cli/Files.h"
#include "cli/Progress.h"
#include "io/Interruption.h"
#include "io/OutputFile.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

struct CheckOptions {
    std::string document;
    std::string kind;
    std::string format = "text";
    std::string output = "-";
    bool strict = false;
};

const std::map<std::string, DocumentKind> kinds{{"configuration", DocumentKind::Configuration},
                                                {"camera", DocumentKind::Camera},
                                                {"scenario", DocumentKind::Scenario},
                                                {"run", DocumentKind::Run},
                                                {"recording", DocumentKind::Recording}};

DocumentKind kindFor(const CheckOptions& options) {
    if (!options.kind.empty()) {
        return kinds.at(options.kind);
    }
    if (options.document == "-") {
        throw InputError("<stdin>", InputError("say with --as what it is"));
    }
    return kindOfDocument(options.document);
}

RecordingCheckResult check(const CheckOptions& options, DocumentKind kind) {
    if (kind != DocumentKind::Recording) {
        return {checkDocument(options.document, kind), {}, std::nullopt};
    }
    Progress progress("checking");
    return checkRecording(options.document, [&](std::uint64_t read, std::uint64_t size) {
        throwIfInterrupted();
        progress.update(size == 0 ? -1.0 : static_cast<double>(read) / static_cast<double>(size));
    });
}

std::size_t count(const Findings& findings, Severity severity) {
    std::size_t sum = 0;
    for (const Finding& finding : findings) {
        sum += finding.severity == severity ? 1 : 0;
    }
    return sum;
}

std::string toText(const Findings& findings, const std::string& name) {
    std::string text;
    for (const Finding& finding : findings) {
        text += toText(finding, name) + "\n";
    }
    return text + fmt::format("{}: {} faults, {} warnings\n", name,
                              count(findings, Severity::Fault), count(findings, Severity::Warning));
}

nlohmann::ordered_json toJson(const Estimated& estimated) {
    return {{"value", estimated.value},
            {"std", estimated.std},
            {"significant", estimated.isSignificant}};
}

std::string toJsonText(const RecordingCheckResult& result, const std::string& name) {
    nlohmann::ordered_json json{{"document", name},
                                {"faults", count(result.findings, Severity::Fault)},
                                {"warnings", count(result.findings, Severity::Warning)},
                                {"findings", nlohmann::ordered_json::array()}};
    const char* const words[] = {"fault", "warning", "note"};
    for (const Finding& finding : result.findings) {
        json["findings"].push_back({{"severity", words[static_cast<int>(finding.severity)]},
                                    {"line", finding.line},
                                    {"key", finding.key},
                                    {"value", finding.value},
                                    {"message", finding.message}});
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
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

/// @return whether the document passes
bool isAccepted(const Findings& findings, const CheckOptions& options) {
    return !hasFault(findings) && !(options.strict && count(findings, Severity::Warning) > 0);
}

int check(const CheckOptions& options) {
    refuseClashes({{"document", options.document}}, {{"report", options.output}});
    const DocumentKind kind = kindFor(options);
    const std::string name = options.document == "-" ? "<stdin>" : options.document;
    OutputFile output(options.output);
    const RecordingCheckResult result = check(options, kind);
    output.write(options.format == "json" ? toJsonText(result, name)
                                          : toText(result.findings, name));
    output.commit();
    return isAccepted(result.findings, options) ? Success : NegativeAnswer;
}

}  // namespace

void addCheckCommand(CLI::App& program, Action& action) {
    auto options = std::make_shared<CheckOptions>();
    CLI::App* command = program.add_subcommand(
        "check",
        "Say what is wrong with a configuration, a camera, a scenario, run.json or a recording");
    command->add_option("document", options->document, "file, or -")->required();
    command
        ->add_option("--as", options->kind,
                     "configuration, camera, scenario, run or recording (default: what it looks "
                     "like)")
        ->check(CLI::IsMember({"configuration", "camera", "scenario", "run", "recording"}));
    command->add_option("--format", options->format, "text or json (default: text)")
        ->check(CLI::IsMember({"text", "json"}));
    command->add_option("-o,--output", options->output, "report to write (default: -)");
    command->add_flag("--strict", options->strict, "let warnings count in the exit status");
    command->footer(
        "A recording's objects that both sensors see also tell whether camera and radar point the "
        "same way, how high the camera really hangs, and how late the radar's time stamps are.\n"
        "Exit status 1: there are faults, or with --strict warnings; warnings alone leave it 0.\n"
        "\n"
        "Example:\n  veskar check config/fusion.json --strict\n  veskar check perimeter.jsonl");
    command->callback([options, &action] { action = [options] { return check(*options); }; });
}

}  // namespace Workbench
