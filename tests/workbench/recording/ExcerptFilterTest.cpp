// SPDX-License-Identifier: Apache-2.0
#include "recording/ExcerptFilter.h"

#include <limits>

#include <gtest/gtest.h>

namespace Workbench {
namespace {

constexpr double forever = std::numeric_limits<double>::infinity();

RecordingLine sensor(double received) {
    SensorFrame frame;
    frame.time = received - 0.5;
    frame.received = received;
    return frame;
}

RecordingLine truth(double time) {
    TruthFrame frame;
    frame.time = time;
    return frame;
}

TEST(ExcerptFilter, CountsFromTheArrivalOfTheFirstSensorFrame) {
    ExcerptFilter filter({1.0, 2.0}, true);
    EXPECT_FALSE(filter.takes(truth(99.9)));
    EXPECT_FALSE(filter.takes(sensor(100.0)));
    EXPECT_FALSE(filter.takes(sensor(100.99)));
    EXPECT_FALSE(filter.takes(truth(100.99)));
    EXPECT_FALSE(filter.hasFrame());
    EXPECT_TRUE(filter.takes(truth(101.0)));
    EXPECT_FALSE(filter.hasFrame());
    EXPECT_TRUE(filter.takes(sensor(101.0)));
    EXPECT_TRUE(filter.hasFrame());
    EXPECT_TRUE(filter.takes(truth(101.99)));
    EXPECT_FALSE(filter.takes(sensor(102.0)));
    EXPECT_FALSE(filter.isOver());  // truth may still come
    EXPECT_FALSE(filter.takes(truth(102.0)));
    EXPECT_TRUE(filter.isOver());
}

TEST(ExcerptFilter, TruthBeforeTheFirstFrameIsAtTheStart) {
    ExcerptFilter filter({0.0, 1.0}, true);
    EXPECT_TRUE(filter.takes(truth(7.0)));
    EXPECT_TRUE(filter.takes(sensor(10.0)));
    EXPECT_TRUE(filter.takes(truth(9.6)));
}

TEST(ExcerptFilter, WithoutTruthTheFirstFrameBehindItIsTheEnd) {
    ExcerptFilter filter({0.0, 1.0}, false);
    EXPECT_TRUE(filter.takes(sensor(5.0)));
    EXPECT_FALSE(filter.isOver());
    EXPECT_FALSE(filter.takes(sensor(6.0)));
    EXPECT_TRUE(filter.isOver());
}

TEST(ExcerptFilter, EndsWhenTheRecordingDoesOrBefore) {
    ExcerptFilter filter({0.0, 2.0}, false);
    filter.takes(sensor(5.0));
    EXPECT_EQ(filter.endOf(std::nullopt), std::nullopt);  // the recording may be longer or not
    EXPECT_EQ(filter.endOf(6.0), 6.0);
    EXPECT_EQ(filter.endOf(8.0), 7.0);
    filter.takes(sensor(9.0));
    EXPECT_EQ(filter.endOf(std::nullopt), 7.0);
    ExcerptFilter open({1.0, forever}, false);
    open.takes(sensor(5.0));
    EXPECT_EQ(open.endOf(8.0), 8.0);
    EXPECT_EQ(open.endOf(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace Workbench
