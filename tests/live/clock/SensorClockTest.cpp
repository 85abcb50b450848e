// SPDX-License-Identifier: Apache-2.0
#include "live/clock/SensorClock.h"
#include "live/support/Received.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using namespace Veskar::Live;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using VeskarTest::ToldFaults;
using Steady = SensorClock::Steady;
using Utc = SensorClock::Utc;

namespace {

std::chrono::nanoseconds seconds(double value) {
    return std::chrono::round<std::chrono::nanoseconds>(std::chrono::duration<double>(value));
}

/// A sensor and the host, whose clocks begin at different times.
class SensorClockTest : public testing::Test {
protected:
    /// @param measured time of the measurement, s since the begin
    /// @param delay until its arrival, s
    /// @return the time that it gets, s since the begin
    std::optional<double> place(double measured, double delay) {
        return placeStamp(utcBegin + seconds(measured + ahead), measured + delay);
    }
    std::optional<double> placeStamp(Utc stamp, double arrived) {
        const ArrivalTime arrival{steadyBegin + seconds(arrived),
                                  utcBegin + seconds(arrived + hostAhead)};
        const std::optional<Steady> time = clock().place(stamp, arrival);
        if (!time) {
            return std::nullopt;
        }
        EXPECT_LE(*time, arrival.steady);
        EXPECT_EQ(time->time_since_epoch() % 1us, 0ns);
        if (last) {
            EXPECT_GE(*time - *last, 1us);
        }
        last = time;
        return std::chrono::duration<double>(*time - steadyBegin).count();
    }
    /// Frames at 20 Hz with little delay.
    void run(double begin, double end, double delay = 0.03) {
        for (double time = begin; time < end - 0.01; time += 0.05) {
            place(time, delay + jitter(random));
        }
    }
    SensorClock& clock() {
        if (!made) {
            options.sensor = "radar";
            made.emplace(options, log.faults);
        }
        return *made;
    }

    static constexpr Utc utcBegin{1700000000s};
    static constexpr Steady steadyBegin{5000s};
    double ahead = 0.0;      ///< the sensor's clock, s
    double hostAhead = 0.0;  ///< the host's system clock after it was set, s
    std::mt19937 random{1};
    std::uniform_real_distribution<double> jitter{0.0, 0.01};
    SensorClock::Options options;
    ToldFaults log;
    std::optional<SensorClock> made;
    std::optional<Steady> last;
};

}  // namespace

TEST_F(SensorClockTest, GivesFramesTheTimesOfTheirMeasurement) {
    ahead = -1234.5;
    std::exponential_distribution<double> delay(1.0 / 0.02);
    double arrived = 0.0;
    for (int i = 0; i < 600; ++i) {
        const double measured = 0.05 * i;
        arrived = std::max(arrived, measured + 0.03 + delay(random));  // none overtakes another
        const std::optional<double> time = place(measured, arrived - measured);
        if (i > 100) {
            ASSERT_TRUE(time) << i;
            EXPECT_NEAR(*time, measured + 0.03, 0.005) << "but for the least delay";
        }
    }
    const SensorClock::Status& status = clock().status();
    EXPECT_NEAR(status.offset, -1234.5 - 0.03, 0.005);
    EXPECT_NEAR(status.jitter, 0.059, 0.01);
    EXPECT_EQ(status.taken + status.unplaced, 600U);
    EXPECT_LE(status.unplaced, 3U) << "those that arrive at once with the first";
}

TEST_F(SensorClockTest, TakesALatencyThatIsKnownIntoAccount) {
    options.latency = 0.15;
    for (int i = 0; i < 200; ++i) {
        const std::optional<double> time = place(0.05 * i, 0.15);
        ASSERT_TRUE(time);
        EXPECT_NEAR(*time, 0.05 * i, 1e-5);
    }
    EXPECT_NEAR(clock().status().offset, 0.0, 1e-5);
}

TEST_F(SensorClockTest, WarnsOnceOfAClockThatIsOff) {
    ahead = 3.0;
    run(0.0, 120.0, 0.0);
    EXPECT_THAT(log.told(), ElementsAre(HasSubstr("radar: its clock is off: 2.99")));
    EXPECT_THAT(log.told()[0], HasSubstr(" s ahead of this host's, jitter 0.0"));
    EXPECT_EQ(log.faults.counts().at("radar: its clock is off"), 1U);
}

