// SPDX-License-Identifier: Apache-2.0
#include "report/ReportFile.h"

#include <veskar-host/InputError.h>

#include "io/OutputFile.h"
#include "report/Page.h"

#include <nlohmann/json.hpp>

namespace Workbench {

void writeReport(const ReportInputs& inputs, const std::string& output,
                 const Provenance& provenance, const ReportProgress& progress) {
    if (reportPage.empty()) {
        throw InputError(std::string(reportPageMissing));
    }
    OutputFile file(output);
    const Json data = reportData(inputs, provenance, progress);
    const std::size_t mark = reportPage.find(reportPageMark);
    file.write(reportPage.substr(0, mark));
    file.write(embeddable(data));
    file.write(reportPage.substr(mark + reportPageMark.size()));
    file.commit();
}

}  // namespace Workbench
