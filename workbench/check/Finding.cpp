// SPDX-License-Identifier: Apache-2.0
#include "check/Finding.h"

#include "io/Printable.h"

#include <algorithm>

#include <fmt/format.h>

namespace Workbench {
namespace {

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

}  // namespace

bool hasFault(const Findings& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& finding) { return finding.severity == Severity::Fault; });
}

std::string toText(const Finding& finding, const std::string& file) {
    std::string text = file;
    if (finding.line > 0) {
        text += fmt::format(":{}", finding.line);
    }
    text += fmt::format(": {}: ", wordOf(finding.severity));
    if (!finding.key.empty()) {
        text += finding.key;
        text += finding.value.empty() || finding.namesValue
                    ? ": "
                    : fmt::format(" is {}: ", finding.value);
    }
    return printable(text + finding.message);
}

}  // namespace Workbench
