// SPDX-License-Identifier: Apache-2.0
// The decisions of a fusion run, for the page.
#pragma once

#include "recording/Header.h"
#include "replay/RunDigests.h"
#include "report/Words.h"

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace Workbench {

/// The contents of a file of `veskar replay --explain`.
struct ExplanationFile {
    Json table;  ///< {"time": column, "source": column, "pairs": see TrackTable (its tracks are the
                 ///< compared pairs), "events": see TrackTable}
    std::optional<RunDigests> digests;  ///< of its closing line; nothing without one
};

/// Reads a file of `veskar replay --explain`.
///
/// @param path the file
/// @param words receives verdicts and outcomes
/// @param start time 0 of the report, s
/// @return its contents
/// @throw InputError with file and line of a fault
ExplanationFile readExplanations(const std::string& path, Words& words, double start);

}  // namespace Workbench
