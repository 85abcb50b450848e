// SPDX-License-Identifier: Apache-2.0
#include "io/UtcText.h"

#include <cmath>
#include <cstdint>
#include <ctime>

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace Workbench {

std::string utcText(double unixTime) {
    constexpr double year10000 = 253402300800.0;
    constexpr std::int64_t microsPerSecond = 1'000'000;
    if (!(unixTime >= 0.0 && unixTime < year10000 - 1.0)) {
        return {};
    }
    const std::int64_t micros = std::llround(unixTime * microsPerSecond);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:06}Z",
                       fmt::gmtime(static_cast<std::time_t>(micros / microsPerSecond)),
                       micros % microsPerSecond);
}

}  // namespace Workbench
