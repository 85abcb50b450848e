// SPDX-License-Identifier: Apache-2.0
#include "report/ReportFile.h"

#include <veskar-host/InputError.h>

#include "report/Page.h"

#include <nlohmann/json.hpp>

namespace Workbench {

void writePage(std::string_view page, const Json& data, OutputFile& file) {
    if (!reportPageMissing.empty()) {
        throw InputError(std::string(reportPageMissing));
    }
    const std::size_t mark = page.find(reportPageMark);
    file.write(page.substr(0, mark));
    file.write(embeddable(data));
    file.write(page.substr(mark + reportPageMark.size()));
}

void writeReport(const ReportInputs& inputs, const std::string& output,
                 const Provenance& provenance, const ReportProgress& progress) {
    if (!reportPageMissing.empty()) {
        throw InputError(std::string(reportPageMissing));
    }
    OutputFile file(output);
    writePage(reportPage, reportData(inputs, provenance, progress), file);
    file.commit();
}

}  // namespace Workbench
