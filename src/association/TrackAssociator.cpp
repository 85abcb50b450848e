// SPDX-License-Identifier: Apache-2.0
#include <veskar/TrackAssociator.h>

#include "assignment/AssignmentSolver.h"
#include "assignment/IntIndexed.h"
#include "assignment/SparseCosts.h"
#include "association/AssociationRules.h"
#include "association/ClassRule.h"
#include "association/NearestSensorToSystem.h"
#include "association/SensorToSystem.h"
#include "association/SystemToSystem.h"
#include "gating/ClassTraits.h"
#include "gating/Gate.h"
#include "track/Dereference.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <syslog.h>

namespace Veskar {
namespace {

/// Throws std::out_of_range when there is no system track, as reading the first row of a cost
/// matrix without rows would.
void refuseEmpty(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) {
    (void)systemTracks.at(0);
}

/// Writes pairs out as matrices, row by row.
void appendMatrices(const SparseCosts& pairs, std::size_t cols,
                    std::vector<std::vector<double>>& cost,
                    std::vector<std::vector<bool>>& allowed) {
    for (std::size_t i = 0; i < pairs.rowCount(); ++i) {
        cost.emplace_back(cols, forbiddenCost);
        allowed.emplace_back(cols, false);
        for (const SparseCosts::Cell& cell : pairs.row(i)) {
            const auto col = static_cast<std::size_t>(cell.col);
            cost.back()[col] = cell.cost;
            allowed.back()[col] = true;
        }
    }
}

}  // namespace

struct TrackAssociator::Workspace {
    struct RankedPair {
        double cost;
        std::pair<int, int> pair;
    };

    explicit Workspace(const Config& given) : config(given) {}

    const Config config;
    const Config::ModuleConfig& module = config.module;
    Gate gate{config};
    AssociationRules rules{config};
    SensorToSystem sensorToSystem{module, gate, rules};
    NearestSensorToSystem nearestSensorToSystem{module, gate, rules};
    SystemToSystem systemToSystem{gate, rules};
    AssignmentSolver solver;
    SparseCosts pairs;                ///< what may be assigned
    std::vector<RankedPair> ranking;  ///< pairs of system tracks, cheapest first
    IntIndexed<char> used;            ///< system tracks that a cheaper pair has
};

TrackAssociator::TrackAssociator(const Config& config)
    : workspace_(std::make_unique<Workspace>(config)) {}

TrackAssociator::~TrackAssociator() = default;
TrackAssociator::TrackAssociator(TrackAssociator&&) noexcept = default;
TrackAssociator& TrackAssociator::operator=(TrackAssociator&&) noexcept = default;

AssociationRules& TrackAssociator::rules() {
    return workspace_->rules;
}

GatingResult TrackAssociator::checkGating(const Track& systemTrack, const Track& sensorTrack) {
    const Gate& gate = workspace_->gate;
    const Gate::Outcome outcome =
        gate.evaluate(gate.factsOf(systemTrack), gate.factsOf(sensorTrack));
    const bool measured = outcome.verdict != Gate::Verdict::ClassNotSupported;
    return {measured ? gate.costOf(outcome) : forbiddenCost, outcome.passed()};
}

bool TrackAssociator::isSupportedClass(const Track& track) const {
    return classTraitsOf(track).supported;
}

bool TrackAssociator::haveMatchingClasses(const SystemTrack& systemTrack, const Track& track,
                                          const Source& source) const {
    const std::optional<bool> agree = classesAgree(systemTrack, track, source);
    if (!agree) {
        syslog(LOG_ERR, "System track did not have sensor track from sensor %d\n", source);
    }
    return agree.value_or(false);
}

bool TrackAssociator::isOccupied(
    const Track& track, const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) const {
    return std::any_of(systemTracks.begin(), systemTracks.end(), [&track](const auto& pointer) {
        return dereference(pointer).getSensorTracks(track.source).count(track.id) != 0;
    });
}

void TrackAssociator::sensorToSystemCostMatrix(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    std::vector<std::vector<double>>& cost, std::vector<std::vector<bool>>& allowed,
    std::vector<std::vector<int>>& classMatch, const Source& source) {
    SensorToSystem& problem = workspace_->sensorToSystem;
    problem.start(systemTracks, sensorTracks, source);
    problem.findCandidates(workspace_->pairs);
    appendMatrices(workspace_->pairs, sensorTracks.size(), cost, allowed);
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        classMatch.emplace_back(sensorTracks.size());
        for (std::size_t j = 0; j < sensorTracks.size(); ++j) {
            classMatch.back()[j] = problem.classesAgree(i, j) ? 1 : 0;
        }
    }
}

