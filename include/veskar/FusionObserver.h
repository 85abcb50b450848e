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

    /// Why a report costs its sensor track the place in a system track. Those after OutsideGate
    /// come with the optional rules and the classes.
    enum class Refusal {
        None,           ///< it does not
        OutsideGate,    ///< the report lies outside the gate of the system track
        PairTooFar,     ///< it is too far from the other sensor's track ("pairGate")
        PairDisagrees,  ///< they have disagreed over the last second ("pairMemory")
        ClassMismatch,  ///< the other sensor's track is of another class ("removeClassMismatches")
    };

    /// A sensor track that a system track holds has reported again.
    struct Continuation {
        int systemTrackId = 0;                                  ///< the system track
        Source source = Source::VideoObject;                    ///< source of the sensor track
        int sensorTrackId = 0;                                  ///< the sensor track
        Gate gate;                                              ///< of the new report
        ClassVerdict classVerdict = ClassVerdict::NotCompared;  ///< of the new report
        /// Whether the report costs the sensor track its place: only where radar and video both
        /// support the system track. The report itself is fused all the same, and with
        /// "radarKeepsSystemTrack" video leaves instead of radar.
        bool refused = false;
        Refusal refusal = Refusal::None;  ///< why
        /// Mahalanobis distance of the positions of the report and of the other sensor's track;
        /// with "pairGate" only.
        std::optional<double> pairDistance;
    };

    /// What an optional rule has against assigning a sensor track.
    enum class Hindrance {
        None,            ///< nothing
        ReportCoasts,    ///< the report coasts ("freshReportsOnly")
        SeenBesideHeld,  ///< the sensor has updated it and the held track in one frame ("takeOver")
    };

    /// A sensor track that no system track holds yet was compared with a system track that has none
    /// of its source, or with "takeOver" one that coasts.
    struct Candidate {
        int systemTrackId = 0;                                  ///< the system track
        Source source = Source::VideoObject;                    ///< source of the sensor track
        int sensorTrackId = 0;                                  ///< the sensor track
        Gate gate;                                              ///< of the pair
        ClassVerdict classVerdict = ClassVerdict::NotCompared;  ///< of the pair
        /// Whether the pair may be assigned: inside the gate, without a hindrance, and not of
        /// different classes while another candidate of the right class is inside the gate too.
        bool allowed = false;
        Hindrance hindrance = Hindrance::None;  ///< what a rule has against the pair
    };

    /// What "pairMemory" knows of a pair of a radar and a video track.
    struct PairMemory {
        double squaredDistance = 0.0;  ///< mean squared Mahalanobis distance of the positions
        double rivals = 0.0;           ///< mean number of other tracks near one of the two
        bool disagrees = false;        ///< whether they count as different objects
    };

    /// What speaks against merging two system tracks, beside the gate.
    enum class MergeHindrance {
        None,           ///< nothing
        SameStart,      ///< both started at the same time, without "orderedMerging"
        PairUnknown,    ///< "pairMemory" knows nothing of their sensor tracks
        PairDisagrees,  ///< "pairMemory" counts their sensor tracks as different objects
    };

    /// Two system tracks with one sensor each were compared, to find out whether they are one
    /// object.
    struct MergeCandidate {
        int olderId = 0;        ///< system track that started first
        int youngerId = 0;      ///< system track that started later, or has the larger
                                ///< id where both started at the same time
        Gate gate;              ///< of the pair
        bool excluded = false;  ///< one of them has refused a report in this frame
        MergeHindrance hindrance = MergeHindrance::None;  ///< what else speaks against it
        std::optional<PairMemory> memory;  ///< with "pairMemory", when it knows the pair
    };

    /// A sensor track and a system track belong together from now on.
    struct Link {
        int systemTrackId = 0;                ///< the system track
        Source source = Source::VideoObject;  ///< source of the sensor track
        int sensorTrackId = 0;                ///< the sensor track
    };

    /// Why a sensor track has left.
    enum class PruningReason {
        Coasted,         ///< it has coasted for too long
        Refused,         ///< its report was refused
        PartnerRefused,  ///< the report of the radar track was ("radarKeepsSystemTrack")
        TakenOver,       ///< another track of its sensor has taken its place ("takeOver")
    };

    /// A sensor track has left a system track.
    struct Pruning {
        int systemTrackId = 0;                          ///< the system track
        Source source = Source::VideoObject;            ///< source of the sensor track
        int sensorTrackId = 0;                          ///< the sensor track
        double coastingTime = 0.0;                      ///< seconds without a report
        PruningReason reason = PruningReason::Coasted;  ///< why
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
    /// A sensor track that no system track took starts none, because it coasts
    /// ("freshReportsOnly"); told in every frame.
    /// @param source source of the sensor track
    /// @param sensorTrackId the sensor track
    /// @param coastingTime seconds without a detection
    virtual void onStartWithheld(Source source, int sensorTrackId, double coastingTime);
    /// @param systemTrackId a system track that was confirmed in this frame
    /// @param probability its track probability
    /// @param limit the limit that the probability has passed
    virtual void onConfirmation(int systemTrackId, double probability, double limit);
    /// @param pruning a sensor track that has left
    virtual void onPruning(const Pruning& pruning);
    /// @param systemTrackId the system track that has ended
    /// @param reason why
    virtual void onDeletion(int systemTrackId, DeletionReason reason);
    /// A system track is probable enough, but waits for radar ("videoRangeStd"); told in every
    /// frame.
    /// @param systemTrackId the system track
    /// @param rangeStd standard deviation of its range, m
    /// @param limit the limit that it is not below, m
    virtual void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit);
    /// Asked before every frame. An observer that says no is told of frames only, and costs nothing
    /// more than that.
    /// @return whether it wants to know what is decided; by default it does
    virtual bool wantsDecisions() const;
};

}  // namespace Veskar
