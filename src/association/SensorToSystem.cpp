// SPDX-License-Identifier: Apache-2.0
#include "association/SensorToSystem.h"

#include "association/ClassRule.h"
#include "track/Support.h"

#include <algorithm>

namespace Veskar {

void SensorToSystem::start(const SystemTracks& systems, const SensorTracks& sensors,
                           const Source& source) {
    source_ = source;
    rows_.clear();
    for (const auto& system : systems) {
        rows_.push_back(makeRow(dereference(system), source));
    }
    cols_.clear();
    for (const auto& sensor : sensors) {
        cols_.push_back({&dereference(sensor), false, false, {}});
    }
    hasCandidates_ = false;
    heldGathered_ = false;
    if (std::any_of(rows_.begin(), rows_.end(), [](const Row& row) { return row.open; })) {
        heldTracks_.start(systems);
        findAvailable(source);
    }
}

SensorToSystem::Row SensorToSystem::makeRow(const SystemTrack& track, Source source) const {
    if (source != Source::VideoObject && source != Source::Radar) {
        return {&track, nullptr, true, {}};
    }
    return {&track, firstTrack(track, comparedSource(source)), rules_.isOpen(track, source), {}};
}

void SensorToSystem::findAvailable(Source source) {
    const bool shared = source == Source::Radar && config_.allowRadarToMultiple;
    for (Col& col : cols_) {
        col.available = (!heldTracks_.holds(*col.track) || shared) && rules_.isFresh(*col.track);
        hasCandidates_ = hasCandidates_ || col.available;
    }
}

void SensorToSystem::findCandidates(SparseCosts& pairs) {
    pairs.clear();
    inspectClasses();
    gather(true, candidates_);
    for (const Row& row : rows_) {
        if (row.open) {
            fillRow(row, gate_.sideOf(*row.track), pairs);
        }
        pairs.endRows(1);
    }
}

void SensorToSystem::findAllowedPairs(SparseCosts& pairs, std::unordered_set<int>& removedIds) {
    pairs.clear();
    if (hasCandidates_ || config_.removeClassMismatches) {
        inspectClasses();
        gather(true, candidates_);
    }
    for (const Row& row : rows_) {
        const bool takes = row.open && hasCandidates_;
        if (takes || (config_.removeClassMismatches && mayFindMismatches(row))) {
            const GateSide side = gate_.sideOf(*row.track);
            if (takes) {
                fillRow(row, side, pairs);
            }
            enforceClasses(row, side, pairs);
        }
        pairs.endRows(1);
    }
    for (const Col& col : cols_) {
        if (col.mismatched) {
            removedIds.insert(col.track->id);
        }
    }
}

void SensorToSystem::inspectClasses() {
    for (Row& row : rows_) {
        if (row.other != nullptr) {
            row.otherClass = classTraitsOf(*row.other);
        }
    }
    groupSizes_.assign(ClassTraits::groupCount(), 0);
    for (Col& col : cols_) {
        col.traits = classTraitsOf(*col.track);
        if (col.traits.group != ClassTraits::noGroup) {
            ++groupSizes_[col.traits.group];
        }
    }
}

/// Whether there are columns of a row's class group and others: without both none mismatches.
bool SensorToSystem::mayFindMismatches(const Row& row) const {
    if (row.other == nullptr || row.otherClass.group == ClassTraits::noGroup) {
        return false;
    }
    const std::size_t matches = groupSizes_[row.otherClass.group];
    return matches > 0 && matches < cols_.size();
}

/// Lists the columns that can lie inside a gate.
void SensorToSystem::gather(bool available, GateCols& list) {
    list.entries.clear();
    for (std::size_t j = 0; j < cols_.size(); ++j) {
        const Col& col = cols_[j];
        if (col.available == available && col.traits.supported) {
            list.entries.push_back({j, gate_.sideOf(*col.track, col.traits)});
        }
    }
    list.search.assign(list.entries.size(), [&list](std::size_t k) -> const Marginals& {
        return list.entries[k].side.marginals;
    });
}

template <typename Visit>
void SensorToSystem::visitInGate(const GateSide& side, const GateCols& list, Visit visit) const {
    if (!side.supported) {
        return;
    }
    list.search.forEachNear(side.marginals, [&](std::size_t k) {
        const Gate::Cost cost = gate_.costInside(side, list.entries[k].side);
        if (cost.passed) {
            visit(list.entries[k].col, cost.value);
        }
    });
}

void SensorToSystem::fillRow(const Row& row, const GateSide& side, SparseCosts& pairs) const {
    visitInGate(side, candidates_, [&](std::size_t col, double cost) {
        if (rules_.mayReplaceHeld(*row.track, *cols_[col].track)) {
            pairs.add(col, cost);
        }
    });
}

void SensorToSystem::enforceClasses(const Row& row, const GateSide& side, SparseCosts& pairs) {
    if (row.other == nullptr) {
        return;
    }
    findMismatches(row, side, pairs.openRow());
    if (mismatches_.empty()) {
        return;  // whether there is a match does not matter
    }
    applyClassRule(
        config_.removeClassMismatches, [&] { return hasMatch(row, side, pairs.openRow()); },
        [&] { pairs.dropIf([&](int col) { return !agrees(row, cols_[col].traits); }); },
        [&] {
            for (const std::size_t col : mismatches_) {
                cols_[col].mismatched = true;
            }
        });
}

/// Gathers the columns of other classes inside the gate: those that the row may take, and with
/// "removeClassMismatches" all others too.
void SensorToSystem::findMismatches(const Row& row, const GateSide& side,
                                    const SparseCosts::Row& found) {
    mismatches_.clear();
    for (const SparseCosts::Cell& cell : found) {
        if (!agrees(row, cols_[cell.col].traits)) {
            mismatches_.push_back(static_cast<std::size_t>(cell.col));
        }
    }
    if (config_.removeClassMismatches) {
        visitOthersInGate(row, side, false,
                          [this](std::size_t col) { mismatches_.push_back(col); });
    }
}

bool SensorToSystem::hasMatch(const Row& row, const GateSide& side, const SparseCosts::Row& found) {
    bool match = std::any_of(found.begin(), found.end(), [&](const SparseCosts::Cell& cell) {
        return agrees(row, cols_[cell.col].traits);
    });
    if (!match) {
        visitOthersInGate(row, side, true, [&match](std::size_t /*col*/) { match = true; });
    }
    return match;
}

/// Visits the columns inside the gate that the row may not take; the class rule asks for them too.
template <typename Visit>
void SensorToSystem::visitOthersInGate(const Row& row, const GateSide& side, bool agreeing,
                                       Visit visit) {
    const auto visitAgreeing = [&](std::size_t col, double /*cost*/) {
        if (agrees(row, cols_[col].traits) == agreeing) {
            visit(col);
        }
    };
    if (!heldGathered_) {
        heldGathered_ = true;
        gather(false, held_);
    }
    visitInGate(side, held_, visitAgreeing);
    if (!row.open) {
        visitInGate(side, candidates_, visitAgreeing);
    } else if (row.track->hasTracks(source_)) {
        visitInGate(side, candidates_, [&](std::size_t col, double cost) {
            if (!rules_.mayReplaceHeld(*row.track, *cols_[col].track)) {
                visitAgreeing(col, cost);
            }
        });
    }
}

}  // namespace Veskar
