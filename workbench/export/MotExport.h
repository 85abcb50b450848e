// SPDX-License-Identifier: Apache-2.0
// Exports truth and trackers in the format of MOTChallenge.
#pragma once

#include "export/SequenceExport.h"

#include <string>
#include <vector>

namespace Workbench {

/// A benchmark of the kind MOT15, the one without classes, in the directories of TrackEval, which
/// compares boxes. It takes the first world coordinate of a tracker for a class; rows with places
/// on the ground are therefore in files of their own, those of the directory "ground".
class MotExport : public SequenceExport {
public:
    /// @param directory as SequenceExport
    /// @param header as SequenceExport
    MotExport(const std::string& directory, const RecordingHeader& header)
        : SequenceExport(directory, header) {}

protected:
    void writeTruth(int number, const std::vector<FusedTrack>& tracks) override;
    void writeTracker(const std::string& tracker, int number,
                      const std::vector<FusedTrack>& tracks) override;
    void describe() override;
};

}  // namespace Workbench
