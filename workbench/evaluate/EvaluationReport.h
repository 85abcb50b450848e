// SPDX-License-Identifier: Apache-2.0
// Writes an evaluation as a table or as JSON.
#pragma once

#include "evaluate/Evaluation.h"
#include "recording/Header.h"

#include <string>

namespace Workbench {

/// The contents of an evaluation's output.
struct EvaluationReport {
    RecordingHeader header;          ///< of the recording
    EvaluationOptions options;       ///< of the evaluation
    int instants = 0;                ///< number of evaluated instants
    std::vector<PartFigures> parts;  ///< from Evaluation::figures
};

/// @param figure a metric
/// @param header of the recording
/// @return whether the truth of the recording permits the metric
bool isAllowed(const Figure& figure, const RecordingHeader& header);
/// @param figure a metric
/// @param header of the recording
/// @return whether the recording tells the metric: it permits it, and there was something to
/// average
bool isTold(const Figure& figure, const RecordingHeader& header);

/// @return the metrics of the whole scene and the essential ones of its parts, with a column per
///         tracker; "-" where the truth of the recording does not permit a metric or there is
///         nothing to average
std::string toTable(const EvaluationReport& report);

/// @return the essential metrics of the whole scene, with a column per tracker
std::string toShortTable(const EvaluationReport& report);

/// @return all metrics as one JSON object; null where the table has "-"
Json toJson(const EvaluationReport& report);
/// @return that object as text
std::string toJsonText(const EvaluationReport& report);

}  // namespace Workbench
