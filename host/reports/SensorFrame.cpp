// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/SensorFrame.h>

namespace Veskar::Host {

const ReportBase& baseOf(const Report& report) {
    return std::visit([](const auto& form) -> const ReportBase& { return form; }, report);
}

const char* sourceName(Source source) {
    return source == VideoObject ? "video" : source == Radar ? "radar" : "other";
}

}  // namespace Veskar::Host
