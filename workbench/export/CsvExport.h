// SPDX-License-Identifier: Apache-2.0
// Exports tracks as comma-separated values (RFC 4180).
#pragma once

#include "export/Exporter.h"
#include "host/installation/RecordingHeader.h"
#include "io/OutputFile.h"

namespace Workbench {

/// One row per track and frame: layer, UTC, the columns of FusedCsv.h, box. A frame without tracks
/// is a row without a track.
class CsvExport : public Exporter {
public:
    /// @param output receives the rows; must outlive this
    /// @param header of the recording; must outlive this
    CsvExport(OutputFile& output, const RecordingHeader& header);

    void add(const std::string& layer, const FusedFrame& frame) override;
    void finish() override {}

private:
    void beginRow(const std::string& layer, const FusedFrame& frame);

    OutputFile& output_;
    const RecordingHeader& header_;
    LineText text_;
};

}  // namespace Workbench
