// SPDX-License-Identifier: Apache-2.0
// From fused frames to scene descriptions.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/Installation.h>

#include "live/onvif/Disappearances.h"
#include "live/onvif/SceneDescription.h"

#include <string>

namespace Veskar::Live {

/// Describes fused frames, one after the other, as an analytics module of ONVIF: system tracks are
/// its objects, their ids its ObjectIds. Coordinates are those of the normalised image plane, so
/// that no transformation is needed. Places and directions in space are seen from the camera, with
/// the axes of the device frame turned as ONVIF has it: x to the right, y forward.
/// docs/live.md has the table of what becomes what.
///
/// One thread at a time may use it.
class FusedScene {
public:
    /// @param installation where the camera is
    /// @param module name of the module, for the attribute Source
    explicit FusedScene(const Host::Installation& installation, std::string module = "veskar");

    /// @param frame the tracks that are to be described
    /// @param time of the frame
    /// @return the frame; tracks that were in the one before and are gone are deleted
    SceneFrame describe(const Host::FusedFrame& frame, UtcTime time);

    /// @return whether the last frame had tracks
    bool hasTracks() const { return !disappearances_.isEmpty(); }

private:
    SceneObject objectFor(const Host::FusedTrack& track) const;

    std::string module_;
    Eigen::Vector3d camera_;  ///< device frame, m
    Disappearances disappearances_;
};

}  // namespace Veskar::Live
