// SPDX-License-Identifier: Apache-2.0
#include "association/SensorToSystem.h"

#include "association/ClassRule.h"
#include "track/FirstTrack.h"

#include <algorithm>

namespace Veskar {

void SensorToSystem::start(const SystemTracks& systems, const SensorTracks& sensors,
                           const Source& source) {
    rows.clear();
    for (const auto& system : systems) {
        rows.push_back(makeRow(*system, source));
    }
    cols.clear();
    for (const auto& sensor : sensors) {
        cols.push_back(makeCol(*sensor));
    }
    findAvailable(systems, sensors, source);
}

SensorToSystem::Row SensorToSystem::makeRow(const SystemTrack& track, Source source) const {
    Row row = {};
    row.open =
        !((source == Source::VideoObject || source == Source::Radar) && track.hasTracks(source));
    const Track* other = source == Source::VideoObject || source == Source::Radar
                             ? firstTrack(track, comparedSource(source))
                             : nullptr;
    row.compared = other != nullptr;
    if (row.compared) {
        row.otherSide = classTraitsOf(*other);
    }
    row.gateFacts = gate.factsOf(track, classTraitsOf(track).supported);
    return row;
}

SensorToSystem::Col SensorToSystem::makeCol(const Track& track) const {
    Col col = {};
    col.traits = classTraitsOf(track);
    col.gateFacts = gate.factsOf(track, col.traits.supported);
    return col;
}

/// Who is held counts only where a row is open.
void SensorToSystem::findAvailable(const SystemTracks& systems, const SensorTracks& sensors,
                                   Source source) {
    if (std::none_of(rows.begin(), rows.end(), [](const Row& row) { return row.open; })) {
        return;
    }
    const bool shared = source == Source::Radar && config.allowRadarToMultiple;
    occupancy.start(systems);
    for (std::size_t j = 0; j < cols.size(); ++j) {
        const bool held = occupancy.holds(*sensors[j]);
        cols[j].available = !held || shared;
    }
}

void SensorToSystem::findAllowedPairs(SparseCosts& pairs, std::unordered_set<int>& removedIds) {
    pairs.clear();
    insideOf.assign(cols.size(), -1);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        fillRow(i, pairs);
        pairs.endRow();
    }
    for (const Col& col : cols) {
        if (col.givenUp) {
            removedIds.insert(col.gateFacts.track->id);
        }
    }
}

void SensorToSystem::fillRow(std::size_t row, SparseCosts& pairs) {
    for (std::size_t j = 0; j < cols.size(); ++j) {
        if (isCandidate(row, j)) {
            const GatingResult result = evaluateGate(row, j);
            if (result.passed) {
                pairs.add(j, result.distance);
                insideOf[j] = static_cast<int>(row);
            }
        }
    }
    const auto agrees = [this, row](std::size_t j) { return classesAgree(row, j); };
    const auto inGate = [this, row](std::size_t j) {
        return isCandidate(row, j) ? insideOf[j] == static_cast<int>(row)
                                   : evaluateGate(row, j).passed;
    };
    const SparseCosts::Row found = pairs.openRow();
    const bool mismatched = std::any_of(found.begin(), found.end(), [&](const auto& cell) {
        return !agrees(static_cast<std::size_t>(cell.col));
    });
    if (!rows[row].compared || !(mismatched || config.removeClassMismatches)) {
        return;
    }
    bool matched = false;
    giveUpMismatches(cols.size(), agrees, inGate, [&](std::size_t j) {
        matched = true;
        cols[j].givenUp = cols[j].givenUp || (config.removeClassMismatches && inGate(j));
    });
    if (matched) {
        pairs.dropIf([&](int col) { return !agrees(static_cast<std::size_t>(col)); });
    }
}

}  // namespace Veskar
