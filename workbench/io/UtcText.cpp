// SPDX-License-Identifier: Apache-2.0
#include "io/UtcText.h"

#include <cmath>
#include <cstdint>
#include <memory>

#include <fmt/format.h>
#include <glib.h>

namespace Workbench {

std::string utcText(double unixTime) {
    constexpr double year10000 = 253402300800.0;
    constexpr std::int64_t microsPerSecond = 1'000'000;
    if (!(unixTime >= 0.0 && unixTime < year10000 - 1.0)) {
        return {};
    }
    const std::int64_t micros = std::llround(unixTime * microsPerSecond);
    // Not by std::time_t, which ends in 2038 where it has 32 bits.
    const std::unique_ptr<GDateTime, decltype(&::g_date_time_unref)> date(
        ::g_date_time_new_from_unix_utc(micros / microsPerSecond), &::g_date_time_unref);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z",
                       ::g_date_time_get_year(date.get()), ::g_date_time_get_month(date.get()),
                       ::g_date_time_get_day_of_month(date.get()),
                       ::g_date_time_get_hour(date.get()), ::g_date_time_get_minute(date.get()),
                       ::g_date_time_get_second(date.get()), micros % microsPerSecond);
}

}  // namespace Workbench
