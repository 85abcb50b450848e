// SPDX-License-Identifier: Apache-2.0
#include "report/Packed.h"
#include "report/TrackTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;
using VeskarTest::numbersOf;
using Workbench::TrackTable;

TEST(TrackTable, KeepsRowsTrackByTrack) {
    TrackTable table({"id"}, {{"x", 0.1}, {"y", 1.0}});
    table.beginFrame();
    table.add({7}, {1.0, 10.0});
    table.add({-3}, {2.0, 20.0});
    table.beginFrame();
    table.add({7}, {1.5, 11.0});
    const auto written = table.json();
    EXPECT_EQ(written["frames"], 2);
    EXPECT_EQ(written["tracks"], 2);
    EXPECT_EQ(written["rows"], 3);
    EXPECT_THAT(numbersOf(written["keys"]["id"]), ElementsAre(-3, 7));
    EXPECT_THAT(numbersOf(written["counts"]), ElementsAre(1, 2));
    EXPECT_THAT(
        numbersOf(written["columns"]["x"]),
        ElementsAre(testing::DoubleEq(2.0), testing::DoubleEq(1.0), testing::DoubleEq(1.5)));
    EXPECT_THAT(numbersOf(written["columns"]["y"]), ElementsAre(20, 10, 11));
}

TEST(TrackTable, CountsTheFramesThatATrackLeavesOut) {
    TrackTable table({"id"}, {});
    for (int frame = 0; frame < 6; ++frame) {
        table.beginFrame();
        if (frame == 2 || frame == 3 || frame == 5) {
            table.add({1}, {});
        }
    }
    EXPECT_THAT(numbersOf(table.json()["skipped"]), ElementsAre(2, 0, 1));
}

TEST(TrackTable, TellsTracksApartByTheWholeKey) {
    TrackTable table({"a", "b"}, {{"x", 1.0}});
    table.beginFrame();
    table.add({1, 2}, {5.0});
    table.add({2, 1}, {6.0});
    table.add({1, 2}, {7.0});
    const auto written = table.json();
    EXPECT_THAT(numbersOf(written["keys"]["a"]), ElementsAre(1, 2));
    EXPECT_THAT(numbersOf(written["keys"]["b"]), ElementsAre(2, 1));
    EXPECT_THAT(numbersOf(written["counts"]), ElementsAre(2, 1));
    EXPECT_THAT(numbersOf(written["skipped"]), ElementsAre(0, -1, 0)) << "twice in the same frame";
}

TEST(TrackTable, MayBeEmpty) {
    const auto written = TrackTable({"id"}, {{"x", 1.0}}).json();
    EXPECT_EQ(written["rows"], 0);
    EXPECT_THAT(numbersOf(written["columns"]["x"]), IsEmpty());
}
