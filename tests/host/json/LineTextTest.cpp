// SPDX-License-Identifier: Apache-2.0
#include "host/json/LineText.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>

#include <gtest/gtest.h>

namespace {

std::string written(double value, int decimals) {
    Veskar::Host::Internal::LineText text;
    text.addNumber(value, decimals);
    return text.string();
}

// The expected text: the digits of an integer number of units, with the decimal point inserted.
std::string decimal(std::int64_t units, int decimals) {
    std::string digits = std::to_string(std::abs(units));
    while (digits.size() <= static_cast<std::size_t>(decimals)) {
        digits.insert(0, "0");
    }
    std::string whole = digits.substr(0, digits.size() - static_cast<std::size_t>(decimals));
    std::string fraction = digits.substr(whole.size());
    while (!fraction.empty() && fraction.back() == '0') {
        fraction.pop_back();
    }
    const std::string sign = units < 0 ? "-" : "";
    return sign + whole + (fraction.empty() ? "" : ".") + fraction;
}

std::string quoted(const std::string& value) {
    Veskar::Host::Internal::LineText text;
    text.addQuoted(value);
    return text.string();
}

}  // namespace

TEST(LineText, RoundsAndDropsTrailingZeros) {
    EXPECT_EQ(written(0.0, 3), "0");
    EXPECT_EQ(written(1.5, 3), "1.5");
    EXPECT_EQ(written(-2.0, 3), "-2");
    EXPECT_EQ(written(0.0005, 3), "0");
    EXPECT_EQ(written(0.0006, 3), "0.001");
    EXPECT_EQ(written(1.9996, 3), "2");
    EXPECT_EQ(written(-0.0001, 3), "0");
    EXPECT_EQ(written(12.034, 2), "12.03");
    EXPECT_EQ(written(7.9, 0), "8");
    EXPECT_EQ(written(0.000000001, 9), "0.000000001");
}

TEST(LineText, IsWithinHalfAUnitOfTheNumber) {
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> draw(-1e4, 1e4);
    for (int i = 0; i < 2000; ++i) {
        const double value = draw(engine);
        EXPECT_NEAR(std::strtod(written(value, 4).c_str(), nullptr), value, 0.50001e-4);
    }
}

TEST(LineText, WritesEveryDigit) {
    std::mt19937_64 engine(2);
    for (int i = 0; i < 20000; ++i) {
        const int decimals = i % 10;
        // Numbers of all magnitudes.
        const auto units = static_cast<std::int64_t>(engine() >> 14) >> (engine() % 50);
        const std::int64_t value = i % 3 == 0 ? -units : units;
        const double exact = static_cast<double>(value) / std::pow(10.0, decimals);
        ASSERT_EQ(written(exact, decimals), decimal(value, decimals));
    }
}

TEST(LineText, KeepsHugeNumbersWhole) {
    EXPECT_EQ(std::strtod(written(1e300, 6).c_str(), nullptr), 1e300);
    EXPECT_EQ(std::strtod(written(-9e15, 3).c_str(), nullptr), -9e15);
}

TEST(LineText, SaysNullForWhatIsNotFinite) {
    EXPECT_EQ(written(std::numeric_limits<double>::quiet_NaN(), 3), "null");
    EXPECT_EQ(written(-std::numeric_limits<double>::infinity(), 3), "null");
}

TEST(LineText, WritesRealsWithTheFewestDigits) {
    const auto real = [](double value) {
        Veskar::Host::Internal::LineText text;
        text.addReal(value);
        return text.string();
    };
    EXPECT_EQ(real(1.0), "1.0");
    EXPECT_EQ(real(-0.0), "-0.0");
    EXPECT_EQ(real(0.1), "0.1");
    EXPECT_EQ(real(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(real(0.0001), "0.0001");
    EXPECT_EQ(real(0.00001), "1e-05");
    EXPECT_EQ(real(123456789012345.0), "123456789012345.0");
    EXPECT_EQ(real(1e15), "1e+15");
    EXPECT_EQ(real(-1.7976931348623157e308), "-1.7976931348623157e+308");
    EXPECT_EQ(real(std::numeric_limits<double>::infinity()), "null");
    std::mt19937_64 engine(3);
    for (int i = 0; i < 20000; ++i) {
        const double value =
            std::ldexp(static_cast<double>(engine()), static_cast<int>(engine() % 1500) - 900);
        ASSERT_EQ(std::strtod(real(value).c_str(), nullptr), value);
    }
}

TEST(LineText, ShowsNumbersAsPeopleWriteThem) {
    using Veskar::Host::Internal::shortestText;
    EXPECT_EQ(shortestText(0.0), "0");
    EXPECT_EQ(shortestText(-12.5), "-12.5");
    EXPECT_EQ(shortestText(1e6), "1000000");
    EXPECT_EQ(shortestText(1e15), "1000000000000000");
    EXPECT_EQ(shortestText(1e16), "1e+16");
    EXPECT_EQ(shortestText(0.000025), "2.5e-05");
    EXPECT_EQ(shortestText(-std::numeric_limits<double>::infinity()), "-inf");
}

TEST(LineText, QuotesAnyBytes) {
    EXPECT_EQ(quoted("red"), "\"red\"");
    EXPECT_EQ(quoted("a\"b\\c\n"), "\"a\\\"b\\\\c\\n\"");
    EXPECT_EQ(quoted("rosé"), "\"rosé\"");
    EXPECT_EQ(quoted("\xff"), "\"\xef\xbf\xbd\"");
    EXPECT_EQ(quoted("\xc3(\xa9"), "\"\xef\xbf\xbd(\xef\xbf\xbd\"");
    EXPECT_EQ(quoted(std::string("\0\x01\x1f\x7f", 4)), "\"\\u0000\\u0001\\u001f\x7f\"");
    EXPECT_EQ(quoted("\b\t\v\f\r/"), "\"\\b\\t\\u000b\\f\\r/\"");
    EXPECT_EQ(quoted(""), "\"\"");
}

TEST(LineText, AppendsMembers) {
    Veskar::Host::Internal::LineText text;
    text += "{\"id\":";
    text.addInteger(-2147483647 - 1);
    text.addMember("range", 12.3456, 3);
    text.addMember("image", {0.5, -0.25, 3.0}, 6);
    text.addMember("none", {}, 6);
    text.addName("class");
    text.addQuoted("car");
    text += '}';
    EXPECT_EQ(text.view(),
              R"({"id":-2147483648,"range":12.346,"image":[0.5,-0.25,3],"none":[],"class":"car"})");
}

TEST(LineText, GrowsAndBeginsAnew) {
    Veskar::Host::Internal::LineText text;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        text.addMember("a", i, 0);
        expected += ",\"a\":" + std::to_string(i);
    }
    EXPECT_EQ(text.view(), expected);
    text.clear();
    EXPECT_EQ(text.view(), "");
    text += "b";
    EXPECT_EQ(text.string(), "b");
}
