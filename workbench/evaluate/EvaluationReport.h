// SPDX-License-Identifier: Apache-2.0
// An evaluation as a table and as JSON.
#pragma once

#include "evaluate/Evaluation.h"

#include <string>

namespace Workbench {

/// What a report says beside the figures.
struct EvaluationReport {
    RecordingHeader header;          ///< of the recording
    EvaluationOptions options;       ///< of the evaluation
    int instants = 0;                ///< moments judged
    std::vector<PartFigures> parts;  ///< from Evaluation::figures
};

/// @param figure a figure
/// @param header of the recording
/// @return whether the truth of the recording allows the figure
bool isAllowed(const Figure& figure, const RecordingHeader& header);

/// @return all figures of the whole scene and the essential ones of its parts, a column per
///         tracker; "-" where the truth of the recording does not allow a figure or there is
///         nothing to average
std::string toTable(const EvaluationReport& report);

/// @return the same and all the other figures, as one JSON object; null where the table has "-"
std::string toJsonText(const EvaluationReport& report);

}  // namespace Workbench
