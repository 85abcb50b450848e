// SPDX-License-Identifier: Apache-2.0
// What a check has found.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Workbench {

/// How bad a finding is.
enum class Severity {
    Fault,    ///< will not work, or not as written
    Warning,  ///< legal but suspicious
    Note      ///< a measurement, for information
};

/// One finding.
struct Finding {
    Severity severity = Severity::Fault;
    std::uint64_t line = 0;   ///< 0 when it concerns the whole document
    std::string key;          ///< dotted path, as "veskarModule.gainNegative.radar"; may be empty
    std::string value;        ///< as written; empty when there is none
    std::string message;      ///< what is wrong and what was expected
    bool namesValue = false;  ///< the message is a sentence that holds the value
};

using Findings = std::vector<Finding>;

/// @return whether there is a fault among them
bool hasFault(const Findings& findings);

/// @param file name of the document
/// @return "FILE:LINE: fault: KEY is VALUE: MESSAGE", fit for a terminal; without "is VALUE" where
///         there is none, or where the message names it
std::string toText(const Finding& finding, const std::string& file);

}  // namespace Workbench
