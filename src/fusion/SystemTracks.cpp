// SPDX-License-Identifier: Apache-2.0
#include "fusion/SystemTracks.h"

#include "track/Dereference.h"
#include "track/TakeReport.h"

namespace Veskar {
namespace {

/// Everything but the estimate.
void takeEvidence(SystemTrack& systemTrack, const Track& report) {
    systemTrack.updateTrackProbability(report.probability);
    takeLabels(systemTrack, report);
}

}  // namespace

void takeLabels(SystemTrack& systemTrack, const Track& report) {
    systemTrack.updateClass(report);
    systemTrack.updateColor(report);
    systemTrack.updateUpperClothingColor(report);
    systemTrack.updateLowerClothingColor(report);
}

void fuseReport(SystemTrack& systemTrack, const std::shared_ptr<Track>& report) {
    systemTrack.updateState(report);
    takeEvidence(systemTrack, dereference(report));
}

void fuseReport(SystemTrack& systemTrack, const std::shared_ptr<Track>& report,
                const FusedEstimate& fused) {
    takeReport(systemTrack, report, fused);
    takeEvidence(systemTrack, dereference(report));
}

}  // namespace Veskar
