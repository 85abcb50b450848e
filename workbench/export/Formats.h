// SPDX-License-Identifier: Apache-2.0
// The formats to export to.
#pragma once

#include "export/Exporter.h"
#include "host/installation/RecordingHeader.h"

#include <memory>
#include <string>
#include <vector>

namespace Workbench {

/// A format and its exporter.
struct ExportFormat {
    const char* name;
    bool isDirectory;  ///< the output is a directory of files, and not one file
    /// Opens the output: a file or "-", or a directory. The header must outlive the exporter.
    std::unique_ptr<Exporter> (*open)(const std::string& output, const RecordingHeader& header);
};

/// @return all formats
const std::vector<ExportFormat>& exportFormats();

}  // namespace Workbench
