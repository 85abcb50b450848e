// SPDX-License-Identifier: Apache-2.0
// An evaluation over time and by object, as tables for other programs.
#pragma once

#include "evaluate/Evaluation.h"

#include <string>
#include <vector>

namespace Workbench {

/// How a table is written.
enum class TableForm {
    Csv,       ///< names in the first line; empty cells for what is not known
    JsonArray  ///< an array of objects; null for what is not known
};

/// @param path a file
/// @return JsonArray when its name ends in ".json", also before ".gz" and ".zst"
TableForm formOf(const std::string& path);

/// @param header of the recording
/// @param overTime of its evaluation
/// @param form how it is written
/// @return a row per tracker and moment: tracker, time, utc, GOSPA, localisationCost (m^2),
///         matched, missed, false; false tracks and distance are unknown when the truth is
///         incomplete
std::string momentTable(const RecordingHeader& header, const std::vector<GospaSeries>& overTime,
                        TableForm form);

/// @param overTime as momentTable
/// @param form as momentTable
/// @return a row per tracker and evaluated object: tracker, object, moments at which it existed,
///         those at which a track was matched to it, number of different tracks, how often the
///         track changed, times of the first and the last match
std::string objectTable(const std::vector<GospaSeries>& overTime, TableForm form);

}  // namespace Workbench
