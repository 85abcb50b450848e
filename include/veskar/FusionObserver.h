// SPDX-License-Identifier: Apache-2.0
// What the fusion decides, told to a host that wants to know.
#pragma once

#include <veskar/Export.h>
#include <veskar/Track.h>

#include <cstddef>
#include <optional>

namespace Veskar {

/// Watches the decisions of a FusionModule; see FusionModule::setObserver.
///
/// Derive from it and override what is of interest: every operation does nothing by default. The
/// calls come from within FusionModule::cycle on its thread, in the order in which things happen
/// there. They must not call the module and must not throw. Without an observer nothing of this is
/// computed. Later versions only add operations at the end.
class VESKAR_EXPORT FusionObserver {
public:
    /// What the gate says about a pair of tracks.
    enum class GateVerdict {
        Passed,             ///< inside the gate
        TooFar,             ///< the distance is not below its limit
        VelocityDiffers,    ///< both move, but not in the same direction
        StandsStill,        ///< the radar sees speed where video sees a large, old object stand
        ClassNotSupported,  ///< one of the classes takes no part in fusion
    };

    /// What the comparison of the object classes says.
    enum class ClassVerdict {
        NotCompared,  ///< only one sensor is involved, or the configuration does not ask
        Match,        ///< of one group
        Mismatch,     ///< of different groups, or of none
    };

    /// The gate of a pair, see TrackAssociator::checkGating.
    struct Gate {
        double distance = 0.0;  ///< Mahalanobis distance; with "splitGating" of the positions only
        double limit = 0.0;     ///< it must stay below this: "gatingDistance" or
                                ///< "positionGatingDistance"
        /// Cosine of the angle between the velocities; only with "splitGating" and enough speed.
        std::optional<double> velocitySimilarity;
        double similarityLimit = 0.0;  ///< it must stay above this: "velocityGatingSimilarity"
        GateVerdict verdict = GateVerdict::Passed;  ///< the outcome
    };

    /// A frame is about to be fused; everything up to the next one belongs to it.
    struct Frame {
        Source source = Source::VideoObject;  ///< the sensor
        double timestamp = 0.0;               ///< of the frame, seconds
        std::size_t sensorTracks = 0;         ///< tracks in the frame
        std::size_t systemTracks = 0;         ///< system tracks before it
    };

    /// A sensor track that a system track holds has reported again.
    struct Continuation {
        int systemTrackId = 0;                                  ///< the system track
        Source source = Source::VideoObject;                    ///< source of the sensor track
        int sensorTrackId = 0;                                  ///< the sensor track
        Gate gate;                                              ///< of the new report
        ClassVerdict classVerdict = ClassVerdict::NotCompared;  ///< of the new report
        /// Whether the report costs the sensor track its place: only where radar and video both
        /// support the system track. The report itself is fused all the same.
        bool refused = false;
    };

    /// A sensor track that no system track holds yet was compared with a system track that has none
    /// of its source.
    struct Candidate {
        int systemTrackId = 0;                                  ///< the system track
        Source source = Source::VideoObject;                    ///< source of the sensor track
        int sensorTrackId = 0;                                  ///< the sensor track
        Gate gate;                                              ///< of the pair
        ClassVerdict classVerdict = ClassVerdict::NotCompared;  ///< of the pair
        /// Whether the pair may be assigned: inside the gate, and not of different classes while
        /// another candidate of the right class is inside the gate too.
        bool allowed = false;
    };

    /// Two system tracks with one sensor each were compared, to find out whether they are one
    /// object.
    struct MergeCandidate {
        int olderId = 0;        ///< system track that started first
        int youngerId = 0;      ///< system track that started strictly later
        Gate gate;              ///< of the pair
        bool excluded = false;  ///< one of them has refused a report in this frame
    };

    /// A sensor track and a system track belong together from now on.
    struct Link {
        int systemTrackId = 0;                ///< the system track
        Source source = Source::VideoObject;  ///< source of the sensor track
        int sensorTrackId = 0;                ///< the sensor track
    };

    /// A sensor track has left a system track.
    struct Pruning {
        int systemTrackId = 0;                ///< the system track
        Source source = Source::VideoObject;  ///< source of the sensor track
        int sensorTrackId = 0;                ///< the sensor track
        double coastingTime = 0.0;  ///< seconds without a report; 0 when its report was refused
    };

    /// Why a system track has ended.
    enum class DeletionReason {
        NoSensorTracks,  ///< the last sensor track has left
        Merged,          ///< it was folded into another system track
        RadarCopy,       ///< its only radar track also feeds a system track with video
    };

    virtual ~FusionObserver();

    /// @param frame the frame that begins
    virtual void onFrame(const Frame& frame);
    /// @param continuation a report of a held sensor track
    virtual void onContinuation(const Continuation& continuation);
    /// Comes before the assignment of the frame, for every candidate pair.
    /// @param candidate the pair
    virtual void onCandidate(const Candidate& candidate);
    /// Comes before the merges of a radar frame, for every candidate pair.
    /// @param candidate the pair
    virtual void onMergeCandidate(const MergeCandidate& candidate);
    /// @param link a sensor track that was assigned to a system track
    virtual void onAssignment(const Link& link);
    /// @param survivorId the system track that goes on
    /// @param otherId the system track that was folded into it
    virtual void onMerge(int survivorId, int otherId);
    /// @param link a sensor track that no system track took, and the system track started from it
    virtual void onStart(const Link& link);
    /// @param systemTrackId a system track that was confirmed in this frame
    /// @param probability its track probability
    /// @param limit the limit that the probability has passed
    virtual void onConfirmation(int systemTrackId, double probability, double limit);
    /// @param pruning a sensor track that has left
    virtual void onPruning(const Pruning& pruning);
    /// @param systemTrackId the system track that has ended
    /// @param reason why
    virtual void onDeletion(int systemTrackId, DeletionReason reason);
    /// Asked before every frame. An observer that says no is told of frames only, and costs nothing
    /// more than that.
    /// @return whether it wants to know what is decided; by default it does
    virtual bool wantsDecisions() const;
};

}  // namespace Veskar
