// SPDX-License-Identifier: Apache-2.0
// Against the line itself, written and read.
#include <veskar-host/InputError.h>

#include "host/recording/FrameRounding.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <variant>

#include <gtest/gtest.h>

using namespace Veskar::Host;
using Veskar::Radar;
using Veskar::VideoObject;
using Veskar::Host::Internal::roundAsRecorded;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

auto fieldsOf(const Label& label) {
    return std::tuple(label.name, label.probability);
}

void expectEqual(const VideoReport& a, const VideoReport& b) {
    EXPECT_EQ(std::tie(a.id, a.coasting, a.confirmed, a.age),
              std::tie(b.id, b.coasting, b.confirmed, b.age));
    EXPECT_EQ(std::tie(a.box.left, a.box.bottom, a.box.right, a.box.top),
              std::tie(b.box.left, b.box.bottom, b.box.right, b.box.top));
    EXPECT_EQ(a.velocity, b.velocity);
    for (Label Labels::*label : {&Labels::objectClass, &Labels::color, &Labels::upperClothingColor,
                                 &Labels::lowerClothingColor}) {
        EXPECT_EQ(fieldsOf(a.labels.*label), fieldsOf(b.labels.*label));
    }
}

void expectEqual(const RadarReport& a, const RadarReport& b) {
    EXPECT_EQ(std::tie(a.id, a.coasting, a.confirmed, a.range, a.azimuth),
              std::tie(b.id, b.coasting, b.confirmed, b.range, b.azimuth));
    EXPECT_EQ(std::tie(a.speed, a.direction, a.radialSpeed),
              std::tie(b.speed, b.direction, b.radialSpeed));
    EXPECT_EQ(fieldsOf(a.objectClass), fieldsOf(b.objectClass));
}

void expectEqual(const SensorFrame& a, const SensorFrame& b) {
    EXPECT_EQ(std::tie(a.source, a.time, a.received), std::tie(b.source, b.time, b.received));
    ASSERT_EQ(a.tracks.size(), b.tracks.size());
    for (std::size_t i = 0; i < a.tracks.size(); ++i) {
        ASSERT_EQ(a.tracks[i].index(), b.tracks[i].index());
        if (a.source == Radar) {
            expectEqual(std::get<RadarReport>(a.tracks[i]), std::get<RadarReport>(b.tracks[i]));
        } else {
            expectEqual(std::get<VideoReport>(a.tracks[i]), std::get<VideoReport>(b.tracks[i]));
        }
    }
}

/// Numbers of all sizes, round ones, halves of the last digit, and now and then what is none.
class AnyFrame {
public:
    explicit AnyFrame(unsigned seed) : random_(seed) {}

    double number(double scale) {
        const double value = std::uniform_real_distribution<double>(-scale, scale)(random_);
        switch (std::uniform_int_distribution<int>(0, 9)(random_)) {
            case 0:
                return 0.0;
            case 1:
                return std::nearbyint(value * 1e3) / 1e3 + 0.0005;
            case 2:
                return std::nearbyint(value * 1e6) / 1e6 + 0.0000005;
            case 3:
                return -std::abs(value) * 1e-7;
            default:
                return value;
        }
    }
    bool isHappening(int outOf) {
        return std::uniform_int_distribution<int>(1, outOf)(random_) == 1;
    }
    Label label() {
        return isHappening(3) ? Label{"unknown", 0.5}
                              : Label{"human", std::min(1.0, std::abs(number(1.0)))};
    }
    Report report(Veskar::Source source, int id) {
        if (source == Radar) {
            RadarReport report;
            fill(report, id);
            report.range = std::abs(number(200.0));
            report.azimuth = number(180.0);
            if (!isHappening(3)) {
                report.speed = std::abs(number(10.0));
            }
            if (!isHappening(4)) {
                report.direction = number(360.0);
            }
            if (!report.speed || !report.direction || isHappening(2)) {
                report.radialSpeed = number(10.0);
            }
            report.objectClass = label();
            return report;
        }
        VideoReport report;
        fill(report, id);
        report.box = {number(1.0), number(1.0), 0.0, 0.0};
        report.box.right = report.box.left + std::abs(number(0.2));
        report.box.top = report.box.bottom + std::abs(number(0.2));
        if (isHappening(2)) {
            report.velocity = Eigen::Vector2d(number(1.0), number(1.0));
        }
        report.age = std::abs(number(100.0));
        report.labels = {label(), label(), label(), label()};
        return report;
    }
    SensorFrame frame() {
        SensorFrame frame{isHappening(2) ? Radar : VideoObject, 71234.0 + number(1000.0), 0.0, {}};
        frame.received = isHappening(3) ? frame.time : frame.time + std::abs(number(0.1));
        for (int id = 1; id <= 5; ++id) {
            frame.tracks.push_back(report(frame.source, id));
        }
        return frame;
    }

private:
    void fill(ReportBase& report, int id) {
        report.id = id;
        report.coasting = isHappening(2) ? number(1.0) : 0.0;
        report.confirmed = !isHappening(3);
    }

