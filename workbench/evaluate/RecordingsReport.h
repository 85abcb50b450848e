// SPDX-License-Identifier: Apache-2.0
// Writes the evaluation of several recordings: each, and mean and spread over them.
#pragma once

#include "evaluate/EvaluationReport.h"

#include <string>
#include <vector>

namespace Workbench {

/// @param reports of recordings, at least one, all with the same trackers in the same order: as
///                judgeRecording makes them with the same options and as many runs of each
/// @return of one recording `toTable` of it; of several their essential metrics, and mean and
///         standard deviation (of the sample) of all metrics of the whole scene over those that
///         tell a metric
std::string toTable(const std::vector<EvaluationReport>& reports);

/// @param reports as toTable
/// @return of one recording its object; of several {"recordings": [objects], "over": {tracker:
///         {metric: {"mean", "std", "recordings"}}}}; std is null with fewer than two
std::string toJsonText(const std::vector<EvaluationReport>& reports);

/// @param reports as toTable
/// @return a row per recording, part, tracker and metric: names and value, which is empty where
///         the table has "-"
std::string toCsv(const std::vector<EvaluationReport>& reports);

}  // namespace Workbench
