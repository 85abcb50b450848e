// SPDX-License-Identifier: Apache-2.0
// Judges which system tracks are worth an alarm.
#pragma once

#include <veskar/Camera.h>
#include <veskar/Config.h>
#include <veskar/Export.h>
#include <veskar/SceneConditions.h>
#include <veskar/SystemTrack.h>

#include <memory>
#include <set>
#include <string>

namespace Veskar {

/// Tells for one system track at a time whether it counts when few false alarms or many detections
/// are wanted, and whether one sensor alone could see it, which is worth an annotation.
///
/// Keeps its memory of a track in the track. Calls the system bus through SceneConditions. Not
/// thread-safe; runs on the fusion thread.
class VESKAR_EXPORT DetectionPriority {
public:
    /// @param config copied; its "veskarDetectionPriority" section counts
    explicit DetectionPriority(const Config& config);

    /// Judges a track.
    ///
    /// @param track its latches, counter, label and annotated ids may change
    /// @return tags "minimizeFalseAlarms", "maximizeDetections", "automatic" and a reason code in
    ///         decimal, the sum of the latched reasons: 1 both sensors, 2 outside video range,
    ///         4 outside radar range, 16 long-lived, 32 travelled far
    std::set<std::string> evaluateTrack(SystemTrack& track);

    /// @param track its box height counts
    /// @return whether the box is too small for video to detect the object
    bool outsideVideoDetectionRange(const SystemTrack& track) const;
    /// @param track a track with at least one video-object track, unless it has a radar track
    /// @return whether radar cannot reach that far for the object's class; false with a radar track
    bool outsideRadarDetectionRange(const SystemTrack& track) const;
    /// @param track its counter of evaluations without video counts
    /// @param limit evaluations
    /// @return whether video should have seen the object more often than @p limit
    bool blockedByNoVideoDetection(const SystemTrack& track, int limit) const;
    /// Sends an annotation unless one was sent for the first radar track, or annotation is off.
    /// @param track a track with a radar track
    /// @param label label of the annotation
    void sendAnnotation(SystemTrack& track, const std::string& label);

    /// Does nothing; stands beside SceneConditions::setupCamera.
    /// @param camera not used
    void setupCamera(const std::shared_ptr<Camera>& camera);
    /// Does nothing; stands beside SceneConditions::updateSNRBlock.
    void updateSNRBlock();

private:
    void findReasons(SystemTrack& track);
    double farLimit(const std::string& className) const;

    Dbus::SceneConditions sceneConditions_;
    bool blockingEnabled_;
    Config config_;
};

}  // namespace Veskar
