// SPDX-License-Identifier: Apache-2.0
// Why a fusion run did what it did, for the page.
#pragma once

#include "recording/Header.h"
#include "replay/RunDigests.h"
#include "report/Words.h"

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace Workbench {

/// What `veskar replay --explain` wrote.
struct ExplanationFile {
    Json table;  ///< {"time": column, "source": column, "pairs": see TrackTable (its tracks are the
                 ///< compared pairs), "events": see TrackTable}
    std::optional<RunDigests> digests;  ///< what its closing line states; nothing without one
};

/// Reads what `veskar replay --explain` wrote.
///
/// @param path the file
/// @param words receives verdicts and outcomes
/// @param start time 0 of the report, s
/// @return its contents
/// @throw InputError with file and line of a fault
ExplanationFile readExplanations(const std::string& path, Words& words, double start);

}  // namespace Workbench
