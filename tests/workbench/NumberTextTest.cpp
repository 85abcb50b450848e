// SPDX-License-Identifier: Apache-2.0
#include "io/NumberText.h"

#include <cstdlib>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

std::string number(double value, int decimals) {
    std::string text;
    Workbench::appendNumber(text, value, decimals);
    return text;
}

std::string quoted(const std::string& value) {
    std::string text;
    Workbench::appendQuoted(text, value);
    return text;
}

}  // namespace

TEST(NumberText, RoundsAndDropsTrailingZeros) {
    EXPECT_EQ(number(0.0, 3), "0");
    EXPECT_EQ(number(1.5, 3), "1.5");
    EXPECT_EQ(number(-2.0, 3), "-2");
    EXPECT_EQ(number(0.0005, 3), "0");
    EXPECT_EQ(number(0.0006, 3), "0.001");
    EXPECT_EQ(number(1.9996, 3), "2");
    EXPECT_EQ(number(-0.0001, 3), "0");
    EXPECT_EQ(number(12.034, 2), "12.03");
    EXPECT_EQ(number(7.9, 0), "8");
    EXPECT_EQ(number(0.000000001, 9), "0.000000001");
}

TEST(NumberText, IsWithinHalfAUnitOfTheNumber) {
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> draw(-1e4, 1e4);
    for (int i = 0; i < 2000; ++i) {
        const double value = draw(engine);
        EXPECT_NEAR(std::strtod(number(value, 4).c_str(), nullptr), value, 0.50001e-4);
    }
}

TEST(NumberText, KeepsHugeNumbersWhole) {
    EXPECT_EQ(std::strtod(number(1e300, 6).c_str(), nullptr), 1e300);
    EXPECT_EQ(std::strtod(number(-9e15, 3).c_str(), nullptr), -9e15);
}

TEST(NumberText, SaysNullForWhatIsNotFinite) {
    EXPECT_EQ(number(std::numeric_limits<double>::quiet_NaN(), 3), "null");
    EXPECT_EQ(number(-std::numeric_limits<double>::infinity(), 3), "null");
}

TEST(NumberText, QuotesAnyBytes) {
    EXPECT_EQ(quoted("red"), "\"red\"");
    EXPECT_EQ(quoted("a\"b\\c\n"), "\"a\\\"b\\\\c\\n\"");
    EXPECT_EQ(quoted("rosé"), "\"rosé\"");
    EXPECT_EQ(quoted("\xff"), "\"\xef\xbf\xbd\"");
}
