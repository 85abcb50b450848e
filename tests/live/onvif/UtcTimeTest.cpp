// SPDX-License-Identifier: Apache-2.0
// Time stamps of scene descriptions. Expected numbers: date -u -d TIME +%s.
#include "live/onvif/UtcTime.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(UtcTime, IsReadInEveryForm) {
    const std::pair<const char*, UtcTime> times[] = {
        {"1970-01-01T00:00:00Z", seconds(0)},
        {"2026-05-01T12:00:00Z", seconds(1777636800)},
        {"2026-05-01T12:00:00", seconds(1777636800)},
        {" 2026-05-01T12:00:00.25Z\n", milliseconds(1777636800250)},
        {"2026-05-01T14:00:00+02:00", seconds(1777636800)},
        {"2026-05-01T06:30:00-05:30", seconds(1777636800)},
        {"2026-05-01T12:00:00.000000001Z", seconds(1777636800) + UtcTime(1)},
        {"2026-05-01T12:00:00.0000000019999Z", seconds(1777636800) + UtcTime(1)},
        {"2016-9-10T12:24:57.321", milliseconds(1473510297321)},
        {"2024-02-29T23:59:59Z", seconds(1709251199)},
        {"2016-12-31T23:59:60Z", seconds(1483228800)},
        {"2000-03-01T00:00:00Z", seconds(951868800)},
        {"2100-03-01T00:00:00Z", seconds(4107542400)}};
    for (const auto& [text, time] : times) {
        EXPECT_EQ(parseUtcTime(text), time) << text;
    }
}

TEST(UtcTime, IsRefusedWhenItIsNone) {
    for (const char* text : {"",
                             "Z",
                             "2026",
                             "2026-05-01",
                             "2026-05-01 12:00:00Z",
                             "2026-05-01T12:00Z",
                             "2026-13-01T12:00:00Z",
                             "2026-00-01T12:00:00Z",
                             "2026-02-29T12:00:00Z",
                             "2100-02-29T12:00:00Z",
                             "2026-04-31T12:00:00Z",
                             "2026-05-00T12:00:00Z",
                             "2026-05-01T24:00:00Z",
                             "2026-05-01T12:60:00Z",
                             "2026-05-01T12:00:61Z",
                             "2026-05-01T12:00:00.Z",
                             "2026-05-01T12:00:00+2",
                             "2026-05-01T12:00:00+15:00",
                             "2026-05-01T12:00:00+02:60",
                             "2026-05-01T12:00:00Zx",
                             "1969-12-31T23:59:59Z",
                             "1970-01-01T00:00:00+01:00",
                             "2201-01-01T00:00:00Z",
                             "99999-01-01T00:00:00Z",
                             "-2026-05-01T12:00:00Z",
                             "2026-05-01T12:00:00 Z",
                             "2026-05-01T-1:00:00Z"}) {
        EXPECT_EQ(parseUtcTime(text), std::nullopt) << text;
    }
}

TEST(UtcTime, IsWrittenWithMicroseconds) {
    EXPECT_EQ(utcText(seconds(0)), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(utcText(milliseconds(1777636800250)), "2026-05-01T12:00:00.250000Z");
    EXPECT_EQ(utcText(seconds(1709251199) + UtcTime(999'999'999)), "2024-02-29T23:59:59.999999Z");
    EXPECT_EQ(utcText(seconds(-5)), "1970-01-01T00:00:00.000000Z");
}

TEST(UtcTime, LeadsBackToItself) {
    // Every 35 days and some, for 230 years: all months, leap days and ends of centuries.
    for (UtcTime time = UtcTime::zero(); time < std::chrono::hours(24 * 365 * 230);
         time += std::chrono::hours(853) + std::chrono::microseconds(61'000'001)) {
        ASSERT_EQ(parseUtcTime(utcText(time)), time) << utcText(time);
    }
}

}  // namespace
}  // namespace Veskar::Live
