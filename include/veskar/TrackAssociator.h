// SPDX-License-Identifier: Apache-2.0
// Decides which sensor track belongs to which system track.
#pragma once

#include <veskar/Config.h>
#include <veskar/Export.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include <cstddef>
#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Veskar {

class AssociationRules;

/// What the gate says about a pair of tracks.
struct GatingResult {
    double distance;  ///< gate distance, without unit; 9999.0 when a class is not supported
    bool passed;      ///< whether the pair lies inside the gate
};

/// Gating, cost matrices and assignment.
///
/// Matrices have one row per system track and one column per sensor track (or second system track),
/// in the order of the input vectors. A pair that must not be assigned has the forbidden cost
/// 9999.0. An association call keeps its result until the next one; working memory is kept too, so
/// that a warm call does not allocate. Null pointers in the inputs are programming errors and stop
/// the process. Not thread-safe.
///
/// The optional rules of the configuration (Config::Rules) also decide who may be paired. Those
/// that remember the sensors ("pairMemory", "takeOver") learn from the frames of a FusionModule,
/// which has an associator of its own. An associator that stands alone has seen no frame: with
/// "pairMemory" it merges nothing, and with "takeOver" it takes every two tracks of a sensor for
/// one object; leave both off there.
class VESKAR_EXPORT TrackAssociator {
public:
    /// Pairs of indices: (system track, sensor track) or (system track, system track).
    using Associations = std::vector<std::pair<int, int>>;

    /// @param config copied
    explicit TrackAssociator(const Config& config);
    ~TrackAssociator();
    TrackAssociator(const TrackAssociator&) = delete;
    TrackAssociator& operator=(const TrackAssociator&) = delete;
    /// Takes over configuration, result and working memory.
    TrackAssociator(TrackAssociator&&) noexcept;
    /// Takes over configuration, result and working memory.
    /// @return this associator
    TrackAssociator& operator=(TrackAssociator&&) noexcept;

    /// The statistical gate of a pair: the Mahalanobis distance of the whole states, or with
    /// "splitGating" the one of the positions together with the similarity of the velocities; then
    /// also vetoes a radar that sees speed where video sees a large, old object stand still.
    ///
    /// Every limit is strict; a NaN distance fails.
    ///
    /// @param systemTrack the fused track (any track may stand here)
    /// @param sensorTrack the candidate
    /// @return distance and verdict
    GatingResult checkGating(const Track& systemTrack, const Track& sensorTrack);

    /// @param track any track
    /// @return whether its class is one that fusion supports
    bool isSupportedClass(const Track& track) const;

    /// Whether a sensor track and the other sensor's side of a system track are of one class group.
    ///
    /// @param systemTrack the system track; its first radar track counts when @p source is a video
    ///                    source, its first video-object track when it is Radar
    /// @param track the sensor track
    /// @param source source of @p track
    /// @return false when the groups differ, when a class has no group and when the other side has
    ///         no track, which is logged at error priority
    bool haveMatchingClasses(const SystemTrack& systemTrack, const Track& track,
                             const Source& source) const;

    /// @param track a sensor track
    /// @param systemTracks system tracks
    /// @return whether one of them holds a track of that source and id
    /// @throw std::out_of_range when a system track has no map for the source
    bool isOccupied(const Track& track,
                    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) const;

    /// Appends one row per system track to each output.
    ///
    /// @param sensorTracks tracks of one source
    /// @param systemTracks system tracks
    /// @param cost pair costs
    /// @param allowed whether a pair may be assigned
    /// @param classMatch 1 when the classes agree or were not compared, otherwise 0
    /// @param source source of all sensor tracks
    void sensorToSystemCostMatrix(const std::vector<std::shared_ptr<Track>>& sensorTracks,
                                  const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                                  std::vector<std::vector<double>>& cost,
                                  std::vector<std::vector<bool>>& allowed,
                                  std::vector<std::vector<int>>& classMatch, const Source& source);

