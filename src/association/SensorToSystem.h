// SPDX-License-Identifier: Apache-2.0
// System tracks (rows) against the sensor tracks of one source (columns).
#pragma once

#include <veskar/Config.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include "association/ClassTraits.h"
#include "association/FarPairs.h"
#include "association/Gate.h"
#include "association/Occupancy.h"
#include "association/SparseCosts.h"

#include <memory>
#include <unordered_set>
#include <vector>

namespace Veskar {

/// @param source the source of a sensor track
/// @return the source whose side of a system track its class is compared with
inline Source comparedSource(Source source) {
    return source == Source::Radar ? Source::VideoObject : Source::Radar;
}

/// One association problem: which pairs may be assigned, and at what cost. What belongs to a track
/// alone is found once, so that no pair costs a look-up.
class SensorToSystem {
public:
    using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;
    using SensorTracks = std::vector<std::shared_ptr<Track>>;

    /// @param moduleConfig says what may be shared and given up; must outlive this
    /// @param trackGate the gate; must outlive this
    SensorToSystem(const Config::ModuleConfig& moduleConfig, const Gate& trackGate)
        : config(moduleConfig), gate(trackGate) {}

    /// Starts a problem with what the sources have to say. The tracks must outlive it.
    ///
    /// @param systems the rows
    /// @param sensors the columns
    /// @param source source of all sensor tracks
    /// @throw std::out_of_range as TrackAssociator::isOccupied
    void start(const SystemTracks& systems, const SensorTracks& sensors, const Source& source);

    /// Finds out about classes and gates. Only then pairs can be asked about.
    void inspectTracks();

    /// @return whether the pair may be assigned as far as the sources have a say
    bool isCandidate(std::size_t row, std::size_t col) const {
        return rows[row].open && cols[col].available;
    }
    /// @return whether the classes agree or are not compared
    bool classesAgree(std::size_t row, std::size_t col) const {
        return !rows[row].compared() || rows[row].otherClass.agreesWith(cols[col].traits);
    }
    /// @return what the gate says of the pair; the distance only of one that passes
    GatingResult screen(std::size_t row, std::size_t col) const {
        return gate.screen(rows[row].side, cols[col].side);
    }

    /// Finds the pairs that may be assigned after the start of a problem.
    ///
    /// @param pairs receives them
    /// @param removedIds receives, with "removeClassMismatches", the ids of the sensor tracks that
    ///                   were given up inside a gate
    void findAllowedPairs(SparseCosts& pairs, std::unordered_set<int>& removedIds);

private:
    struct Row {
        const Track* track;
        const Track* other;      ///< the track that classes are compared with; may be null
        bool open;               ///< takes tracks of this source
        ClassTraits otherClass;  ///< class of `other`
        GateSide side;

        bool compared() const { return other != nullptr; }
    };
    struct Col {
        const Track* track;
        bool available;  ///< may go to a system track
        bool givenUp;    ///< was given up inside a gate
        ClassTraits traits;
        GateSide side;
    };

    static Row makeRow(const SystemTrack& track, Source source);
    void findAvailable(Source source);
    bool canGiveUp() const;
    void listCandidates();
    void fillRow(std::size_t row, SparseCosts& pairs);
    void enforceClasses(std::size_t row, SparseCosts& pairs);

    const Config::ModuleConfig& config;
    const Gate& gate;
    std::vector<Row> rows;
    std::vector<Col> cols;
    bool anyOpen = false;
    bool anyAvailable = false;
    std::vector<std::size_t> candidates;  ///< columns that may be assigned at all
    NearSearch candidateSearch;           ///< over `candidates`
    std::vector<int> insideOf;            ///< the last row whose gate a candidate was found in
    Occupancy occupancy;
};

}  // namespace Veskar
