// SPDX-License-Identifier: Apache-2.0
// Tracks as messages of Foxglove (https://docs.foxglove.dev/docs/sdk/schemas), in JSON.
#pragma once

#include <veskar-host/FusedFrame.h>

#include "host/installation/RecordingHeader.h"
#include "recording/Header.h"

#include <cstdint>
#include <string>

#include <nlohmann/json.hpp>

namespace Workbench {

/// Makes messages of the tracks of a recording. Coordinates are those of the device, x forward, y
/// to the left; what is not finite is left out.
class FoxgloveMessages {
public:
    /// @param header of the recording; must outlive this
    explicit FoxgloveMessages(const RecordingHeader& header) : header_(header) {}

    /// @param time by the clock of the recording, s
    /// @return UNIX time, ns; by the clock of the recording when it does not state its epoch
    /// @throw InputError when the time is before 1970 or after 2106
    std::uint64_t nanoseconds(double time) const;

    /// @param layer see Exporter::add
    /// @param frame its tracks
    /// @return SceneUpdate: a box of the usual size of the class, an arrow as long as the way of a
    ///         second and a label for every track on the ground; replaces all earlier ones
    Json sceneOf(const std::string& layer, const FusedFrame& frame) const;
    /// @param layer as sceneOf
    /// @param frame as sceneOf
    /// @return LocationFixes: the tracks that have a place on Earth
    Json locationsOf(const std::string& layer, const FusedFrame& frame) const;
    /// @param layer as sceneOf
    /// @param frame as sceneOf
    /// @return ImageAnnotations: the boxes, in pixels of the camera
    Json annotationsOf(const std::string& layer, const FusedFrame& frame) const;
    /// @param time s
    /// @return FrameTransforms: how camera and radar are mounted
    Json mountings(double time) const;
    /// @return GeoJSON: the device and what its camera and its radar can see; needs a site
    Json map() const;

private:
    Json timestamp(double time) const;
    Json positionCovariance(const FusedTrack& track) const;
    Json sectorOf(const Mounting& mounting, double fieldOfView, const char* name) const;

    const RecordingHeader& header_;
};

}  // namespace Workbench
