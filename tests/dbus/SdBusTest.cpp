// SPDX-License-Identifier: Apache-2.0
#include "dbus/FreshBudget.h"
#include "dbus/SdBus.h"
#include "support/FakeService.h"
#include "support/PrivateBus.h"

#include <cerrno>
#include <cstdint>

#include <gtest/gtest.h>

using namespace VeskarTest;
namespace SdBus = Veskar::SdBus;

namespace {

const FakeService::Member ask{"/test", "test.Test", "Ask"};

class SystemBus : public testing::Test {
protected:
    SystemBus() : service("test.Service") { EXPECT_GE(SdBus::openSystem(bus), 0); }

    int call(SdBus::Message& reply) const {
        SdBus::Error error;
        sd_bus_message* received = nullptr;
        const int r =
            sd_bus_call_method(bus.get(), "test.Service", ask.path.c_str(), ask.interface.c_str(),
                               ask.name.c_str(), error.out(), &received, "");
        reply.reset(received);
        return r;
    }

    std::uint64_t unread() const {
        std::uint64_t count = 0;
        EXPECT_GE(sd_bus_get_n_queued_read(bus.get(), &count), 0);
        return count;
    }

    FreshBudget budget;
    PrivateBus daemon;
    FakeService service;
    SdBus::Bus bus;
};

}  // namespace

TEST(SdBusError, HasNoMessageWithoutAnError) {
    const SdBus::Error error;
    EXPECT_STREQ(error.message(), "");
}

TEST_F(SystemBus, WaitsAQuarterOfASecondForAnAnswer) {
    std::uint64_t microseconds = 0;
    ASSERT_GE(sd_bus_get_method_call_timeout(bus.get(), &microseconds), 0);
    EXPECT_EQ(microseconds, 250000U);
}

TEST_F(SystemBus, DropsAnswersThatComeTooLate) {
    service.hold(ask);
    SdBus::Message reply;
    EXPECT_EQ(call(reply), -ETIMEDOUT);
    service.release(nothing());
    service.answer(ask, string("in time"));
    ASSERT_GE(call(reply), 0);
    EXPECT_GE(unread(), 1U) << "the late answer and what the bus itself has said";
    SdBus::discardPending(bus.get());
    EXPECT_EQ(unread(), 0U);
    ASSERT_GE(call(reply), 0);
}