    std::mt19937 random_;
};

/// @return what is read back; nothing when the line is refused
std::optional<SensorFrame> readBack(const SensorFrame& frame) {
    try {
        return parseSensorFrame(toJsonLine(frame));
    } catch (const InputError&) {
        return std::nullopt;
    }
}

}  // namespace

TEST(FrameRounding, GivesWhatTheLineGives) {
    AnyFrame any(1);
    for (int i = 0; i < 5000; ++i) {
        const SensorFrame frame = any.frame();
        SensorFrame rounded = frame;
        ASSERT_TRUE(roundAsRecorded(rounded)) << toJsonLine(frame);
        const std::optional<SensorFrame> read = readBack(frame);
        ASSERT_TRUE(read) << toJsonLine(frame);
        expectEqual(rounded, *read);
        ASSERT_FALSE(testing::Test::HasFailure()) << toJsonLine(frame);
    }
}

TEST(FrameRounding, ZeroHasTheSignThatTheLineGives) {
    for (const double azimuth : {-1e-9, -0.0, 1e-9}) {
        RadarReport report;
        report.range = 20.0;
        report.radialSpeed = 1.0;
        report.azimuth = azimuth;
        SensorFrame frame{Radar, 1.0, 1.0, {report}};
        const auto read = readBack(frame);
        ASSERT_TRUE(read);
        ASSERT_TRUE(roundAsRecorded(frame));
        EXPECT_EQ(std::signbit(std::get<RadarReport>(frame.tracks[0]).azimuth),
                  std::signbit(std::get<RadarReport>(read->tracks[0]).azimuth))
            << azimuth;
    }
}

TEST(FrameRounding, LeavesToTheLineWhatIsUnusual) {
    const auto isRounded = [](Veskar::Source source, const Report& report) {
        SensorFrame frame{source, 1.0, 1.0, {report}};
        return roundAsRecorded(frame);
    };
    VideoReport video;
    video.box = {-0.1, -0.2, 0.1, 0.2};
    RadarReport radar;
    radar.range = 10.0;
    radar.radialSpeed = 1.0;
    ASSERT_TRUE(isRounded(VideoObject, video));
    ASSERT_TRUE(isRounded(Radar, radar));
    EXPECT_FALSE(isRounded(Radar, video));
    EXPECT_FALSE(isRounded(VideoObject, radar));
    EXPECT_FALSE(isRounded(VideoObject, ReadyEstimate()));
    for (double ImageBox::*edge :
         {&ImageBox::left, &ImageBox::bottom, &ImageBox::right, &ImageBox::top}) {
        for (const double odd : {std::nan(""), infinity, -infinity, 1e10}) {
            VideoReport report = video;
            report.box.*edge = odd;
            EXPECT_FALSE(isRounded(VideoObject, report)) << odd;
        }
    }
    const auto isVideoRounded = [&](auto change) {
        VideoReport report = video;
        change(report);
        return isRounded(VideoObject, report);
    };
    EXPECT_FALSE(isVideoRounded([](auto& report) { report.box.left = 0.2; }));
    EXPECT_FALSE(isVideoRounded([](auto& report) { report.box.bottom = 0.3; }));
    EXPECT_FALSE(isVideoRounded([](auto& report) { report.age = -1.0; }));
    EXPECT_FALSE(isVideoRounded([](auto& report) { report.coasting = infinity; }));
    EXPECT_FALSE(isVideoRounded([](auto& report) { report.labels.color = {"red", 1.0001}; }));
    EXPECT_FALSE(isVideoRounded([](auto& report) { report.labels.color = {"r\xff", 0.5}; }));
    EXPECT_FALSE(isVideoRounded([](auto& report) { report.labels.color = {"", std::nan("")}; }));
    EXPECT_TRUE(isVideoRounded([](auto& report) { report.coasting = std::nan(""); }));
    const auto isRadarRounded = [&](auto change) {
        RadarReport report = radar;
        change(report);
        return isRounded(Radar, report);
    };
    EXPECT_FALSE(isRadarRounded([](auto& report) { report.range = -1.0; }));
    EXPECT_FALSE(isRadarRounded([](auto& report) { report.azimuth = 360.5; }));
    EXPECT_FALSE(isRadarRounded([](auto& report) { report.radialSpeed.reset(); }));
    EXPECT_FALSE(isRadarRounded([](auto& report) {
        report.speed = -1.0;
        report.direction = 0.0;
    }));
    SensorFrame twice{Radar, 1.0, 1.0, {radar, radar}};
    EXPECT_FALSE(roundAsRecorded(twice));
    SensorFrame late{Radar, 1e13, 1e13, {}};
    EXPECT_FALSE(roundAsRecorded(late));
    SensorFrame other{Veskar::Source(7), 1.0, 1.0, {}};
    EXPECT_FALSE(roundAsRecorded(other));
}
