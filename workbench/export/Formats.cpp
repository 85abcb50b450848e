// SPDX-License-Identifier: Apache-2.0
#include "export/Formats.h"

#include "export/CsvExport.h"
#include "export/GeoJsonExport.h"
#include "export/KittiExport.h"
#include "export/McapExport.h"
#include "export/MotExport.h"
#include "export/OnvifFormats.h"
#include "io/OutputFile.h"

namespace Workbench {
namespace {

/// A format whose output is one file.
template <typename Format>
class FileExport : public Exporter {
public:
    FileExport(const std::string& path, const RecordingHeader& header)
        : output_(path), format_(output_, header) {}

    void atMoment(double time) override { format_.atMoment(time); }
    void add(const std::string& layer, const FusedFrame& frame) override {
        format_.add(layer, frame);
    }
    void finish() override {
        format_.finish();
        output_.commit();
    }

private:
    OutputFile output_;
    Format format_;
};

template <typename Format>
std::unique_ptr<Exporter> openFormat(const std::string& output, const RecordingHeader& header) {
    return std::make_unique<Format>(output, header);
}

}  // namespace

const std::vector<ExportFormat>& exportFormats() {
    static const std::vector<ExportFormat> formats = [] {
        std::vector<ExportFormat> all{{"csv", false, openFormat<FileExport<CsvExport>>},
                                      {"geojson", false, openFormat<FileExport<GeoJsonExport>>},
                                      {"mcap", false, openFormat<FileExport<McapExport>>},
                                      {"mot", true, openFormat<MotExport>},
                                      {"kitti", true, openFormat<KittiExport>}};
        for (const ExportFormat& format : onvifFormats()) {
            all.push_back(format);
        }
        return all;
    }();
    return formats;
}

}  // namespace Workbench
