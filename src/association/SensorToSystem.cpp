// SPDX-License-Identifier: Apache-2.0
#include "association/SensorToSystem.h"

#include "association/ClassRule.h"
#include "track/FirstTrack.h"

#include <algorithm>

namespace Veskar {

void SensorToSystem::start(const SystemTracks& systems, const SensorTracks& sensors,
                           const Source& source) {
    rows.clear();
    anyOpen = false;
    for (const auto& system : systems) {
        rows.push_back(makeRow(*system, source));
        anyOpen = anyOpen || rows.back().open;
    }
    cols.clear();
    for (const auto& sensor : sensors) {
        const Track& track = *sensor;
        cols.push_back({&track, false, false, {}, {}});
    }
    anyAvailable = false;
    if (anyOpen) {
        occupancy.start(systems);
        findAvailable(source);
    }
}

SensorToSystem::Row SensorToSystem::makeRow(const SystemTrack& track, Source source) {
    Row row = {};
    row.track = &track;
    row.open = true;
    if (source == Source::VideoObject || source == Source::Radar) {
        row.other = firstTrack(track, comparedSource(source));
        row.open = !track.hasTracks(source);
    }
    return row;
}

void SensorToSystem::findAvailable(Source source) {
    const bool shared = source == Source::Radar && config.allowRadarToMultiple;
    for (Col& col : cols) {
        const bool held = occupancy.holds(*col.track);
        col.available = !held || shared;
        anyAvailable = anyAvailable || col.available;
    }
}

void SensorToSystem::inspectTracks() {
    for (Row& row : rows) {
        if (row.compared()) {
            row.otherClass = classTraitsOf(*row.other);
        }
        row.side = gate.sideOf(*row.track, classTraitsOf(*row.track).supported);
    }
    for (Col& col : cols) {
        col.traits = classTraitsOf(*col.track);
        col.side = gate.sideOf(*col.track, col.traits.supported);
    }
}

void SensorToSystem::findAllowedPairs(SparseCosts& pairs, std::unordered_set<int>& removedIds) {
    pairs.clear();
    if (!(anyOpen && anyAvailable) && !canGiveUp()) {
        pairs.endRows(rows.size());
        return;
    }
    inspectTracks();
    listCandidates();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].side.supported) {
            fillRow(i, pairs);
            enforceClasses(i, pairs);
        }
        pairs.endRows(1);
    }
    for (const Col& col : cols) {
        if (col.givenUp) {
            removedIds.insert(col.track->id);
        }
    }
}

/// Whether tracks could have to be reported even when no pair can be assigned.
bool SensorToSystem::canGiveUp() const {
    return config.removeClassMismatches && cols.size() > 1 &&
           std::any_of(rows.begin(), rows.end(), [](const Row& row) { return row.compared(); });
}

void SensorToSystem::listCandidates() {
    candidates.clear();
    candidateSearch.clear();
    insideOf.assign(cols.size(), -1);
    for (std::size_t j = 0; j < cols.size(); ++j) {
        if (cols[j].available && cols[j].side.supported) {
            candidates.push_back(j);
            candidateSearch.add(cols[j].side.marginals);
        }
    }
}

void SensorToSystem::fillRow(std::size_t row, SparseCosts& pairs) {
    if (!rows[row].open) {
        return;
    }
    candidateSearch.forEachNear(rows[row].side.marginals, [&](std::size_t k) {
        const std::size_t col = candidates[k];
        const GatingResult result = screen(row, col);
        if (result.passed) {
            pairs.add(col, result.distance);
            insideOf[col] = static_cast<int>(row);
        }
    });
}

/// Drops the pairs that the system track gives up, and marks what was inside its gate.
void SensorToSystem::enforceClasses(std::size_t row, SparseCosts& pairs) {
    if (!rows[row].compared()) {
        return;
    }
    const auto agrees = [this, row](std::size_t col) { return classesAgree(row, col); };
    const auto inGate = [this, row](std::size_t col) {
        return isCandidate(row, col) ? insideOf[col] == static_cast<int>(row)
                                     : screen(row, col).passed;
    };
    bool matter = false;
    if (config.removeClassMismatches) {
        for (std::size_t j = 0; j < cols.size() && !matter; ++j) {
            matter = !agrees(j) && inGate(j);
        }
    } else {
        const SparseCosts::Row found = pairs.openRow();
        matter = std::any_of(found.begin(), found.end(), [&](const auto& cell) {
            return !agrees(static_cast<std::size_t>(cell.col));
        });
    }
    if (!matter) {
        return;
    }
    bool givesUp = false;
    giveUpMismatches(cols.size(), agrees, inGate, [&](std::size_t col) {
        givesUp = true;
        cols[col].givenUp = cols[col].givenUp || (config.removeClassMismatches && inGate(col));
    });
    if (givesUp) {
        pairs.dropIf([&](int col) { return !agrees(static_cast<std::size_t>(col)); });
    }
}

}  // namespace Veskar
