// SPDX-License-Identifier: Apache-2.0
#include "export/CsvExport.h"

#include <veskar-host/SensorFrame.h>

#include "host/reports/JsonLine.h"
#include "io/CsvCells.h"
#include "io/UtcText.h"
#include "replay/FusedCsv.h"

#include <algorithm>

namespace Workbench {
namespace {

const std::string boxColumns = "left,bottom,right,top";

void appendBoxCells(LineText& row, const ImageBox& box) {
    for (const double edge : {box.left, box.bottom, box.right, box.top}) {
        addCell(row, edge, imageDecimals);
    }
}

/// The cells of a frame that has no track: its times and its source.
void appendEmptyFrame(LineText& row, const FusedFrame& frame) {
    row.addNumber(frame.time, timeDecimals);
    addCell(row, frame.received, timeDecimals);
    addCell(row, sourceName(frame.source));
    const std::string columns = csvColumns() + "," + boxColumns;
    const auto commas = std::count(columns.begin(), columns.end(), ',');
    constexpr std::ptrdiff_t written = 2;
    row += std::string(static_cast<std::size_t>(commas - written), ',');
}

}  // namespace

CsvExport::CsvExport(OutputFile& output, const RecordingHeader& header)
    : output_(output), header_(header) {
    output_.write("layer,utc," + csvColumns() + "," + boxColumns + "\n");
}

void CsvExport::beginRow(const std::string& layer, const FusedFrame& frame) {
    text_ += layer;
    addCell(text_, header_.epoch ? utcText(*header_.epoch + frame.time) : "");
    text_ += ',';
}

void CsvExport::add(const std::string& layer, const FusedFrame& frame) {
    text_.clear();
    for (const FusedTrack& track : frame.tracks) {
        beginRow(layer, frame);
        appendCsvCells(text_, frame, track);
        appendBoxCells(text_, track.box);
        text_ += '\n';
    }
    if (frame.tracks.empty()) {
        beginRow(layer, frame);
        appendEmptyFrame(text_, frame);
        text_ += '\n';
    }
    output_.write(text_.view());
}

}  // namespace Workbench
