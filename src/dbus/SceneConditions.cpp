// SPDX-License-Identifier: Apache-2.0
#include <veskar/SceneConditions.h>

#include "dbus/SdBus.h"
#include "dbus/ServiceCaller.h"

#include <optional>
#include <utility>

#include <syslog.h>

namespace Veskar::Dbus {
namespace {

sd_bus* openBus() {
    SdBus::Bus bus;
    const int r = SdBus::openSystem(bus);
    if (r < 0) {
        syslog(LOG_ERR, "SceneConditions: Failed to open sd bus. Error code: %d\n", r);
        return nullptr;
    }
    return bus.release();
}

}  // namespace

void SceneConditions::CloseBus::operator()(sd_bus* connection) const noexcept {
    SdBus::CloseBus()(connection);
}

SceneConditions::SceneConditions()
    : SceneConditions([] { return std::chrono::steady_clock::now(); }) {}

SceneConditions::SceneConditions(SteadyClock clock)
    : bus_(openBus()),
      optics_(std::make_unique<SdBus::ServiceCaller>(clock)),
      snrBlock_(bus_.get(), clock),
      steadyClock_(std::move(clock)) {
    // Old enough for the first question to be asked at once.
    lastUpdate_ = steadyClock_() - std::chrono::seconds(updateInterval_);
    if (bus_ != nullptr) {
        sd_bus_flush(bus_.get());
        updateDayNight();
    }
    dayCurve_ = {{0.255, 1.15}, {0.183, 3.2}, {0.1, 6.28}, {0.072, 15.5}};
    nightCurve_ = {{0.255, 4.0}, {0.183, 6.0}, {0.1, 20.0}, {0.072, 25.0}};
}

SceneConditions::~SceneConditions() = default;

bool SceneConditions::updateDayNight() {
    if (bus_ == nullptr) {
        return false;
    }
    if (steadyClock_() - lastUpdate_ < std::chrono::seconds(updateInterval_)) {
        return true;
    }
    SdBus::discardPending(bus_.get());
    SdBus::Error error;
    sd_bus_message* received = nullptr;
    const std::optional<int> asked = optics_->ask(bus_.get(), [&] {
        return sd_bus_call_method(bus_.get(), "com.nolt.Optics2", "/com/nolt/Optics0",
                                  "com.nolt.DayNight1", "GetDayNight", error.out(), &received, "");
    });
    if (!asked) {
        return false;
    }
    const SdBus::Message reply(received);
    int r = *asked;
    if (r < 0) {
        syslog(LOG_ERR, "SceneConditions: getDayNight error: %s\n", error.message());
        return false;
    }
    const char* mode = nullptr;
    r = sd_bus_message_read_basic(reply.get(), SD_BUS_TYPE_STRING, &mode);
    if (r < 0) {
        syslog(LOG_ERR, "SceneConditions: Failed to read message. Error code = %d\n", r);
        return false;
    }
    dayNightMode_ = mode;
    lastUpdate_ = steadyClock_();
    return true;
}

bool SceneConditions::isDay() {
    if (!updateDayNight()) {
        dayNightMode_ = "day";
    }
    return dayNightMode_ == "day";
}

bool SceneConditions::hasGoodVideoConditions(const SystemTrack& track) {
    const Point p{0.5 * track.boundingBox(3), bboxSNR(track)};
    const std::vector<Point>& curve = isDay() ? dayCurve_ : nightCurve_;
    if (curve.empty()) {
        return false;
    }
    // Large boxes need no more than the curve's first point.
    Point upper{1.0, curve.front().y};
    for (const Point& lower : curve) {
        if (lower.x < p.x && p.x < upper.x) {
            return isAboveLineSegment(p, lower, upper);
        }
        upper = lower;
    }
    return false;
}

bool SceneConditions::isAboveLineSegment(const Point& p, const Point& a, const Point& b) const {
    const double slope = (b.y - a.y) / (b.x - a.x);
    return a.y - a.x * slope + slope * p.x < p.y;
}

void SceneConditions::setupCamera(const std::shared_ptr<Camera>& camera) {
    snrBlock_.setupCamera(camera);
}

void SceneConditions::updateSNRBlock() {
    snrBlock_.updateSNRBlock();
}

double SceneConditions::bboxSNR(const SystemTrack& track) const {
    return snrBlock_.bboxSNR(track);
}

}  // namespace Veskar::Dbus
