// SPDX-License-Identifier: Apache-2.0
#include "calibrate/WindowWatch.h"

#include <veskar-host/Projection.h>

#include <cmath>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Workbench {
namespace {

using Veskar::Live::MountingState;

/// Frames of a sensor that are at least so far apart are looked at, s.
constexpr double thinning = 0.18;
constexpr double judgementsPerWindow = 5.0;
/// What waits for the thread while it judges: some seconds of frames.
constexpr std::size_t mostWaiting = 200;
/// Niceness of the thread; the fusion comes first.
constexpr int niceness = 10;

MountingState stateOf(const MountingShift& shift, bool hasMoved) {
    return {hasMoved,
            degrees(shift.yaw.value),
            degrees(shift.yaw.std),
            degrees(shift.pitch.value),
            degrees(shift.pitch.std),
            shift.clusters};
}

class WindowWatch : public Veskar::Live::MountingWatch {
public:
    WindowWatch(const Installation& stated, const Veskar::Live::WatchSettings& settings)
        : window_(stated, settings), thread_([this] { run(); }) {}
    ~WindowWatch() override {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            ends_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }
    WindowWatch(const WindowWatch&) = delete;
    WindowWatch& operator=(const WindowWatch&) = delete;

    /// Frames that the thread does not keep up with are left out.
    void see(const SensorFrame& frame) override {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (waiting_.size() >= mostWaiting) {
                return;
            }
            waiting_.push_back(frame);
        }
        wake_.notify_one();
    }

    std::optional<MountingState> state() override {
        const std::lock_guard<std::mutex> lock(mutex_);
        return state_;
    }

private:
    void run() {
        ::setpriority(PRIO_PROCESS, static_cast<id_t>(::syscall(SYS_gettid)), niceness);
        while (true) {
            std::vector<SensorFrame> frames;
            {
                std::unique_lock<std::mutex> lock(mutex_);
                wake_.wait(lock, [this] { return ends_ || !waiting_.empty(); });
                if (ends_) {
                    return;
                }
                std::swap(frames, waiting_);
            }
            for (const SensorFrame& frame : frames) {
                if (const auto state = window_.add(frame)) {
                    const std::lock_guard<std::mutex> lock(mutex_);
                    state_ = state;
                }
            }
        }
    }

    MountingWindow window_;  ///< of the thread
    std::mutex mutex_;       ///< guards what follows
    std::condition_variable wake_;
    std::vector<SensorFrame> waiting_;
    std::optional<MountingState> state_;
    bool ends_ = false;
    std::thread thread_;  ///< last: it uses all of the above
};

}  // namespace

bool MovementRule::judge(const MountingShift& shift) {
    constexpr double leastSignificance = 4.0;
    constexpr double wellWithin = 0.7;
    constexpr int inARow = 2;
    const auto isBeyond = [&](const ShiftedAngle& angle) {
        const double size = std::abs(angle.value);
        return hasMoved_ ? size > wellWithin * limit_
                         : size > limit_ && size > leastSignificance * angle.std;
    };
    const bool seemsMoved = isBeyond(shift.yaw) || isBeyond(shift.pitch);
    opposed_ = seemsMoved == hasMoved_ ? 0 : opposed_ + 1;
    if (opposed_ == inARow) {
        hasMoved_ = seemsMoved;
        opposed_ = 0;
    }
    return hasMoved_;
}

std::optional<MountingState> MountingWindow::add(const SensorFrame& frame) {
    double& latest = frame.source == Veskar::Radar ? latestRadar_ : latestVideo_;
    if (frame.time - latest < thinning) {
        return std::nullopt;
    }
    latest = frame.time;
    sightings_.add(frame);
    if (!judged_) {
        judged_ = frame.time;
    }
    if (frame.time - *judged_ < length_ / judgementsPerWindow) {
        return std::nullopt;
    }
    judged_ = frame.time;
    sightings_.forgetBefore(frame.time - length_);
    return judge();
}

std::optional<MountingState> MountingWindow::judge() {
    CalibrationScene scene;
    scene.sightings = sightings_;
    scene.moments = momentsOf(scene.sightings);
    const std::optional<MountingShift> shift = mountingShift(stated_, scene);
    return shift ? std::optional(stateOf(*shift, rule_.judge(*shift))) : std::nullopt;
}

std::unique_ptr<Veskar::Live::MountingWatch> watchMounting(
    const Installation& stated, const Veskar::Live::WatchSettings& settings) {
    return std::make_unique<WindowWatch>(stated, settings);
}

}  // namespace Workbench
