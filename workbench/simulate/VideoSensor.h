// SPDX-License-Identifier: Apache-2.0
// A simulated camera with object analytics.
#pragma once

#include <veskar-host/Projection.h>

#include "HostLibrary.h"
#include "simulate/Detections.h"
#include "simulate/Motion.h"
#include "simulate/Random.h"
#include "simulate/scenario/Scenario.h"
#include "simulate/tracker/SensorTrackers.h"

#include <cstdint>
#include <map>
#include <vector>

namespace Workbench {

/// Detects objects as boxes, with occlusion, limited resolution, noise and a slowly varying foot
/// point error, and tracks its detections.
class VideoSensor {
public:
    /// @param scenario must outlive this
    /// @param seed seed of the run
    VideoSensor(const Scenario& scenario, std::uint64_t seed);

    /// @param time seconds
    /// @param objects the objects at that time
    /// @return the analytics' tracks
    std::vector<Report> look(double time, const std::vector<ObjectState>& objects);

    /// @param camera a camera
    /// @param object an object
    /// @return the box around its image
    static ImageBox boxOf(const Projection& camera, const ObjectState& object);

private:
    struct View {
        const ObjectState* object;
        ImageBox box;
        double distance;
        double covered;  ///< fraction of the box that nearer objects cover
    };
    std::vector<View> views(const std::vector<ObjectState>& objects) const;
    bool isDetected(const View& view);
    VideoDetection detect(const View& view, double dt);
    VideoDetection imagine(const FalseObject& object) const;
    Label classOf(const ObjectTraits& object);

    const VideoTraits& traits_;
    const std::vector<Wall>& walls_;
    Projection camera_;  ///< with its true pose
    Random random_;
    FalseObjects falseObjects_;
    VideoTracker tracker_;
    std::map<std::int32_t, std::array<GaussMarkov, 2>> footErrors_;
    double last_ = 0.0;
};

}  // namespace Workbench