void TrackAssociator::systemToSystemCostMatrix(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    std::vector<std::vector<double>>& cost, std::vector<std::vector<bool>>& allowed,
    const std::unordered_set<int>& excludedIds) {
    workspace_->systemToSystem.findAllowedPairs(systemTracks, excludedIds, workspace_->pairs);
    appendMatrices(workspace_->pairs, systemTracks.size(), cost, allowed);
}

void TrackAssociator::handleClassMatching(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    std::vector<std::vector<double>>& cost, std::vector<std::vector<bool>>& allowed,
    const std::vector<std::vector<int>>& classMatch, std::unordered_set<int>& mismatches) {
    for (std::size_t i = 0; i < cost.size(); ++i) {
        const std::size_t cols = cost[i].size();
        const auto inGate = [&, i](std::size_t j) {
            return checkGating(dereference(systemTracks.at(i)), dereference(sensorTracks.at(j)))
                .passed;
        };
        const auto hasMatch = [&] {
            std::size_t match = 0;
            while (match < cols && !(classMatch.at(i).at(match) == 1 && inGate(match))) {
                ++match;
            }
            return match < cols;
        };
        const auto forEachOther = [&](auto visit) {
            for (std::size_t j = 0; j < cols; ++j) {
                if (classMatch.at(i).at(j) == 0) {
                    visit(j);
                }
            }
        };
        const auto forbid = [&](std::size_t j) {
            allowed.at(i).at(j) = false;
            cost[i][j] = forbiddenCost;
        };
        const auto reportInGate = [&](std::size_t j) {
            if (inGate(j)) {
                mismatches.insert(static_cast<int>(j));
            }
        };
        applyClassRule(
            workspace_->module.removeClassMismatches, hasMatch, [&] { forEachOther(forbid); },
            [&] { forEachOther(reportInGate); });
    }
}

void TrackAssociator::runJVA(int rows, int cols, std::vector<std::vector<double>>& cost,
                             std::vector<std::vector<bool>>& allowed) {
    AssignmentSolver::refuseTooBig(std::max(cost.size(), cost.at(0).size()));
    if (rows <= 0 || cols <= 0) {
        return;
    }
    const int* columnOf =
        workspace_->solver
            .solve(cost, allowed, static_cast<std::size_t>(rows), static_cast<std::size_t>(cols))
            .data();
    for (int i = 0; i < rows; ++i) {
        const auto row = static_cast<std::size_t>(i);
        const int j = columnOf[row];
        if (j >= 0 && j < cols && allowed.at(row).at(static_cast<std::size_t>(j))) {
            associations_.emplace_back(i, j);
        }
    }
}

const TrackAssociator::Associations& TrackAssociator::sensorToSystemAssociation(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks, const Source& source,
    std::unordered_set<int>& removedIds) {
    associations_.clear();
    if (!workspace_->module.useJVA) {
        runBasicSensorToSystem(sensorTracks, systemTracks, source);
        return associations_;
    }
    refuseEmpty(systemTracks);
    workspace_->sensorToSystem.start(systemTracks, sensorTracks, source);
    workspace_->sensorToSystem.findAllowedPairs(workspace_->pairs, removedIds);
    assignAllowedPairs(sensorTracks.size());
    if (workspace_->module.allowRadarToMultiple && source == Source::Radar) {
        shareRadarTracks();
    }
    return associations_;
}

