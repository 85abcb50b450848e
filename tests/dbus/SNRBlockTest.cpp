// SPDX-License-Identifier: Apache-2.0
#include <veskar/SNRBlock.h>

#include "dbus/FreshBudget.h"
#include "dbus/RawBus.h"
#include "dbus/SceneServices.h"
#include "dbus/SdBus.h"
#include "support/FakeService.h"
#include "support/PrivateBus.h"
#include "support/SyslogCapture.h"
#include "support/TrackFactory.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <systemd/sd-bus.h>

using namespace VeskarTest;
using testing::ElementsAre;
using testing::IsEmpty;
using Veskar::Camera;
using Veskar::Dbus::SNRBlock;

namespace {

std::shared_ptr<Camera> cameraOf(int width, int height) {
    return std::make_shared<Camera>(Eigen::Vector2i(width, height), Eigen::Vector2d::Zero(),
                                    Eigen::Vector4d::Zero(), Eigen::Vector4d::Zero(),
                                    Eigen::Vector2d(0.5, 0.5), true);
}

/// A box from its upper left to its lower right corner, in whole pixels.
Eigen::Vector4d pixels(int left, int top, int right, int bottom) {
    return {static_cast<double>(left), static_cast<double>(right - left),
            static_cast<double>(bottom), static_cast<double>(top - bottom)};
}

class SNRBlockService : public testing::Test {
protected:
    SNRBlockService() : service("com.nolt.Lumd.ch0") {
        EXPECT_GE(Veskar::SdBus::openSystem(bus), 0);
        blocks = SNRBlock(bus.get(), [this] { return now; });
    }

    void read(const std::vector<double>& values) {
        service.answer(getProperty, doubles(values));
        blocks.updateSNRBlock();
    }

    FreshBudget budget;
    SyslogCapture log;
    PrivateBus daemon;
    FakeService service;
    Veskar::SdBus::Bus bus;
    std::chrono::steady_clock::time_point now{std::chrono::hours(5)};
    SNRBlock blocks;
};

}  // namespace

TEST_F(SNRBlockService, ReadsOneValuePerBlockRowByRow) {
    blocks.setupCamera(cameraOf(480, 320));  // 3 x 2
    read({1.0, 2.0, 3.0, 4.0, 5.0, 6.0});
    double expected = 1.0;
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < 3; ++column) {
            const Eigen::Vector4d box =
                pixels(160 * column, 160 * row, 160 * (column + 1), 160 * (row + 1));
            EXPECT_EQ(blocks.computeBboxSNR(box), expected) << row << " " << column;
            expected += 1.0;
        }
    }
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(SNRBlockService, AsksForTheProperty) {
    std::string asked;
    service.answer(getProperty, doubles({}));
    service.inspect(getProperty, [&](sd_bus_message* call) {
        const char* interface = nullptr;
        const char* property = nullptr;
        must(sd_bus_message_read(call, "ss", &interface, &property), "read");
        asked = std::string(interface) + " " + property;
    });
    blocks.updateSNRBlock();
    EXPECT_EQ(asked, "com.nolt.Lumd.SNRBlock SNRBlock");
}

TEST_F(SNRBlockService, CoversTheEdgesWithBlocksThatReachPastThem) {
    blocks.setupCamera(cameraOf(161, 160));  // 2 x 1
    read({1.0, 9.0});
    EXPECT_EQ(blocks.computeBboxSNR(pixels(160, 0, 161, 1)), 9.0);
    EXPECT_EQ(blocks.computeBboxSNR(pixels(300, 0, 330, 1)), 9.0);
    EXPECT_EQ(blocks.computeBboxSNR(pixels(320, 0, 330, 1)), 100.0);
}

TEST_F(SNRBlockService, WeighsTheBlocksByTheirShareOfTheBox) {
    blocks.setupCamera(cameraOf(320, 320));  // 2 x 2
    read({10.0, 20.0, 30.0, 40.0});
    // 40 px left and 60 px right of the block border, 10 px above and 30 px below it.
    EXPECT_DOUBLE_EQ(blocks.computeBboxSNR(pixels(120, 150, 220, 190)),
                     (10.0 * 400 + 20.0 * 600 + 30.0 * 1200 + 40.0 * 1800) / 4000.0);
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 160, 160)), 10.0) << "blocks end exclusively";
}

TEST_F(SNRBlockService, LeavesBlocksWithoutValueOut) {
    blocks.setupCamera(cameraOf(320, 320));
    read({10.0, 20.0, 30.0});
    EXPECT_EQ(blocks.computeBboxSNR(pixels(200, 100, 220, 300)), 20.0);
    EXPECT_EQ(blocks.computeBboxSNR(pixels(200, 200, 220, 300)), 100.0);
}

