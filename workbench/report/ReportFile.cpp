// SPDX-License-Identifier: Apache-2.0
#include "report/ReportFile.h"

#include <veskar-host/InputError.h>

#include "report/Page.h"

#include <nlohmann/json.hpp>

namespace Workbench {

void writePage(std::string_view page, const Json& data, OutputFile& file,
               std::string_view pictureSources) {
    if (!reportPageMissing.empty()) {
        throw InputError(std::string(reportPageMissing));
    }
    const std::size_t mark = page.find(reportPageMark);
    const std::size_t sources = page.find(reportPictureSources) + reportPictureSources.size();
    file.write(page.substr(0, sources));
    file.write(pictureSources);
    file.write(page.substr(sources, mark - sources));
    file.write(embeddable(data));
    file.write(page.substr(mark + reportPageMark.size()));
}

void writeReport(const ReportInputs& inputs, const std::string& output,
                 const Provenance& provenance, const ReportProgress& progress) {
    if (!reportPageMissing.empty()) {
        throw InputError(std::string(reportPageMissing));
    }
    const std::string tiles = inputs.map.url.empty() ? "" : " " + originOf(inputs.map.url);
    OutputFile file(output);
    writePage(reportPage, reportData(inputs, provenance, progress), file, tiles);
    file.commit();
}

}  // namespace Workbench
