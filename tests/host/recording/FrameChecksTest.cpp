// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/InputError.h>

#include "host/recording/FrameChecks.h"

#include <cmath>
#include <limits>
#include <string>

#include <gtest/gtest.h>

using Veskar::Host::InputError;
using Veskar::Host::SensorFrame;
using Veskar::Host::Internal::FrameOrder;
using Veskar::Host::Internal::refuseBoxesUpsideDown;

namespace {

SensorFrame frame(Veskar::Source source, double time, double received) {
    return {source, time, received, {}};
}

FrameOrder behind(const SensorFrame& last) {
    FrameOrder order;
    order.take(last);
    return order;
}

std::string faultOf(const FrameOrder& order, const SensorFrame& next) {
    try {
        order.check(next);
    } catch (const InputError& error) {
        return error.what();
    }
    return "";
}

}  // namespace

TEST(FrameOrder, ASensorsTimesAscendStrictly) {
    const FrameOrder order = behind(frame(Veskar::Radar, 2.0, 2.5));
    EXPECT_EQ(faultOf(order, frame(Veskar::Radar, 2.0, 2.6)),
              "time: 2 is not later than 2, the time of the radar frame before");
    EXPECT_EQ(faultOf(order, frame(Veskar::Radar, std::nextafter(2.0, 3.0), 2.6)), "");
    EXPECT_EQ(faultOf(order, frame(Veskar::VideoObject, 2.0, 2.6)), "") << "another sensor";
}

TEST(FrameOrder, ArrivalsOfAllSensorsMayCoincide) {
    const FrameOrder order = behind(frame(Veskar::Radar, 2.0, 2.5));
    EXPECT_EQ(faultOf(order, frame(Veskar::VideoObject, 1.9, 2.5)), "");
    EXPECT_EQ(faultOf(order, frame(Veskar::VideoObject, 1.9, 2.4)),
              "received: 2.4 is before 2.5, when the frame before was received; frames stand in "
              "the order of their arrival");
}

TEST(FrameOrder, AFrameMayArriveAtOnce) {
    EXPECT_EQ(faultOf({}, frame(Veskar::Radar, 2.0, 2.0)), "");
    EXPECT_EQ(faultOf({}, frame(Veskar::Radar, 2.0, 1.5)),
              "received: 1.5 is before the time of the frame, 2");
}

TEST(FrameOrder, IsFarMoreThanAnHourAheadOrASecondBehind) {
    const FrameOrder order = behind(frame(Veskar::Radar, 5000.0, 6000.0));
    const auto isFarAt = [&](double time) {
        return order.isFar(frame(Veskar::Radar, time, 6000.0));
    };
    EXPECT_FALSE(isFarAt(8600.0));
    EXPECT_TRUE(isFarAt(std::nextafter(8600.0, 9000.0)));
    EXPECT_FALSE(isFarAt(4999.0));
    EXPECT_TRUE(isFarAt(std::nextafter(4999.0, 0.0)));
    // The arrival counts for all sensors.
    EXPECT_FALSE(order.isFar(frame(Veskar::VideoObject, 1.0, 9600.0)));
    EXPECT_TRUE(order.isFar(frame(Veskar::VideoObject, 1.0, std::nextafter(9600.0, 1e4))));
    EXPECT_FALSE(FrameOrder().isFar(frame(Veskar::Radar, 1e9, 1e9))) << "the first frame";
}

TEST(FrameOrder, MayEndWithTheLastArrival) {
    const FrameOrder order = behind(frame(Veskar::Radar, 2.0, 2.5));
    EXPECT_TRUE(order.mayEnd(2.5));
    EXPECT_FALSE(order.mayEnd(2.4));
    EXPECT_FALSE(order.mayEnd(std::numeric_limits<double>::infinity()));
    EXPECT_TRUE(FrameOrder().mayEnd(0.0));
}

TEST(FrameChecks, ABoxMayBeFlatButNotUpsideDown) {
    SensorFrame seen = frame(Veskar::VideoObject, 2.0, 2.5);
    Veskar::Host::VideoReport report;
    report.box = {-0.1, 0.2, 0.1, 0.2};
    seen.tracks = {report, report};
    EXPECT_NO_THROW(refuseBoxesUpsideDown(seen));
    report.box.top = 0.1;
    seen.tracks[1] = report;
    try {
        refuseBoxesUpsideDown(seen);
        FAIL() << "the top is below the bottom";
    } catch (const InputError& error) {
        EXPECT_STREQ(error.what(), "tracks[1].box.top: is below bottom");
    }
}
