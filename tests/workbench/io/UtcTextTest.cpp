// SPDX-License-Identifier: Apache-2.0
#include "io/UtcText.h"

#include <cmath>

#include <gtest/gtest.h>

using Workbench::utcText;

TEST(UtcText, IsThatOfTheCalendar) {
    EXPECT_EQ(utcText(0.0), "1970-01-01T00:00:00.000000Z");
    EXPECT_EQ(utcText(951782400.25), "2000-02-29T00:00:00.250000Z");
    EXPECT_EQ(utcText(1777636800.5), "2026-05-01T12:00:00.500000Z");
}

TEST(UtcText, RoundsIntoTheNextSecond) {
    EXPECT_EQ(utcText(59.9999997), "1970-01-01T00:01:00.000000Z");
}

TEST(UtcText, IsEmptyWhereTheFormatEnds) {
    for (const double time : {-1.0, 253402300800.0, 1e300, std::nan("")}) {
        EXPECT_EQ(utcText(time), "") << time;
    }
    EXPECT_EQ(utcText(253402300798.0), "9999-12-31T23:59:58.000000Z");
}
