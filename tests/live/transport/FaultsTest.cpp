// SPDX-License-Identifier: Apache-2.0
#include "live/support/Received.h"
#include "live/transport/Faults.h"

#include <chrono>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;
using Veskar::Live::Faults;
using VeskarTest::ToldFaults;

TEST(Faults, TellsACauseOnceAMinuteAndCountsAll) {
    ToldFaults log;
    const Faults::Clock::time_point begin{};
    log.faults.report("radar", "first", begin);
    log.faults.report("radar", "second", begin + 1s);
    log.faults.report("radar", "third", begin + 59s);
    EXPECT_THAT(log.told(), ElementsAre("radar: first"));
    log.faults.report("radar", "fourth", begin + 60s);
    log.faults.report("radar", "fifth", begin + 61s);
    log.faults.report("radar", "sixth", begin + 130s);
    log.faults.report("radar", "seventh", begin + 190s);
    EXPECT_THAT(log.told(),
                ElementsAre("radar: first", "radar: fourth (2 more since it was last told)",
                            "radar: sixth (1 more since it was last told)", "radar: seventh"));
    EXPECT_THAT(log.faults.counts(), ElementsAre(Pair("radar", 7)));
}

TEST(Faults, KeepsCausesApart) {
    ToldFaults log;
    const Faults::Clock::time_point begin{};
    log.faults.report("radar", "no", begin);
    log.faults.report("camera", "no", begin);
    log.faults.report("camera", "no", begin);
    EXPECT_THAT(log.told(), ElementsAre("radar: no", "camera: no"));
    EXPECT_THAT(log.faults.counts(), ElementsAre(Pair("camera", 2), Pair("radar", 1)));
}

TEST(Faults, CountsCausesBeyondTheLimitTogether) {
    ToldFaults log;
    const Faults::Clock::time_point begin{};
    for (std::size_t i = 0; i < Faults::mostCauses + 5; ++i) {
        log.faults.report("peer " + std::to_string(i), "no", begin);
    }
    log.faults.report("peer 1", "no", begin);
    EXPECT_EQ(log.told().size(), Faults::mostCauses + 1);
    EXPECT_EQ(log.faults.counts().size(), Faults::mostCauses + 1);
    EXPECT_EQ(log.faults.counts().at(Faults::otherCauses), 5U);
    EXPECT_EQ(log.faults.counts().at("peer 1"), 2U);
}