    /// Appends a square matrix over system tracks that may describe one object: the row is the
    /// older track, the column the younger, and both bring different sources.
    ///
    /// @param systemTracks system tracks
    /// @param cost pair costs
    /// @param allowed whether a pair may be assigned
    /// @param excludedIds ids of system tracks to leave out
    void systemToSystemCostMatrix(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                                  std::vector<std::vector<double>>& cost,
                                  std::vector<std::vector<bool>>& allowed,
                                  const std::unordered_set<int>& excludedIds);

    /// Forbids the class-mismatched pairs of every system track that has a class-matching candidate
    /// inside its gate.
    ///
    /// @param sensorTracks tracks of one source
    /// @param systemTracks system tracks
    /// @param cost pair costs, edited
    /// @param allowed whether a pair may be assigned, edited
    /// @param classMatch class verdicts
    /// @param mismatches receives, with "removeClassMismatches", the indices of the mismatched
    ///                   sensor tracks inside a gate
    void handleClassMatching(const std::vector<std::shared_ptr<Track>>& sensorTracks,
                             const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                             std::vector<std::vector<double>>& cost,
                             std::vector<std::vector<bool>>& allowed,
                             const std::vector<std::vector<int>>& classMatch,
                             std::unordered_set<int>& mismatches);

    /// Solves the assignment problem optimally and appends the allowed pairs to the result in
    /// ascending row order (Jonker, Volgenant: "A shortest augmenting path algorithm for dense and
    /// sparse linear assignment problems", Computing 38, 1987).
    ///
    /// @param rows rows of @p cost that count
    /// @param cols columns of @p cost that count
    /// @param cost pair costs; a cost that is not finite counts as forbidden
    /// @param allowed whether a pair may be assigned
    /// @throw std::out_of_range when @p cost has no rows or @p allowed is too small
    /// @throw std::runtime_error "One of the JVA costMatrix dimensions was too big (>512)"
    void runJVA(int rows, int cols, std::vector<std::vector<double>>& cost,
                std::vector<std::vector<bool>>& allowed);

    /// Associates the sensor tracks of one source with the system tracks, optimally or greedily as
    /// "useJVA" says.
    ///
    /// @param sensorTracks tracks of one source
    /// @param systemTracks system tracks
    /// @param source source of all sensor tracks
    /// @param removedIds receives the ids of class-mismatched sensor tracks (optimal path only)
    /// @return pairs (system index, sensor index), valid until the next association
    /// @throw std::out_of_range on the optimal path without system tracks
    /// @throw std::runtime_error as runJVA; the result is then empty
    const Associations& sensorToSystemAssociation(
        const std::vector<std::shared_ptr<Track>>& sensorTracks,
        const std::vector<std::shared_ptr<SystemTrack>>& systemTracks, const Source& source,
        std::unordered_set<int>& removedIds);

    /// The greedy path of sensorToSystemAssociation: earlier sensor tracks choose first. Appends to
    /// the result.
    ///
    /// @param sensorTracks tracks of one source
    /// @param systemTracks system tracks
    /// @param source source of all sensor tracks
    void runBasicSensorToSystem(const std::vector<std::shared_ptr<Track>>& sensorTracks,
                                const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                                const Source& source);

    /// Finds pairs of system tracks that describe one object.
    ///
    /// @param systemTracks system tracks
    /// @param excludedIds ids of system tracks to leave out
    /// @return index pairs, valid until the next association: on the optimal path each pair once
    ///         in ascending cost, on the greedy path in both orientations
    /// @throw std::out_of_range on the optimal path without system tracks
    /// @throw std::runtime_error as runJVA
    const Associations& systemToSystemAssociation(
        const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
        const std::unordered_set<int>& excludedIds);

    /// The greedy path of systemToSystemAssociation: pairs a radar-only track with an older
    /// video-only one. Appends to the result.
    ///
    /// @param systemTracks system tracks
    /// @param excludedIds ids of system tracks to leave out
    void runBasicSystemToSystem(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                                const std::unordered_set<int>& excludedIds);

    /// @return the result of the last association
    const Associations& getAssociations() const;

private:
    struct Workspace;
    friend class FusionModule;  // shares the rules

    AssociationRules& rules();
    void assignAllowedPairs(std::size_t cols);
    void shareRadarTracks();
    void keepCheapestPairs();

    Associations associations_;
    std::unique_ptr<Workspace> workspace_;
};

}  // namespace Veskar
