// SPDX-License-Identifier: Apache-2.0
#include "export/Formats.h"

#include "export/CsvExport.h"
#include "export/GeoJsonExport.h"

namespace Workbench {
namespace {

template <typename Format>
std::unique_ptr<Exporter> openFormat(OutputFile& output, const RecordingHeader& header) {
    return std::make_unique<Format>(output, header);
}

}  // namespace

const std::vector<ExportFormat>& exportFormats() {
    static const std::vector<ExportFormat> formats{{"csv", openFormat<CsvExport>},
                                                   {"geojson", openFormat<GeoJsonExport>}};
    return formats;
}

}  // namespace Workbench