TEST_F(SNRBlockService, LeavesBlocksBesideTheBoxOutWhateverTheirValue) {
    blocks.setupCamera(cameraOf(320, 160));
    for (const double odd : {std::numeric_limits<double>::infinity(), std::nan("")}) {
        read({5.0, odd});
        EXPECT_EQ(blocks.computeBboxSNR(pixels(10, 20, 60, 120)), 5.0);
        EXPECT_FALSE(std::isfinite(blocks.computeBboxSNR(pixels(10, 20, 161, 120))));
    }
}

TEST_F(SNRBlockService, LeavesValuesWithoutBlockOut) {
    blocks.setupCamera(cameraOf(160, 160));
    read({10.0, 20.0, 30.0});
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 500, 500)), 10.0);
}

TEST_F(SNRBlockService, IsFullOfSignalWithoutValues) {
    blocks.setupCamera(cameraOf(160, 160));
    read({10.0});
    read({});
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 100, 100)), 100.0);
}

TEST_F(SNRBlockService, StartsAfreshWithAnotherCamera) {
    blocks.setupCamera(cameraOf(320, 160));
    read({10.0, 20.0});
    blocks.setupCamera(cameraOf(160, 320));
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 100, 300)), 100.0);
    read({30.0, 40.0});
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 100, 320)), 35.0);
    EXPECT_EQ(blocks.computeBboxSNR(pixels(160, 0, 320, 100)), 100.0);
}

TEST_F(SNRBlockService, KeepsItsValuesWhenTheServiceRefuses) {
    blocks.setupCamera(cameraOf(160, 160));
    read({10.0});
    service.refuse(getProperty, "com.nolt.Error.Failed", "warming up");
    blocks.updateSNRBlock();
    EXPECT_THAT(log.errors(), ElementsAre("SNRBlock: getSNRBlock error: warming up\n"));
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 10.0);
}

TEST_F(SNRBlockService, KeepsItsValuesWhenTheServiceIsSlow) {
    blocks.setupCamera(cameraOf(160, 160));
    read({10.0});
    service.hold(getProperty);
    const FreshBudget frame;
    blocks.updateSNRBlock();
    EXPECT_THAT(log.errors(), ElementsAre("SNRBlock: getSNRBlock error: Connection timed out\n"));
    service.release(doubles({20.0}));
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 10.0);
    log.clear();
    now += std::chrono::seconds(10) - std::chrono::nanoseconds(1);
    read({30.0});
    EXPECT_EQ(service.calls(getProperty), 2) << "it is left alone for ten seconds";
    EXPECT_THAT(log.errors(), IsEmpty());
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 10.0);
    now += std::chrono::nanoseconds(1);
    read({30.0});
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 30.0);
}

TEST_F(SNRBlockService, SharesItsPatienceWithItsCopies) {
    service.hold(getProperty);
    const FreshBudget frame;
    SNRBlock copy = blocks;
    blocks.updateSNRBlock();
    copy.updateSNRBlock();
    EXPECT_EQ(service.calls(getProperty), 1);
}

TEST_F(SNRBlockService, RunsOnTheSteadyClockByDefault) {
    SNRBlock plain(bus.get());
    service.answer(getProperty, doubles({20.0}));
    plain.setupCamera(cameraOf(160, 160));
    plain.updateSNRBlock();
    EXPECT_EQ(plain.computeBboxSNR(pixels(0, 0, 10, 10)), 20.0);
}

TEST_F(SNRBlockService, KeepsItsValuesWhenThePropertyHasAnotherType) {
    blocks.setupCamera(cameraOf(160, 160));
    read({10.0});
    service.answer(getProperty,
                   [](sd_bus_message* m) { must(sd_bus_message_append(m, "v", "d", 1.0), "a"); });
    blocks.updateSNRBlock();
    ASSERT_EQ(log.errors().size(), 1U);
    EXPECT_THAT(log.errors().front(), testing::StartsWith("SNRBlock: getSNRBlock error: "));
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 10.0);
}

TEST_F(SNRBlockService, KeepsItsValuesWhenTheBusDies) {
    blocks.setupCamera(cameraOf(160, 160));
    read({10.0});
    daemon.kill();
    blocks.updateSNRBlock();
    EXPECT_EQ(log.errors().size(), 1U);
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 10.0);
}

TEST_F(SNRBlockService, JudgesATrackByItsBoxInPixels) {
    auto track = makeSystemTrack(makeTrack());
    // The upper right quarter of the image, given by its lower left corner.
    track->boundingBox = Eigen::Vector4d(0.0, 1.0, 0.0, 1.0);
    const Eigen::Vector4d before = track->boundingBox;
    EXPECT_EQ(blocks.bboxSNR(*track), 100.0) << "without a camera";
    blocks.setupCamera(cameraOf(320, 320));
    read({10.0, 20.0, 30.0, 40.0});
    EXPECT_EQ(blocks.bboxSNR(*track), 20.0);
    EXPECT_EQ(track->boundingBox, before);
}

