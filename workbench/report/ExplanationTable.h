// SPDX-License-Identifier: Apache-2.0
// Why a fusion run did what it did, for the page.
#pragma once

#include "recording/Header.h"
#include "report/Words.h"

#include <string>

namespace Workbench {

/// Reads what `veskar replay --explain` wrote.
///
/// @param path the file
/// @param words receives verdicts and outcomes
/// @param start time 0 of the report, s
/// @return {"time": column, "source": column, "pairs": see TrackTable (its tracks are the compared
///         pairs), "events": see TrackTable}
/// @throw InputError with file and line of a fault
Json explanationTable(const std::string& path, Words& words, double start);

}  // namespace Workbench
