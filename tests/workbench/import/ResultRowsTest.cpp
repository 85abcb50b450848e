// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "HostLibrary.h"
#include "Process.h"
#include "import/ResultRows.h"
#include "support/TemporaryDirectory.h"

#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using Workbench::ResultRow;

namespace {

class ResultRows : public testing::Test {
protected:
    std::vector<ResultRow> mot(const std::string& text) {
        VeskarTest::spill(file, text);
        return Workbench::readMotResults(file);
    }
    std::vector<ResultRow> kitti(const std::string& text) {
        VeskarTest::spill(file, text);
        return Workbench::readKittiResults(file);
    }
    void expectFault(const std::function<void()>& read, const std::string& fault) {
        try {
            read();
            ADD_FAILURE() << "accepts what should be refused:" << fault;
        } catch (const Workbench::InputError& error) {
            EXPECT_EQ(error.what(), file + fault);
        }
    }

    VeskarTest::TemporaryDirectory directory;
    const std::string file = directory / "results.txt";
};

TEST_F(ResultRows, OfMotCountFromOne) {
    const auto rows =
        mot("3, 4.0, 11, 21, 30, 40, 0.9, 5.5, -2.5, 0\r\n\n1,7,1,1,2,2,1,-1,-1,-1\n");
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].frame, 0);
    EXPECT_EQ(rows[0].line, 3U);
    EXPECT_EQ(rows[0].id, 7);
    EXPECT_TRUE(rows[0].position.array().isNaN().all());
    EXPECT_EQ(rows[1].frame, 2);
    EXPECT_EQ(rows[1].id, 4);
    EXPECT_EQ(rows[1].box, Eigen::Vector4d(10, 20, 40, 60));
    EXPECT_EQ(rows[1].confidence, 0.9);
    EXPECT_EQ(rows[1].position, Eigen::Vector2d(5.5, -2.5));
    EXPECT_EQ(rows[1].className, "unknown");
}

TEST_F(ResultRows, OfMotMayHaveNeitherBoxNorPlace) {
    const auto rows = mot("1,1,-1,-1,-1,-1,1\n1,2,5,5,2,3,1,-1,-1,0\n");
    EXPECT_TRUE(rows[0].box.array().isNaN().all());
    EXPECT_TRUE(rows[0].position.array().isNaN().all());
    EXPECT_EQ(rows[1].position, Eigen::Vector2d(-1, -1)) << "z says that this is a place";
}

TEST_F(ResultRows, OfKittiAreAheadOfTheCamera) {
    const auto rows = kitti(
        "3 2 Car 0 0 -1.5 1 2 3 4 1.5 1.6 4 -2.5 1.7 12.5 0\n"
        "3 -1 DontCare -1 -1 -10 1 2 3 4 -1 -1 -1 -1000 -1000 -1000 -10\n"
        "4 2 Car 0 0 -1.5 -1 -1 -1 -1 1.5 1.6 4 -2.5 1.7 12 0 0.75\n");
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows[0].frame, 3);
    EXPECT_EQ(rows[0].id, 2);
    EXPECT_EQ(rows[0].className, "Car");
    EXPECT_EQ(rows[0].box, Eigen::Vector4d(1, 2, 3, 4));
    EXPECT_EQ(rows[0].position, Eigen::Vector2d(12.5, 2.5));
    EXPECT_TRUE(std::isnan(rows[0].confidence));
    EXPECT_TRUE(rows[1].box.array().isNaN().all());
    EXPECT_EQ(rows[1].confidence, 0.75);
}

TEST_F(ResultRows, FaultsHavePlaces) {
    const auto expectMotFault = [&](const std::string& text, const std::string& fault) {
        expectFault([&] { mot(text); }, fault);
    };
    expectMotFault("1,2,3,4,5,6\n", ":1: 6 columns where 7 are needed");
    expectMotFault("1,2,3,4,5,6,7\n1,2,3,4,5,6,7\n", ":2: id 2 occurs twice in frame 1");
    expectMotFault("\n", ": no results");
    expectMotFault("0,2,3,4,5,6,7\n", ":1: frame 0 is not between 1 and 10000000");
    expectMotFault("1,2.5,3,4,5,6,7\n", ":1: \"2.5\" is no integer");
    for (const std::string number : {"left", "", "nan", "inf", "1e10", "0x1", "1 2"}) {
        expectMotFault("1,2,3,4," + number + ",6,7\n",
                       ":1: \"" + number + "\" is no number in the range of this format");
    }
    expectFault([&] { kitti("3 2 Car 0 0\n"); }, ":1: 5 columns where 17 are needed");
}

}  // namespace
