// SPDX-License-Identifier: Apache-2.0
// When a service is called, and with which time limit, with calls simulated by the test.
#include "dbus/SdBus.h"
#include "dbus/ServiceCaller.h"
#include "net/WaitBudget.h"
#include "support/PrivateBus.h"

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

using namespace VeskarTest;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using Veskar::WaitBudget;
using Veskar::SdBus::callTimeout;
using Veskar::SdBus::ServiceCaller;

namespace {

class Caller : public testing::Test {
protected:
    Caller() {
        EXPECT_GE(Veskar::SdBus::openSystem(bus), 0);
        WaitBudget::ofThisThread() = {};  // the bus may have been slow
    }

    /// A call that takes a while.
    std::optional<int> ask(int code, milliseconds duration = milliseconds(0)) {
        return caller.ask(bus.get(), call(code, duration));
    }
    ServiceCaller::Call call(int code, milliseconds duration) {
        return [this, code, duration] {
            ++calls;
            EXPECT_GE(sd_bus_get_method_call_timeout(bus.get(), &limit), 0);
            std::this_thread::sleep_for(duration);
            return code;
        };
    }
    /// The thread waits for something else.
    static void wait(milliseconds duration) {
        const auto now = WaitBudget::Clock::now();
        WaitBudget::ofThisThread().spend(now - duration, now);
    }

    PrivateBus daemon;
    Veskar::SdBus::Bus bus;
    std::chrono::steady_clock::time_point now{std::chrono::hours(5)};
    ServiceCaller caller{[this] { return now; }};
    int calls = 0;
    std::uint64_t limit = 0;  // of the last call, us
};

}  // namespace

TEST_F(Caller, HandsThroughWhatTheCallReturns) {
    EXPECT_EQ(ask(7), 7);
    EXPECT_EQ(ask(-EIO), -EIO);
    EXPECT_EQ(limit, 250000U);
    EXPECT_EQ(calls, 2);
}

TEST_F(Caller, LeavesAServiceAloneForTenSecondsThatRanIntoTheLimit) {
    EXPECT_EQ(ask(-ETIMEDOUT, callTimeout), -ETIMEDOUT);
    WaitBudget::ofThisThread() = {};
    EXPECT_EQ(ask(1), std::nullopt);
    now += seconds(10) - nanoseconds(1);
    EXPECT_EQ(ask(1), std::nullopt);
    EXPECT_EQ(caller.askPatiently(bus.get(), call(1, milliseconds(0))), std::nullopt);
    EXPECT_EQ(calls, 1);
    now += nanoseconds(1);
    EXPECT_EQ(ask(1), 1);
    EXPECT_EQ(ask(1), 1) << "it has answered";
}

TEST_F(Caller, AsksAgainAfterErrorsThatComeAtOnce) {
    for (const int code : {-ETIMEDOUT, -EIO, -EHOSTUNREACH, -ECONNRESET}) {
        EXPECT_EQ(ask(code), code);
        EXPECT_EQ(ask(code), code);
    }
    EXPECT_EQ(calls, 8);
}

TEST_F(Caller, AsksAgainAfterAnErrorThatComesLate) {
    EXPECT_EQ(ask(-EIO, callTimeout), -EIO);
    WaitBudget::ofThisThread() = {};
    EXPECT_EQ(ask(1), 1);
}

TEST_F(Caller, WaitsOnlyForWhatIsLeftOfTheBudget) {
    wait(milliseconds(250));
    EXPECT_EQ(ask(1), 1);
    EXPECT_LE(limit, 50000U);
    EXPECT_GE(limit, 10000U);
    wait(milliseconds(45));
    EXPECT_EQ(ask(1), std::nullopt) << "in 5 ms no answer can be expected";
    EXPECT_EQ(calls, 1);
    WaitBudget::ofThisThread() = {};
    EXPECT_EQ(ask(1), 1);
    EXPECT_EQ(limit, 250000U);
}

TEST_F(Caller, BlamesNoServiceThatHadLittleTime) {
    wait(milliseconds(201));
    EXPECT_EQ(ask(-ETIMEDOUT, milliseconds(100)), -ETIMEDOUT);
    EXPECT_LT(limit, 100000U);
    WaitBudget::ofThisThread() = {};
    EXPECT_EQ(ask(1), 1);
}

TEST_F(Caller, BlamesAServiceThatHadMostOfItsTime) {
    wait(milliseconds(100));
    EXPECT_EQ(ask(-ETIMEDOUT, milliseconds(200)), -ETIMEDOUT);
    EXPECT_LT(limit, 250000U);
    WaitBudget::ofThisThread() = {};
    EXPECT_EQ(ask(1), std::nullopt);
}

TEST_F(Caller, PutsItsWaitsOnTheBudget) {
    ask(1, milliseconds(100));
    EXPECT_LE(WaitBudget::ofThisThread().left(WaitBudget::Clock::now()), milliseconds(200));
}

TEST_F(Caller, HasTheWholeLimitForASetUp) {
    wait(milliseconds(1000));
    EXPECT_EQ(caller.askPatiently(bus.get(), call(1, milliseconds(0))), 1);
    EXPECT_EQ(limit, 250000U);
}
