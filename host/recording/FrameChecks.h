// SPDX-License-Identifier: Apache-2.0
// Whether sensor frames agree with themselves and with those before them.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/SensorFrame.h>

#include <map>
#include <optional>

namespace Veskar::Host::Internal {

/// @param frame a frame
/// @throw InputError when it was received before the time of its measurement
VESKAR_HOST_EXPORT void refuseEarlyArrival(const SensorFrame& frame);

/// @param frame a frame
/// @throw InputError when the top of a box is below its bottom
VESKAR_HOST_EXPORT void refuseBoxesUpsideDown(const SensorFrame& frame);

/// The order of the frames of a recording: those of a sensor by their time, all by their arrival.
class VESKAR_HOST_EXPORT FrameOrder {
public:
    /// @param frame a frame
    /// @throw InputError when it cannot stand behind those before it, or agrees not with itself
    void check(const SensorFrame& frame) const;
    /// @param frame the next one of the recording
    void take(const SensorFrame& frame);
    /// @param frame a frame
    /// @return whether its stamps are far from those before it: those of a bad clock or of another
    ///         time base, and not of a frame that was overtaken
    bool isFar(const SensorFrame& frame) const;
    /// @param received until when frames were awaited
    /// @return whether that can stand behind the frames
    bool mayEnd(double received) const;

private:
    std::map<Source, double> lastTime_;
    std::optional<double> lastReceived_;
};

}  // namespace Veskar::Host::Internal
