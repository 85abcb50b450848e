// SPDX-License-Identifier: Apache-2.0
// Values of elements and attributes.
#include "live/onvif/Scalar.h"

#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using namespace std::string_view_literals;

TEST(Scalar, IsANumberWhereverItSpellsOne) {
    const std::pair<Scalar, double> numbers[] = {
        {"0.5"sv, 0.5},    {" -12 "sv, -12.0},      {"+3"sv, 3.0},
        {"1e3"sv, 1000.0}, {".5"sv, 0.5},           {std::int64_t{-7}, -7.0},
        {2.25, 2.25},      {Real{1.5, 2}, 1.5},     {"1E-2"sv, 0.01},
        {"-0"sv, 0.0},     {"0000000000001"sv, 1.0}};
    for (const auto& [scalar, number] : numbers) {
        EXPECT_EQ(numberIn(scalar), number) << textOf(scalar);
    }
    for (const Scalar& scalar :
         {Scalar(""sv), Scalar("abc"sv), Scalar("1,5"sv), Scalar("1.5m"sv), Scalar("NaN"sv),
          Scalar("INF"sv), Scalar("-INF"sv), Scalar("inf"sv), Scalar("nan"sv), Scalar("1e999"sv),
          Scalar("0x10"sv), Scalar("+-1"sv), Scalar("++1"sv), Scalar("- 1"sv), Scalar(true),
          Scalar()}) {
        EXPECT_EQ(numberIn(scalar), std::nullopt) << textOf(scalar);
    }
}

TEST(Scalar, IsAnIntegerOfAnyLengthInItsShortestSpelling) {
    EXPECT_EQ(integerIn("15"sv), "15");
    EXPECT_EQ(integerIn(" +015 "sv), "15");
    EXPECT_EQ(integerIn("-007"sv), "-7");
    EXPECT_EQ(integerIn("-0"sv), "0");
    EXPECT_EQ(integerIn("000"sv), "0");
    EXPECT_EQ(integerIn(std::int64_t{-9223372036854775807}), "-9223372036854775807");
    EXPECT_EQ(integerIn("123456789012345678901234567890"sv), "123456789012345678901234567890");
    for (const std::string_view text : {""sv, "-"sv, "1.0"sv, "1e3"sv, "a1"sv, "1 2"sv, "--1"sv}) {
        EXPECT_EQ(integerIn(text), std::nullopt) << text;
    }
    EXPECT_EQ(integerIn(1.0), std::nullopt);
    EXPECT_EQ(integerIn(true), std::nullopt);
    EXPECT_EQ(integerIn(Scalar()), std::nullopt);
}

TEST(Scalar, HasTheTextOfXml) {
    EXPECT_EQ(textOf(" a b\t"sv), "a b");
    EXPECT_EQ(textOf(std::int64_t{-3}), "-3");
    EXPECT_EQ(textOf(0.1), "0.1");
    EXPECT_EQ(textOf(Real{1.0 / 3.0, 3}), "0.333");
    EXPECT_EQ(textOf(true), "true");
    EXPECT_EQ(textOf(false), "false");
    EXPECT_EQ(textOf(Scalar()), "");
}

}  // namespace
}  // namespace Veskar::Live
