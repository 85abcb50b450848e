// SPDX-License-Identifier: Apache-2.0
// Applies every fault to every scenario and prints the check's findings as a Markdown table:
// convention_matrix clean|all DURATION SEEDS SCENARIO...
//
// "clean" applies no fault. DURATION is in seconds, 0 for that of the scenario. A cell states in
// how many runs the fault was found, and the other findings. Exit status 1: a finding in a
// recording without fault.
#include "Process.h"
#include "check/ConventionErrors.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <string>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace {

using VeskarTest::ConventionError;

/// Results for one fault in all runs of a scenario.
struct Cell {
    int runs = 0;
    int found = 0;
    bool isWronged = false;  ///< a finding although there is no fault
    std::map<std::string, int> others;

    void add(const ConventionError& error, const Workbench::RecordingCheckResult& result) {
        ++runs;
        const std::vector<std::string> named = VeskarTest::namesOf(result);
        isWronged = isWronged || (error.expected.empty() && !named.empty());
        for (const std::string& name : std::set<std::string>(named.begin(), named.end())) {
            name == error.expected ? ++found : ++others[name];
        }
        static const std::set<std::string> mounting{"yaw", "pitch", "height", "lag"};
        for (const Workbench::Finding& finding : result.findings) {
            if (finding.severity == Workbench::Severity::Warning && mounting.count(finding.key)) {
                ++others[finding.key];
            }
        }
    }

    std::string text() const {
        std::string result = fmt::format("{}/{}", found, runs);
        for (const auto& [name, count] : others) {
            result += fmt::format(", {} {}", name, count);
        }
        return result;
    }
};

}  // namespace

int main(int count, char** arguments) {
    if (count < 5) {
        std::fputs("convention_matrix clean|all DURATION SEEDS SCENARIO...\n", stderr);
        return 2;
    }
    const bool isClean = std::string(arguments[1]) == "clean";
    const double duration = std::stod(arguments[2]);
    const int seeds = std::stoi(arguments[3]);
    const std::vector<std::string> scenarios(arguments + 4, arguments + count);
    std::vector<ConventionError> errors = VeskarTest::conventionErrors();
    if (isClean) {
        errors = {VeskarTest::conventionError("nothing")};
    }
    const VeskarTest::TemporaryDirectory directory;
    std::map<std::string, std::map<std::string, Cell>> cells;
    for (const std::string& scenario : scenarios) {
        for (int seed = 1; seed <= seeds; ++seed) {
            const auto recorded =
                VeskarTest::simulated(scenario, static_cast<std::uint64_t>(seed), duration);
            for (const ConventionError& error : errors) {
                const std::string path = directory / "recording";
                VeskarTest::write(recorded, error, path);
                cells[error.what][scenario].add(
                    error, Workbench::checkRecording(path, [](const Workbench::LineReader&) {}));
            }
        }
    }
    fmt::print("| mistake | {} |\n|---|", fmt::join(scenarios, " | "));
    for (std::size_t i = 0; i < scenarios.size(); ++i) {
        fmt::print("---|");
    }
    fmt::print("\n");
    int status = 0;
    for (const ConventionError& error : errors) {
        fmt::print("| {} |", error.what);
        for (const std::string& scenario : scenarios) {
            const Cell& cell = cells[error.what][scenario];
            fmt::print(" {} |", cell.text());
            status = cell.isWronged ? 1 : status;
        }
        fmt::print("\n");
    }
    return status;
}