TEST_F(SensorClockTest, WarnsAgainWhenAClockHasBeenRightBetween) {
    ahead = -3.0;
    run(0.0, 10.0);
    ahead = 0.0;
    run(10.0, 50.0);
    ahead = -3.0;
    run(50.0, 60.0);
    EXPECT_EQ(log.faults.counts().at("radar: its clock is off"), 2U);
    EXPECT_EQ(clock().status().steps, 2U);
}

TEST_F(SensorClockTest, DoesNotWarnOfASmallDifference) {
    ahead = 0.9;
    run(0.0, 60.0);
    EXPECT_THAT(log.told(), IsEmpty());
}

TEST_F(SensorClockTest, TakesAClockThatJumpsByAnHourForANewBase) {
    for (const double jump : {3600.0, -3600.0}) {
        made.reset();
        last.reset();
        ahead = 0.0;
        run(0.0, 20.0);
        ahead = jump;
        int missing = 0;
        for (int i = 0; i < 100; ++i) {
            const double measured = 20.0 + 0.05 * i;
            const std::optional<double> time = place(measured, 0.03);
            missing += time ? 0 : 1;
            if (time) {
                EXPECT_NEAR(*time, measured + 0.03, 0.011);
            }
        }
        EXPECT_EQ(missing, 8) << "within 0.4 s";
        EXPECT_EQ(clock().status().stray, 8U);
        EXPECT_EQ(clock().status().steps, 1U);
        EXPECT_NEAR(clock().status().offset, jump - 0.03, 0.001);
    }
    EXPECT_THAT(log.told(), testing::Contains(HasSubstr("radar: its clock has been set: 3600.0")));
}

TEST_F(SensorClockTest, RefusesAFrameThatIsAstray) {
    run(0.0, 20.0);
    const double offset = clock().status().offset;
    double measured = 20.0;
    for (const double wrong : {3600.0, -3600.0, 1.0}) {
        ahead = wrong;
        EXPECT_FALSE(place(measured += 0.05, 0.03)) << wrong;
        ahead = 0.0;
        EXPECT_TRUE(place(measured += 0.05, 0.03));
    }
    EXPECT_EQ(clock().status().stray, 3U);
    EXPECT_EQ(clock().status().steps, 0U);
    EXPECT_NEAR(clock().status().offset, offset, 0.001);
    EXPECT_EQ(log.told().size(), 1U) << "once a minute";
}

TEST_F(SensorClockTest, KnowsFramesThatWaitedFromAClockThatWasSet) {
    options.policy.takesLate = true;
    run(0.0, 20.0);
    // The network was away for three seconds: all arrive at once.
    for (int i = 0; i < 60; ++i) {
        const double measured = 20.0 + 0.05 * i;
        const std::optional<double> time = place(measured, 23.0 - measured + 0.001 * i);
        ASSERT_TRUE(time) << i;
        EXPECT_NEAR(*time, measured + 0.03, 0.002);
    }
    run(23.1, 30.0);
    EXPECT_EQ(clock().status().steps, 0U);
    EXPECT_EQ(clock().status().stray, 0U);
    EXPECT_EQ(clock().status().irregular.late, 41U)
        << "those that took a second longer than others";
}

TEST_F(SensorClockTest, SlowsDownInsteadOfGoingBackWhenTheEstimateFalls) {
    std::vector<double> times;
    for (int i = 0; i < 40; ++i) {
        const std::optional<double> time = place(0.05 * i, i == 0 ? 0.4 : 0.4 - 0.01 * i);
        ASSERT_TRUE(time) << i;
        times.push_back(*time);
    }
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], 0.0249) << i;
    }
    EXPECT_NEAR(times.back(), 0.05 * 39 + 0.01, 0.02);
}

TEST_F(SensorClockTest, LeavesIrregularFramesOutAndCountsThem) {
    run(0.0, 10.0);
    ASSERT_TRUE(place(10.0, 0.03));
    EXPECT_FALSE(place(10.0, 0.04)) << "repeated";
    EXPECT_FALSE(place(9.97, 0.08)) << "reordered";
    EXPECT_FALSE(place(10.05, 1.2)) << "late";
    EXPECT_TRUE(place(11.25, 0.03));
    EXPECT_EQ(clock().status().irregular.repeated, 1U);
    EXPECT_EQ(clock().status().irregular.reordered, 1U);
    EXPECT_EQ(clock().status().irregular.late, 1U);
}

