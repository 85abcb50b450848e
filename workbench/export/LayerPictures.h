// SPDX-License-Identifier: Apache-2.0
// What the layers show at given moments, for formats with a common clock.
#pragma once

#include <veskar-host/FusedFrame.h>

#include "evaluate/Picture.h"

#include <map>
#include <string>
#include <vector>

namespace Workbench {

/// The confirmed tracks of each layer, predicted to a moment as `veskar evaluate` does it.
class LayerPictures {
public:
    /// @param layer see Exporter::add
    /// @param frame all its tracks
    void replace(const std::string& layer, const FusedFrame& frame);

    /// @return the layers that have had a frame
    std::vector<std::string> layers() const;
    /// @param layer one of them
    /// @param time s
    /// @return its tracks on the ground, their positions and boxes predicted to the time
    std::vector<FusedTrack> at(const std::string& layer, double time) const;

private:
    struct Layer {
        Picture picture;
        double time;                     ///< of the tracks, s
        std::vector<FusedTrack> tracks;  ///< in the order of ids
    };

    std::map<std::string, Layer> layers_;
};

}  // namespace Workbench
