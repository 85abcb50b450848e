// SPDX-License-Identifier: Apache-2.0
#include <veskar/ImagePlane.h>
#include <veskar/SNRBlock.h>

#include "dbus/SdBus.h"
#include "dbus/ServiceCaller.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include <syslog.h>

namespace Veskar::Dbus {
namespace {

constexpr int blockSize = 160;       // px
constexpr double unreadSNR = 100.0;  // passes every curve

/// An interval of whole pixels, whichever end comes first.
struct Extent {
    Extent(std::int64_t end, std::int64_t otherEnd)
        : low(std::min(end, otherEnd)), high(std::max(end, otherEnd)) {}

    /// @return pixels shared with the block that starts at @p start
    std::int64_t overlap(std::int64_t start) const {
        return std::max<std::int64_t>(0, std::min(high, start + blockSize) - std::max(low, start));
    }

    std::int64_t low;
    std::int64_t high;
};

/// To a 32-bit integer towards zero; what does not fit becomes the nearest that does.
std::int64_t truncate(double value) {
    constexpr double least = std::numeric_limits<std::int32_t>::min();
    constexpr double most = std::numeric_limits<std::int32_t>::max();
    return std::isnan(value) ? 0 : static_cast<std::int64_t>(std::clamp(value, least, most));
}

}  // namespace

SNRBlock::SNRBlock(sd_bus* bus) : SNRBlock(bus, [] { return std::chrono::steady_clock::now(); }) {}

SNRBlock::SNRBlock(sd_bus* bus, SteadyClock steadyClock)
    : bus_(bus), service_(std::make_shared<SdBus::ServiceCaller>(std::move(steadyClock))) {}

void SNRBlock::setupCamera(const std::shared_ptr<Camera>& camera) {
    camera_ = camera;
    const Eigen::Vector2i resolution = camera_->getResolution();
    rows_ = static_cast<int>(std::ceil(resolution(1) / static_cast<double>(blockSize)));
    columns_ = static_cast<int>(std::ceil(resolution(0) / static_cast<double>(blockSize)));
    blockCount_ = rows_ * columns_;
    snr_.assign(static_cast<std::size_t>(blockCount_), unreadSNR);
    blockX_.clear();
    blockY_.clear();
    for (int row = 0; row < rows_; ++row) {
        for (int column = 0; column < columns_; ++column) {
            blockX_.push_back(blockSize * column);
            blockY_.push_back(blockSize * row);
        }
    }
}

void SNRBlock::updateSNRBlock() {
    if (bus_ == nullptr) {
        return;
    }
    SdBus::discardPending(bus_);
    SdBus::Error error;
    sd_bus_message* received = nullptr;
    const std::optional<int> asked = service_->ask(bus_, [&] {
        return sd_bus_get_property(bus_, "com.nolt.Lumd.ch0", "/com/nolt/Lumd/SNRBlock",
                                   "com.nolt.Lumd.SNRBlock", "SNRBlock", error.out(), &received,
                                   "ad");
    });
    if (!asked) {
        return;
    }
    const SdBus::Message reply(received);
    int r = *asked;
    if (r < 0) {
        syslog(LOG_ERR, "SNRBlock: getSNRBlock error: %s\n", error.message());
        return;
    }
    r = SdBus::enter(reply.get(), SD_BUS_TYPE_ARRAY, "d");
    if (r < 0) {
        syslog(LOG_ERR, "SNRBlock: Failed to read message. Error code = %d\n", r);
        return;
    }
    std::vector<double> values;
    double value = 0.0;
    while ((r = sd_bus_message_read_basic(reply.get(), SD_BUS_TYPE_DOUBLE, &value)) > 0) {
        values.push_back(value);
    }
    if (r < 0) {
        syslog(LOG_ERR, "SNRBlock: Failed to read values. Error code = %d\n", r);
        return;
    }
    snr_ = std::move(values);
}

double SNRBlock::computeBboxSNR(const Eigen::Vector4d& box) const {
    const Extent horizontal(truncate(box(0)), truncate(box(0)) + truncate(box(1)));
    const std::int64_t top = truncate(box(2) + box(3));
    const Extent vertical(top + truncate(-box(3)), top);
    double area = 0.0;
    double weighted = 0.0;
    const std::size_t count = std::min(snr_.size(), blockX_.size());
    for (std::size_t i = 0; i < count; ++i) {
        const auto overlap =
            static_cast<double>(horizontal.overlap(blockX_[i]) * vertical.overlap(blockY_[i]));
        if (overlap == 0.0) {
            continue;  // its value need not even be finite
        }
        area += overlap;
        weighted += overlap * snr_[i];
    }
    return area < 1e-6 ? unreadSNR : weighted / area;
}

double SNRBlock::bboxSNR(const SystemTrack& track) const {
    if (camera_ == nullptr) {
        return unreadSNR;
    }
    Eigen::Vector4d box = track.boundingBox;
    transformCameraToScreen(box, *camera_);
    return computeBboxSNR(box);
}

}  // namespace Veskar::Dbus
