// SPDX-License-Identifier: Apache-2.0
// A recording and one or two fusion runs of it as one HTML file.
#pragma once

#include "io/LineReader.h"
#include "recording/Header.h"
#include "replay/Provenance.h"

#include <functional>
#include <string>
#include <vector>

namespace Workbench {

/// A fusion run to show.
struct ReportRun {
    std::string fused;    ///< file of fused tracks
    std::string explain;  ///< what replay --explain wrote of the same run; empty: nothing
};

/// What a report shows.
struct ReportInputs {
    std::string recording;        ///< file of the recording
    std::vector<ReportRun> runs;  ///< one or two
};

/// Told before every line what is being read; may throw.
using ReportProgress = std::function<void(const LineReader&)>;

/// Reads everything and packs it.
///
/// @param inputs the files
/// @param provenance judges whether they belong together
/// @param progress told how far it is
/// @return what the page shows
/// @throw InputError what is wrong with a file, or which of them do not belong together
Json reportData(const ReportInputs& inputs, const Provenance& provenance,
                const ReportProgress& progress);

/// @param data any JSON
/// @return its text, which can stand inside any HTML element: ASCII without <, > and &
std::string embeddable(const Json& data);

}  // namespace Workbench
