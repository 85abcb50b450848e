// SPDX-License-Identifier: Apache-2.0
// From connections of publishers to the frames of a sensor.
#include "host/TestInstallation.h"
#include "live/onvif/UtcTime.h"
#include "live/service/Places.h"
#include "live/service/SensorFeed.h"
#include "live/support/Client.h"
#include "live/support/LoopUntil.h"
#include "live/support/Received.h"
#include "support/Pipe.h"
#include "support/TemporaryDirectory.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Veskar::Live {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class SensorFeedTest : public testing::Test {
protected:
    SensorFeedTest() {
        settings_.name = "camera";
        settings_.input = UnixPlace{directory_.file("socket")};
        settings_.clock.isSynchronised = true;
    }
    /// Lets a publisher report its object 1 now.
    /// @return the ids of the frame that this gives
    std::set<std::int32_t> report(const FileDescriptor& publisher) {
        const std::size_t before = frames_.size();
        stamp_ += std::chrono::milliseconds(10);
        VeskarTest::writeAll(
            publisher.get(),
            R"({"Frame":[{"@UtcTime":")" + utcText(stamp_) +
                R"(","Object":[{"@ObjectId":1,"Appearance":{"Shape":{"BoundingBox":)"
                R"({"@left":-0.1,"@top":0.2,"@right":0.1,"@bottom":-0.2}}}}]}]})"
                "\n");
        EXPECT_TRUE(until([&] { return frames_.size() > before; }));
        std::set<std::int32_t> ids;
        for (const Host::Report& one : frames_.back().tracks) {
            EXPECT_TRUE(ids.insert(Host::baseOf(one).id).second);
        }
        return ids;
    }
    bool until(const std::function<bool()>& condition) {
        return VeskarTest::loopUntil(loop_, condition);
    }

    const VeskarTest::TemporaryDirectory directory_;
    SensorSettings settings_;
    UtcTime stamp_ =
        std::chrono::system_clock::now().time_since_epoch() - std::chrono::milliseconds(100);
    EventLoop loop_;
    VeskarTest::ToldFaults told_;
    std::vector<Host::SensorFrame> frames_;
};

TEST_F(SensorFeedTest, KeepsTheConnectionsOfASocketApart) {
    SensorFeed feed(settings_, VeskarTest::testInstallation(), told_.faults,
                    [this](Host::SensorFrame frame) { frames_.push_back(std::move(frame)); });
    const auto input = makeInput(
        settings_, loop_, {}, told_.faults,
        [&](const Message& message) { feed.receive(message, std::chrono::system_clock::now()); },
        [&](const std::string& channel) { feed.forget(channel); }, {});
    FileDescriptor first = VeskarTest::connectTo(directory_.file("socket"));
    const std::set<std::int32_t> one = report(first);
    ASSERT_THAT(one, SizeIs(1));
    const FileDescriptor second = VeskarTest::connectTo(directory_.file("socket"));
    const std::set<std::int32_t> both = report(second);
    EXPECT_THAT(both, SizeIs(2)) << "object 1 of two publishers is one";
    EXPECT_EQ(both.count(*one.begin()), 1U);
    first.reset();
    EXPECT_TRUE(until([&] { return input->counters().publishers == 1; }));
    const std::set<std::int32_t> rest = report(second);
    EXPECT_THAT(rest, SizeIs(1)) << "what a closed connection reported is carried on";
    EXPECT_EQ(rest.count(*one.begin()), 0U);
    EXPECT_THAT(told_.told(), IsEmpty());
}

}  // namespace
}  // namespace Veskar::Live
