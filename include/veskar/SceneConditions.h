// SPDX-License-Identifier: Apache-2.0
// Whether the light lets video see a track.
#pragma once

#include <veskar/Camera.h>
#include <veskar/Export.h>
#include <veskar/SNRBlock.h>
#include <veskar/SystemTrack.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

struct sd_bus;

namespace Veskar::SdBus {
class ServiceCaller;
}

namespace Veskar::Dbus {

/// A point of a minimum-SNR curve.
struct Point {
    double x;  ///< half the box height as a fraction of the image height
    double y;  ///< signal-to-noise ratio
};

/// Judges video conditions from the camera's day or night mode and the SNR under a track's box.
///
/// Calls the system bus from the caller's thread and keeps the mode for 10 s. A failing bus means
/// day; failures are logged at error priority. Not thread-safe.
///
/// A call waits at most 250 ms for an answer. A service that has not answered is not asked for 10 s
/// then; in between the answer is that of a failure, and nothing is logged. All calls and datagrams
/// of a thread together wait at most 300 ms within a second: a call that would have to wait for
/// longer fails sooner, or at once.
class VESKAR_EXPORT SceneConditions {
public:
    /// A clock for the age of the cached mode.
    using SteadyClock = SNRBlock::SteadyClock;

    /// Opens the system bus and asks for the mode.
    SceneConditions();
    /// As the other, on another clock, for tests.
    /// @param steadyClock asked whenever the age of the mode or of a failure counts
    explicit SceneConditions(SteadyClock steadyClock);
    ~SceneConditions();
    SceneConditions(const SceneConditions&) = delete;
    SceneConditions& operator=(const SceneConditions&) = delete;

    /// Asks the camera for its mode unless the last answer is younger than 10 s.
    /// @return false without a bus, when the call failed or the camera was not asked
    bool updateDayNight();
    /// @return whether it is day; true when the mode is not available
    bool isDay();
    /// @param track its box counts
    /// @return whether the SNR under the box lies above the curve for its height, by day or night;
    ///         false for boxes too small or too large for the curve, or exactly on one of its
    ///         points
    bool hasGoodVideoConditions(const SystemTrack& track);
    /// @param p the point
    /// @param a one point of the line
    /// @param b another point of the line
    /// @return whether @p p lies strictly above the line
    bool isAboveLineSegment(const Point& p, const Point& a, const Point& b) const;

    /// @param camera see SNRBlock::setupCamera
    void setupCamera(const std::shared_ptr<Camera>& camera);
    /// See SNRBlock::updateSNRBlock.
    void updateSNRBlock();
    /// @param track see SNRBlock::bboxSNR
    /// @return see SNRBlock::bboxSNR
    double bboxSNR(const SystemTrack& track) const;

private:
    struct CloseBus {
        void operator()(sd_bus* connection) const noexcept;
    };

    std::unique_ptr<sd_bus, CloseBus> bus_;
    std::string dayNightMode_ = "day";
    int updateInterval_ = 10;  // s
    std::chrono::steady_clock::time_point lastUpdate_;
    std::unique_ptr<SdBus::ServiceCaller> optics_;
    SNRBlock snrBlock_;  // on the bus above
    std::vector<Point> dayCurve_;
    std::vector<Point> nightCurve_;
    SteadyClock steadyClock_;
};

}  // namespace Veskar::Dbus
