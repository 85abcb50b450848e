// SPDX-License-Identifier: Apache-2.0
#include "report/Column.h"
#include "report/Packed.h"

#include <limits>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using VeskarTest::bytesOf;
using VeskarTest::numbersOf;
using Workbench::base64;
using Workbench::Column;
using Workbench::inSteps;
using Workbench::missing;

TEST(Column, Base64AgreesWithTheVectorsOfItsStandard) {
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foo"), "Zm9v");
    EXPECT_EQ(base64("foob"), "Zm9vYg==");
    EXPECT_EQ(base64("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64("\xff\xfe\xfd"), "//79");
}

TEST(Column, CountsWholeStepsAndKnowsWhatIsNoNumber) {
    EXPECT_EQ(inSteps(1.24, 0.1), 12);
    EXPECT_EQ(inSteps(-1.26, 0.1), -13);
    EXPECT_EQ(inSteps(std::numeric_limits<double>::quiet_NaN(), 0.1), missing);
    EXPECT_EQ(inSteps(-std::numeric_limits<double>::infinity(), 0.1), missing);
    EXPECT_EQ(inSteps(1e300, 1.0), 1 << 28);
    EXPECT_EQ(inSteps(-1e300, 1.0), -(1 << 28)) << "the least number is still a number";
}

TEST(Column, WritesFoldedDifferencesAndRunsOfZeros) {
    Column column(1.0);
    for (const int value : {0, 0, 0, 5, 5, 4, 204}) {
        column.append(value);
    }
    // Three zeros; +5; one zero; -1; +200 in two bytes.
    EXPECT_THAT(bytesOf(column.json()["data"].get<std::string>()),
                ElementsAre(0, 2, 10, 0, 0, 1, 0x90, 3));
    EXPECT_EQ(column.json()["step"], 1.0);
}

TEST(Column, CanBeReadWhileItGrows) {
    Column column(0.5);
    column.add(2.0);
    column.add(2.0);
    EXPECT_THAT(numbersOf(column.json()), ElementsAre(2.0, 2.0));
    column.add(2.0);
    column.add(-1.0);
    EXPECT_THAT(numbersOf(column.json()), ElementsAre(2.0, 2.0, 2.0, -1.0));
}

TEST(Column, KeepsEveryIntegerAndEveryGap) {
    std::mt19937 random(7);
    Column column(1.0);
    std::vector<std::int32_t> values{std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max(), missing, 0, missing};
    for (int i = 0; i < 3000; ++i) {
        const auto draw = random();
        const int repeats = draw % 5 == 0 ? 300 : 1;
        const auto value = static_cast<std::int32_t>(draw) >> (draw % 31);
        values.insert(values.end(), static_cast<std::size_t>(repeats), value);
    }
    for (const std::int32_t value : values) {
        column.append(value);
    }
    const std::vector<double> read = numbersOf(column.json());
    ASSERT_EQ(read.size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i] == missing) {
            EXPECT_TRUE(std::isnan(read[i])) << i;
        } else {
            EXPECT_EQ(read[i], values[i]) << i;
        }
    }
}
