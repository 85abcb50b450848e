// SPDX-License-Identifier: Apache-2.0
// Exports truth and trackers in the tracking format of KITTI.
#pragma once

#include "export/SequenceExport.h"

#include <string>
#include <vector>

namespace Workbench {

/// Labels and results of the 2D box benchmark in the directories of TrackEval. Places are relative
/// to the camera, along the axes of the device.
class KittiExport : public SequenceExport {
public:
    /// @param directory as SequenceExport
    /// @param header as SequenceExport
    KittiExport(const std::string& directory, const RecordingHeader& header)
        : SequenceExport(directory, header) {}

protected:
    void writeTruth(int number, const std::vector<FusedTrack>& tracks) override;
    void writeTracker(const std::string& tracker, int number,
                      const std::vector<FusedTrack>& tracks) override;
    void describe() override;

private:
    void appendRow(LineText& text, int number, const FusedTrack& track,
                   const std::string& visibility) const;
};

}  // namespace Workbench
