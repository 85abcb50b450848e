// SPDX-License-Identifier: Apache-2.0
// Writes pages with their data as one HTML file.
#pragma once

#include "io/OutputFile.h"
#include "replay/Provenance.h"
#include "report/Report.h"

#include <string>
#include <string_view>

namespace Workbench {

/// @param page one of Page.h, with a place for data
/// @param data for it
/// @param file receives the page
/// @param pictureSources from where it may fetch pictures, each behind a space; empty: from nowhere
/// @throw InputError why this build has no page, or why the file cannot be written
void writePage(std::string_view page, const Json& data, OutputFile& file,
               std::string_view pictureSources = "");

/// @param inputs see reportData
/// @param output the HTML file, or "-"
/// @param provenance see reportData
/// @param progress see reportData
/// @throw InputError as reportData, why the file cannot be written, or why this build has no page
/// @throw Interrupted when a signal has come
void writeReport(const ReportInputs& inputs, const std::string& output,
                 const Provenance& provenance, const ReportProgress& progress);

}  // namespace Workbench
