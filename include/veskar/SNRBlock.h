// SPDX-License-Identifier: Apache-2.0
// The video's signal-to-noise ratio, block by block.
#pragma once

#include <veskar/Camera.h>
#include <veskar/Export.h>
#include <veskar/SystemTrack.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include <Eigen/Core>

struct sd_bus;

namespace Veskar::SdBus {
class ServiceCaller;
}

namespace Veskar::Dbus {

/// The signal-to-noise ratio of the image in blocks of 160 x 160 pixels, read over the system bus.
/// Every block is 100.0 until it is first read. Not thread-safe.
class VESKAR_EXPORT SNRBlock {
public:
    /// A clock for the pause after a call that was not answered.
    using SteadyClock = std::function<std::chrono::steady_clock::time_point()>;

    /// A grid without camera, blocks or connection.
    SNRBlock() = default;
    /// @param bus a connection that outlives this object; may be null
    explicit SNRBlock(sd_bus* bus);
    /// As the other, on another clock, for tests.
    /// @param bus a connection that outlives this object; may be null
    /// @param steadyClock asked with every call
    SNRBlock(sd_bus* bus, SteadyClock steadyClock);

    /// Lays the grid over the camera's image; a second call starts afresh.
    /// @param camera gives the resolution; kept
    void setupCamera(const std::shared_ptr<Camera>& camera);

    /// Reads all blocks. On failure, which is logged at error priority, and without a connection
    /// the values stay as they are. Waits at most 250 ms; a service that has not answered is not
    /// asked for 10 s then.
    void updateSNRBlock();

    /// @param box [left, width, lower edge, height] in pixels, height negative as
    ///            transformCameraToScreen gives it
    /// @return mean over the blocks under the box, weighted by area; 100.0 without overlap
    double computeBboxSNR(const Eigen::Vector4d& box) const;

    /// @param track its box counts
    /// @return mean under the box; 100.0 without camera
    double bboxSNR(const SystemTrack& track) const;

private:
    int blockCount_ = 0;
    int rows_ = 0;
    int columns_ = 0;
    std::vector<int> blockX_;
    std::vector<int> blockY_;
    std::shared_ptr<Camera> camera_;
    std::vector<double> snr_;
    sd_bus* bus_ = nullptr;
    std::shared_ptr<SdBus::ServiceCaller> service_;  // copies share the connection too
};

}  // namespace Veskar::Dbus
