// SPDX-License-Identifier: Apache-2.0
// Exports a recording and its runs.
#pragma once

#include <veskar-host/Site.h>

#include "HostLibrary.h"
#include "export/Formats.h"
#include "io/LineReader.h"
#include "recording/Excerpt.h"
#include "replay/Provenance.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Workbench {

/// What is exported.
struct ExportTask {
    std::string recording;          ///< file, or "-"
    Excerpt excerpt;                ///< the part of it to export
    std::vector<std::string> runs;  ///< files of fused tracks of that part, or "-"
    std::string output = "-";       ///< see ExportFormat::open
    std::set<std::string> layers;   ///< of exportLayers; empty: all
    std::optional<Site> site;       ///< instead of the recording's
};

/// @return the layers: "truth", "video", "radar", and "fused" for all runs
std::vector<std::string> exportLayers();

/// Hands the frames of the recording and of its runs to an exporter, in the order of their arrival.
/// Sensors' tracks are placed on the ground with the installation and the configuration of the
/// first run, or with the recording's and the shipped one when there is none.
///
/// @param task what is exported
/// @param format receives it
/// @param provenance checks whether the runs belong to the recording
/// @param progress called after every line with the reader of the recording
/// @throw InputError the fault of an input, or that the format cannot state what it contains
void exportTo(const ExportTask& task, const ExportFormat& format, const Provenance& provenance,
              const std::function<void(const LineReader&)>& progress);

}  // namespace Workbench
