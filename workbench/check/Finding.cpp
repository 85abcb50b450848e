// SPDX-License-Identifier: Apache-2.0
#include "check/Finding.h"

#include "io/Printable.h"

#include <algorithm>

#include <fmt/format.h>

namespace Workbench {
const char* wordOf(Severity severity) {
    switch (severity) {
        case Severity::Fault:
            return "fault";
        case Severity::Warning:
            return "warning";
        default:
            return "note";
    }
}

bool hasFault(const Findings& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.severity == Severity::Fault; });
}

std::string toText(const Finding& finding, const std::string& file) {
    return toText(finding, file, wordOf(finding.severity));
}

std::string toText(const Finding& finding, const std::string& file, const std::string& word) {
    const std::string place = finding.line > 0 ? fmt::format("{}:{}", file, finding.line) : file;
    std::string text;
    if (!finding.key.empty()) {
        text += finding.key;
        text += finding.value.empty() || finding.namesValue
                    ? ": "
                    : fmt::format(" is {}: ", finding.value);
    }
    return fmt::format("{}: {}: {}", printable(place), word, printable(text + finding.message));
}

}  // namespace Workbench