TEST_F(SensorClockTest, TakesIrregularFramesWhereThatIsAskedFor) {
    options.policy = {1.0, true, true, true};
    run(0.0, 10.0);
    const std::optional<double> newest = place(10.0, 0.04);
    ASSERT_TRUE(newest);
    const std::optional<double> repeated = place(10.0, 0.06);
    const std::optional<double> reordered = place(9.97, 0.1);
    ASSERT_TRUE(repeated && reordered);
    EXPECT_NEAR(*repeated, *newest + 1e-6, 1e-9) << "right behind the newest";
    EXPECT_NEAR(*reordered, *newest + 2e-6, 1e-9);
    const std::optional<double> late = place(10.05, 1.2);
    ASSERT_TRUE(late);
    EXPECT_NEAR(*late, 10.08, 0.01) << "when it was measured";
    EXPECT_EQ(clock().status().irregular.late, 1U);
}

TEST_F(SensorClockTest, BelievesAClockThatIsSynchronised) {
    options.isSynchronised = true;
    options.latency = 0.15;
    ahead = 0.01;
    for (int i = 0; i < 200; ++i) {
        const std::optional<double> time = place(0.05 * i, 0.15 + jitter(random));
        ASSERT_TRUE(time);
        EXPECT_NEAR(*time, 0.05 * i + 0.01, 1e-5) << "with its delay, and with its error";
    }
    EXPECT_TRUE(clock().status().isByHostClock);
}

TEST_F(SensorClockTest, BelievesASynchronisedClockNoLongerWhenItIsOff) {
    options.isSynchronised = true;
    options.latency = 0.03;
    run(0.0, 10.0);
    EXPECT_TRUE(clock().status().isByHostClock);
    ahead = -3600.0;
    run(10.0, 11.0);
    EXPECT_FALSE(clock().status().isByHostClock);
    const std::optional<double> time = place(11.0, 0.03);
    ASSERT_TRUE(time);
    EXPECT_NEAR(*time, 11.0, 0.01);
    run(11.05, 15.0);
    EXPECT_THAT(log.told(), testing::Contains(HasSubstr("radar: its clock is off: 3600.0")));
}

TEST_F(SensorClockTest, DoesNotMindThatTheHostsClockIsSet) {
    run(0.0, 10.0);
    hostAhead = 1e8;
    for (int i = 0; i < 100; ++i) {
        const double measured = 10.0 + 0.05 * i;
        const std::optional<double> time = place(measured, 0.03);
        ASSERT_TRUE(time);
        EXPECT_NEAR(*time, measured + 0.03, 0.011);
    }
    EXPECT_EQ(clock().status().steps, 0U);
    EXPECT_NEAR(clock().status().offset, -1e8 - 0.03, 0.001);
}

TEST_F(SensorClockTest, RefusesTimesThatAreNone) {
    run(0.0, 1.0);
    EXPECT_FALSE(placeStamp(Utc::min(), 1.0));
    EXPECT_FALSE(placeStamp(Utc::max(), 1.0));
    EXPECT_FALSE(placeStamp(Utc(), 1.0)) << "1970";
    EXPECT_TRUE(place(1.05, 0.03));
    EXPECT_EQ(clock().status().stray, 3U);
}

// The fixture holds each time against the arrival and the time before.
TEST_F(SensorClockTest, KeepsItsPromisesWhateverItIsGiven) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        made.reset();
        last.reset();
        options.policy = {1.0, seed % 2 == 0, seed % 3 == 0, seed % 5 == 0};
        options.isSynchronised = seed % 7 == 0;
        random.seed(seed);
        std::normal_distribution<double> noise(0.0, 1.0);
        double arrived = 0.0;
        std::uint64_t frames = 0;
        for (int i = 0; i < 5000; ++i) {
            arrived += std::max(0.0, 0.03 + 0.03 * noise(random));
            double error = 0.1 * noise(random);
            if (random() % 50 == 0) {
                error *= 10000.0;
            }
            if (random() % 500 == 0) {
                ahead = 100.0 * noise(random);
            }
            placeStamp(utcBegin + seconds(arrived + ahead + error), arrived);
            ++frames;
        }
        const SensorClock::Status& status = clock().status();
        EXPECT_GT(status.taken, 500U) << seed;
        EXPECT_LE(status.taken + status.stray + status.unplaced, frames) << seed;
    }
}
