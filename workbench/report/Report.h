// SPDX-License-Identifier: Apache-2.0
// Builds one HTML file from a recording and one or two fusion runs of it.
#pragma once

#include "io/LineReader.h"
#include "recording/Excerpt.h"
#include "recording/Header.h"
#include "replay/Provenance.h"
#include "report/MapTiles.h"

#include <functional>
#include <string>
#include <vector>

namespace Workbench {

/// A fusion run to be shown.
struct ReportRun {
    std::string fused;    ///< file of fused tracks
    std::string explain;  ///< file of replay --explain of the same run; empty: none
};

/// The files that a report is made from.
struct ReportInputs {
    std::string recording;        ///< file of the recording
    std::vector<ReportRun> runs;  ///< one or two
    MapTiles map = {};            ///< under the plan
    Excerpt excerpt = {};         ///< the part of the recording of which the runs are
};

/// Called before every line with the reader of its file; may throw.
using ReportProgress = std::function<void(const LineReader&)>;

/// Reads the files and packs their contents.
///
/// @param inputs the files
/// @param provenance checks whether the files belong together
/// @param progress called with the progress
/// @return the data of the page
/// @throw InputError the fault of a file, or which files do not belong together
Json reportData(const ReportInputs& inputs, const Provenance& provenance,
                const ReportProgress& progress);

/// @param data any JSON
/// @return its text, safe inside any HTML element: ASCII without <, > and &
std::string embeddable(const Json& data);

}  // namespace Workbench
