// SPDX-License-Identifier: Apache-2.0
// The formats to export to.
#pragma once

#include "export/Exporter.h"
#include "host/installation/RecordingHeader.h"
#include "io/OutputFile.h"

#include <memory>
#include <vector>

namespace Workbench {

/// A format and its exporter.
struct ExportFormat {
    const char* name;
    /// The output and the header must outlive the exporter.
    std::unique_ptr<Exporter> (*open)(OutputFile& output, const RecordingHeader& header);
};

/// @return all formats
const std::vector<ExportFormat>& exportFormats();

}  // namespace Workbench