/// Appends the allowed pairs of the cheapest assignment, in ascending row order.
void TrackAssociator::assignAllowedPairs(std::size_t cols) {
    const SparseCosts& pairs = workspace_->pairs;
    AssignmentSolver::refuseTooBig(std::max(pairs.rowCount(), cols));
    if (pairs.cellCount() == 0) {
        return;
    }
    const std::vector<int>& columnOf = workspace_->solver.solve(pairs, cols);
    for (std::size_t i = 0; i < pairs.rowCount(); ++i) {
        if (pairs.find(i, columnOf[i]) != nullptr) {
            associations_.emplace_back(i, columnOf[i]);
        }
    }
}

/// Lets every system track that got no radar track take the first one that is allowed, too.
void TrackAssociator::shareRadarTracks() {
    const SparseCosts& pairs = workspace_->pairs;
    const std::size_t solved = associations_.size();
    std::size_t next = 0;
    for (std::size_t i = 0; i < pairs.rowCount(); ++i) {
        const int row = static_cast<int>(i);
        if (next < solved && associations_[next].first == row) {
            ++next;
        } else if (!pairs.row(i).empty()) {
            associations_.emplace_back(row, pairs.row(i).begin()->col);
        }
    }
    std::sort(associations_.begin(), associations_.end());
}

void TrackAssociator::runBasicSensorToSystem(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks, const Source& source) {
    workspace_->nearestSensorToSystem.associate(sensorTracks, systemTracks, source, associations_);
}

const TrackAssociator::Associations& TrackAssociator::systemToSystemAssociation(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    const std::unordered_set<int>& excludedIds) {
    associations_.clear();
    if (!workspace_->module.useJVA) {
        runBasicSystemToSystem(systemTracks, excludedIds);
        return associations_;
    }
    refuseEmpty(systemTracks);
    AssignmentSolver::refuseTooBig(systemTracks.size());
    workspace_->systemToSystem.findAllowedPairs(systemTracks, excludedIds, workspace_->pairs);
    assignAllowedPairs(systemTracks.size());
    keepCheapestPairs();
    return associations_;
}

/// Orders the pairs by cost and keeps those whose tracks no cheaper pair has. Of pairs with exactly
/// the same cost only the last one counts.
void TrackAssociator::keepCheapestPairs() {
    auto& ranking = workspace_->ranking;
    ranking.clear();
    for (const auto& pair : associations_) {
        const double cost =
            workspace_->pairs.find(static_cast<std::size_t>(pair.first), pair.second)->cost;
        ranking.push_back({std::isfinite(cost) ? cost : forbiddenCost, pair});
    }
    std::sort(ranking.begin(), ranking.end(), [](const auto& a, const auto& b) {
        return a.cost < b.cost || (a.cost == b.cost && a.pair < b.pair);
    });
    IntIndexed<char>& used = workspace_->used;
    used.assign(workspace_->pairs.rowCount(), 0);
    associations_.clear();
    for (std::size_t k = 0; k < ranking.size(); ++k) {
        const auto [row, col] = ranking[k].pair;
        const bool replaced = k + 1 < ranking.size() && ranking[k + 1].cost == ranking[k].cost;
        if (!replaced && used[row] == 0 && used[col] == 0) {
            used[row] = 1;
            used[col] = 1;
            associations_.emplace_back(row, col);
        }
    }
}

void TrackAssociator::runBasicSystemToSystem(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    const std::unordered_set<int>& excludedIds) {
    workspace_->systemToSystem.pairNearest(systemTracks, excludedIds, associations_);
}

const TrackAssociator::Associations& TrackAssociator::getAssociations() const {
    return associations_;
}

}  // namespace Veskar
