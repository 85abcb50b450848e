// SPDX-License-Identifier: Apache-2.0
// System tracks (rows) against the sensor tracks of one source (columns).
#pragma once

#include <veskar/Config.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include "assignment/IntIndexed.h"
#include "assignment/SparseCosts.h"
#include "association/AssociationRules.h"
#include "association/HeldTracks.h"
#include "gating/ClassTraits.h"
#include "gating/Gate.h"
#include "gating/NearSearch.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace Veskar {

/// One association problem: which pairs may be assigned, and at what cost.
///
/// What belongs to a track alone is found once, and only where a pair asks for it: in most frames
/// nearly all sensor tracks are held already.
class SensorToSystem {
public:
    using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;
    using SensorTracks = std::vector<std::shared_ptr<Track>>;

    /// @param config says what may be shared and what mismatches do; must outlive this
    /// @param gate the gate; must outlive this
    /// @param rules open system tracks and may forbid pairs; must outlive this
    SensorToSystem(const Config::ModuleConfig& config, const Gate& gate,
                   const AssociationRules& rules)
        : config_(config), gate_(gate), rules_(rules) {}

    /// Starts a problem. The tracks must outlive it.
    ///
    /// @param systems the rows
    /// @param sensors the columns
    /// @param source source of all sensor tracks
    /// @throw std::out_of_range as TrackAssociator::isOccupied
    void start(const SystemTracks& systems, const SensorTracks& sensors, const Source& source);

    /// Finds the pairs that sources, held tracks and gate allow, whatever the classes.
    /// @param pairs receives them
    void findCandidates(SparseCosts& pairs);
    /// Finds the pairs that may be assigned.
    ///
    /// @param pairs receives them
    /// @param removedIds receives, with "removeClassMismatches", the ids of the sensor tracks that
    ///                   are mismatches
    void findAllowedPairs(SparseCosts& pairs, std::unordered_set<int>& removedIds);

    /// @return whether the classes agree or are not compared; known after findCandidates
    bool classesAgree(std::size_t row, std::size_t col) const {
        return agrees(rows_[row], cols_[col].traits);
    }

private:
    struct Row {
        const SystemTrack* track;
        const Track* other;      ///< the track that classes are compared with; may be null
        bool open;               ///< takes tracks of this source
        ClassTraits otherClass;  ///< class of `other`
    };
    struct Col {
        const Track* track;
        bool available;   ///< may go to an open row
        bool mismatched;  ///< of another class than a system track that has it inside its gate
        ClassTraits traits;
    };
    /// Some of the columns, as the gate sees them.
    struct GateCols {
        struct Entry {
            std::size_t col;
            GateSide side;
        };
        std::vector<Entry> entries;
        NearSearch search;
    };

    Row makeRow(const SystemTrack& track, Source source) const;
    static bool agrees(const Row& row, const ClassTraits& traits) {
        return row.other == nullptr || row.otherClass.agreesWith(traits);
    }
    void findAvailable(Source source);
    void inspectClasses();
    bool mayFindMismatches(const Row& row) const;
    void gather(bool available, GateCols& list);
    template <typename Visit>
    void visitInGate(const GateSide& side, const GateCols& list, Visit visit) const;
    template <typename Visit>
    void visitOthersInGate(const Row& row, const GateSide& side, bool agreeing, Visit visit);
    void fillRow(const Row& row, const GateSide& side, SparseCosts& pairs) const;
    void enforceClasses(const Row& row, const GateSide& side, SparseCosts& pairs);
    void findMismatches(const Row& row, const GateSide& side, const SparseCosts::Row& found);
    bool hasMatch(const Row& row, const GateSide& side, const SparseCosts::Row& found);

    const Config::ModuleConfig& config_;
    const Gate& gate_;
    const AssociationRules& rules_;
    std::vector<Row> rows_;
    IntIndexed<Col> cols_;
    bool hasCandidates_ = false;  ///< whether some row is open and some column available
    GateCols candidates_;         ///< the available columns
    GateCols held_;               ///< the others, which still count as matches
    bool heldGathered_ = false;
    Source source_ = Source::VideoObject;  ///< of the columns
    std::vector<std::size_t> mismatches_;  ///< columns inside the gate of the row at hand
    IntIndexed<std::size_t> groupSizes_;   ///< columns of each class group
    HeldTracks heldTracks_;
};

}  // namespace Veskar
