// SPDX-License-Identifier: Apache-2.0
#include "cli/Inputs.h"

#include "cli/CommandLine.h"
#include "cli/OptionChecks.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace Workbench {
namespace {

// Of an excerpt, s: far more precise, and far longer, than any recording.
constexpr double shortestTime = 1e-6;
constexpr double longestTime = 1e9;

}  // namespace

std::array<CLI::Option*, 2> addSettingsOptions(CLI::App& command, std::string& config,
                                               std::vector<std::string>& changes) {
    CLI::Option* const file = command.add_option(
        "--config", config, "configuration of the fusion (default: the shipped one)");
    CLI::Option* const set = command.add_option(
        "--set", changes,
        "KEY=VALUE: another value for a constant of the host (radarGain=2.5) or for a key of the "
        "configuration (veskarModule.gatingDistance=5.0); may be repeated");
    // Takes one value per option, so that "--set a=1 recording.jsonl" works.
    set->allow_extra_args(false);
    return {file, set};
}

void addExcerptOptions(CLI::App& command, Excerpt& excerpt) {
    command
        .add_option("--start", excerpt.start,
                    "begin so many s after the first sensor frame, as if the recording did")
        ->check(within(0.0, longestTime));
    command
        .add_option("--end", excerpt.end,
                    "end before so many s after the first sensor frame, as if the recording did")
        ->check(within(shortestTime, longestTime));
}

UnknownWords::Tell wordWarnings(const std::string& name) {
    return [name](const char* key, const std::string& word, const std::string& advice) {
        warn(fmt::format("{}: {} \"{}\" is {}", name, key, word, advice));
    };
}

CLI::Option* addForceOption(CLI::App& command, bool& force) {
    return command.add_flag("--force", force,
                            "take files together although they were not made from each other");
}

Provenance provenanceFor(bool force) {
    return {force ? Mismatch::Forced : Mismatch::Refused, warn};
}

}  // namespace Workbench
