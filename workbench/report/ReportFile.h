// SPDX-License-Identifier: Apache-2.0
// Writes the report of a recording as one HTML file.
#pragma once

#include "replay/Provenance.h"
#include "report/Report.h"

#include <string>

namespace Workbench {

/// @param inputs see reportData
/// @param output the HTML file, or "-"
/// @param provenance see reportData
/// @param progress see reportData
/// @throw InputError as reportData, why the file cannot be written, or why this build has no page
/// @throw Interrupted when a signal has come
void writeReport(const ReportInputs& inputs, const std::string& output,
                 const Provenance& provenance, const ReportProgress& progress);

}  // namespace Workbench
