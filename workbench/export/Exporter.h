// SPDX-License-Identifier: Apache-2.0
// What is exported, in the form that all formats take.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/SensorFrame.h>

#include "HostLibrary.h"

#include <string>

namespace Workbench {

/// Writes layers of tracks in a format of the field. A layer is the truth, a sensor or a run; each
/// is handed over as frames of tracks on the ground, so that a format is written only once.
class Exporter {
public:
    Exporter() = default;
    virtual ~Exporter() = default;
    Exporter(const Exporter&) = delete;
    Exporter& operator=(const Exporter&) = delete;

    /// A moment at which the truth states where the objects are; without truth, that of a video
    /// frame. The layers have what has arrived by then, the truth of the moment follows.
    /// @param time s
    /// @throw InputError as add
    virtual void atMoment(double /*time*/) {}
    /// A frame of a sensor as it was reported, of the layer "video" or "radar".
    /// @param frame in the order of arrival with those of add
    /// @return whether the format has taken it; otherwise add gets its tracks on the ground
    /// @throw InputError as add
    virtual bool takeReports(const SensorFrame& /*frame*/) { return false; }
    /// @param layer "truth", "video", "radar", "fused", "fused2" and so on
    /// @param frame all tracks of the layer; frames of all layers come in the order of arrival
    /// @throw InputError when the format cannot state them, or the output cannot be written
    virtual void add(const std::string& layer, const FusedFrame& frame) = 0;
    /// Makes the output visible. Must be the last call.
    /// @throw InputError as add
    virtual void finish() = 0;
};

}  // namespace Workbench
