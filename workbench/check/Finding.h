// SPDX-License-Identifier: Apache-2.0
// The findings of a check.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Workbench {

/// Severity of a finding.
enum class Severity {
    Fault,    ///< will not work, or not as written
    Warning,  ///< valid but suspicious
    Note      ///< a measurement, for information
};

/// One finding.
struct Finding {
    Severity severity = Severity::Fault;
    std::uint64_t line = 0;   ///< 0 when it concerns the whole document
    std::string key;          ///< dotted path, as "veskarModule.gainNegative.radar"; may be empty
    std::string value;        ///< as written; empty when there is none
    std::string message;      ///< the fault and what was expected
    bool namesValue = false;  ///< whether the message itself contains the value
    std::uint64_t count = 1;  ///< how many it stands for
};

using Findings = std::vector<Finding>;

/// @return whether there is a fault among them
bool hasFault(const Findings& findings);

/// @return "fault", "warning" or "note"
const char* wordOf(Severity severity);

/// @param file name of the document
/// @return "FILE:LINE: fault: KEY is VALUE: MESSAGE", safe for a terminal; without "is VALUE" where
///         there is no value, or where the message contains it
std::string toText(const Finding& finding, const std::string& file);
/// As above.
/// @param word written in place of the severity's, as the same word in colour
std::string toText(const Finding& finding, const std::string& file, const std::string& word);

}  // namespace Workbench