namespace {

/// The rule by brute force: every pixel of the box contributes its block's value.
double bruteForceSNR(const Eigen::Vector4d& box, int columns, const std::vector<double>& snr) {
    const auto whole = [](double value) { return static_cast<int>(value); };
    const int x0 = whole(box(0));
    const int x1 = x0 + whole(box(1));
    const int y1 = whole(box(2) + box(3));
    const int y0 = y1 + whole(-box(3));
    double sum = 0.0;
    int count = 0;
    for (int x = std::min(x0, x1); x < std::max(x0, x1); ++x) {
        for (int y = std::min(y0, y1); y < std::max(y0, y1); ++y) {
            if (x < 0 || y < 0 || x >= 160 * columns) {
                continue;
            }
            const int block = y / 160 * columns + x / 160;
            if (block < static_cast<int>(snr.size())) {
                sum += snr[static_cast<std::size_t>(block)];
                ++count;
            }
        }
    }
    return count == 0 ? 100.0 : sum / count;
}

}  // namespace

TEST_F(SNRBlockService, AgreesWithCountingPixels) {
    std::mt19937 random(4);
    std::uniform_real_distribution<double> position(-200.0, 700.0);
    std::uniform_real_distribution<double> size(-150.0, 400.0);
    blocks.setupCamera(cameraOf(600, 400));  // 4 x 3
    std::vector<double> snr(12);
    std::iota(snr.begin(), snr.end(), 1.0);
    read(snr);
    for (int i = 0; i < 300; ++i) {
        const Eigen::Vector4d box(position(random), size(random), position(random), -size(random));
        EXPECT_NEAR(blocks.computeBboxSNR(box), bruteForceSNR(box, 4, snr), 1e-9)
            << box.transpose();
    }
}

TEST_F(SNRBlockService, CutsFractionsOfPixelsTowardsZero) {
    blocks.setupCamera(cameraOf(320, 160));
    read({10.0, 20.0});
    // From 159.9 -> 159, 2.9 wide -> 2: one pixel on either side of the border.
    EXPECT_EQ(blocks.computeBboxSNR({159.9, 2.9, 20.7, -10.2}), 15.0);
    EXPECT_EQ(blocks.computeBboxSNR({10.0, 0.9, 20.0, -10.0}), 100.0) << "no whole pixel";
    EXPECT_EQ(blocks.computeBboxSNR({-0.9, 1.0, 20.0, -10.0}), 10.0) << "-0.9 becomes 0";
}

TEST_F(SNRBlockService, TakesBoxesBeyondAllBoundsForWhatTheyCover) {
    blocks.setupCamera(cameraOf(320, 160));
    read({10.0, 20.0});
    const double huge = 1e300;
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(blocks.computeBboxSNR({0.0, huge, 160.0, -160.0}), 15.0);
    EXPECT_EQ(blocks.computeBboxSNR({-huge, 10.0, 160.0, -160.0}), 100.0);
    EXPECT_EQ(blocks.computeBboxSNR({nan, nan, nan, nan}), 100.0);
}

TEST(SNRBlockWithoutBus, KeepsItsValuesSilently) {
    const SyslogCapture log;
    SNRBlock blocks;
    blocks.updateSNRBlock();
    blocks.setupCamera(cameraOf(160, 160));
    blocks.updateSNRBlock();
    EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 100.0);
    EXPECT_THAT(log.errors(), IsEmpty());
}

// Data that a message bus would reject must be handled, too.
class SNRBlockOnABrokenBus : public testing::Test {
protected:
    void read(const std::string& body) {
        const RawBus raw({{"v", Bytes().signature("ad").align(4).word(8).align(8).real(7.0).get()},
                          {"v", body}});
        Veskar::SdBus::Bus bus;
        ASSERT_GE(Veskar::SdBus::openSystem(bus), 0);
        SNRBlock blocks(bus.get());
        blocks.setupCamera(cameraOf(160, 160));
        blocks.updateSNRBlock();
        EXPECT_THAT(log.errors(), IsEmpty());
        blocks.updateSNRBlock();
        EXPECT_EQ(blocks.computeBboxSNR(pixels(0, 0, 10, 10)), 7.0) << "the old values stay";
    }

    SyslogCapture log;
};

TEST_F(SNRBlockOnABrokenBus, LogsAnArrayThatIsCutOff) {
    read(Bytes().signature("ad").get());
    EXPECT_THAT(log.errors(), ElementsAre("SNRBlock: Failed to read message. Error code = " +
                                          std::to_string(-EBADMSG) + "\n"));
}

TEST_F(SNRBlockOnABrokenBus, LogsValuesThatAreCutOff) {
    read(Bytes().signature("ad").align(4).word(16).align(8).real(1.0).get());
    EXPECT_THAT(log.errors(), ElementsAre("SNRBlock: Failed to read values. Error code = " +
                                          std::to_string(-EBADMSG) + "\n"));
}
