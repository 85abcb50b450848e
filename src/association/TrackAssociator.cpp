// SPDX-License-Identifier: Apache-2.0
#include <veskar/TrackAssociator.h>

#include "association/AssignmentSolver.h"
#include "association/ClassRule.h"
#include "association/ClassTraits.h"
#include "association/Gate.h"
#include "association/SensorToSystem.h"
#include "association/SparseCosts.h"
#include "association/SystemToSystem.h"
#include "track/FirstTrack.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <syslog.h>

namespace Veskar {
namespace {

/// A problem without rows is answered like a look at its first row.
void refuseEmpty(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) {
    (void)systemTracks.at(0);
}

}  // namespace

struct TrackAssociator::Workspace {
    explicit Workspace(const Config& config)
        : module(config.module), gate(module, config.detectionPriority.vodHeightFractionLimit) {}

    Config::ModuleConfig module;
    Gate gate;
    SensorToSystem sensorToSystem{module, gate};
    SystemToSystem systemToSystem{gate};
    Occupancy occupancy;
    SparseCosts pairs;
    AssignmentSolver solver;
    struct RankedPair {
        double cost;
        std::pair<int, int> pair;
    };
    std::vector<RankedPair> ranking;
    std::vector<char> used;
};

TrackAssociator::TrackAssociator(const Config& config)
    : workspace(std::make_unique<Workspace>(config)) {}

TrackAssociator::~TrackAssociator() = default;
TrackAssociator::TrackAssociator(TrackAssociator&&) noexcept = default;
TrackAssociator& TrackAssociator::operator=(TrackAssociator&&) noexcept = default;

GatingResult TrackAssociator::checkGating(const Track& systemTrack, const Track& sensorTrack) {
    const Gate& gate = workspace->gate;
    return gate.evaluate(gate.factsOf(systemTrack, isSupportedClass(systemTrack)),
                         gate.factsOf(sensorTrack, isSupportedClass(sensorTrack)));
}

bool TrackAssociator::isSupportedClass(const Track& track) const {
    return classTraitsOf(track).supported;
}

bool TrackAssociator::haveMatchingClasses(const SystemTrack& systemTrack, const Track& track,
                                          const Source& source) const {
    const Track* other = firstTrack(systemTrack, comparedSource(source));
    if (other == nullptr) {
        syslog(LOG_ERR, "System track did not have sensor track from sensor %d\n", source);
        return false;
    }
    return classTraitsOf(*other).agreesWith(classTraitsOf(track));
}

bool TrackAssociator::isOccupied(
    const Track& track, const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) const {
    return std::any_of(systemTracks.begin(), systemTracks.end(), [&track](const auto& system) {
        return system->getSensorTracks(track.source).count(track.id) != 0;
    });
}

void TrackAssociator::sensorToSystemCostMatrix(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    std::vector<std::vector<double>>& cost, std::vector<std::vector<bool>>& allowed,
    std::vector<std::vector<int>>& classMatch, const Source& source) {
    SensorToSystem& problem = workspace->sensorToSystem;
    problem.start(systemTracks, sensorTracks, source);
    problem.inspectTracks();
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        cost.emplace_back(sensorTracks.size(), forbiddenCost);
        allowed.emplace_back(sensorTracks.size(), false);
        classMatch.emplace_back(sensorTracks.size(), 1);
        for (std::size_t j = 0; j < sensorTracks.size(); ++j) {
            classMatch.back()[j] = problem.classesAgree(i, j) ? 1 : 0;
            if (problem.isCandidate(i, j)) {
                const GatingResult result = problem.screen(i, j);
                if (result.passed) {
                    cost.back()[j] = result.distance;
                    allowed.back()[j] = true;
                }
            }
        }
    }
}

void TrackAssociator::systemToSystemCostMatrix(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    std::vector<std::vector<double>>& cost, std::vector<std::vector<bool>>& allowed,
    const std::unordered_set<int>& excludedIds) {
    workspace->systemToSystem.findAllowedPairs(systemTracks, excludedIds, workspace->pairs);
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        cost.emplace_back(systemTracks.size(), forbiddenCost);
        allowed.emplace_back(systemTracks.size(), false);
        for (const SparseCosts::Cell& cell : workspace->pairs.row(i)) {
            cost.back()[static_cast<std::size_t>(cell.col)] = cell.cost;
            allowed.back()[static_cast<std::size_t>(cell.col)] = true;
        }
    }
}

void TrackAssociator::handleClassMatching(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    std::vector<std::vector<double>>& cost, std::vector<std::vector<bool>>& allowed,
    const std::vector<std::vector<int>>& classMatch, std::unordered_set<int>& mismatches) {
    for (std::size_t i = 0; i < cost.size(); ++i) {
        const auto inGate = [&, i](std::size_t j) {
            return checkGating(*systemTracks.at(i), *sensorTracks.at(j)).passed;
        };
        giveUpMismatches(
            cost[i].size(), [&, i](std::size_t j) { return classMatch.at(i).at(j) == 1; }, inGate,
            [&, i](std::size_t j) {
                allowed.at(i).at(j) = false;
                cost[i][j] = forbiddenCost;
                if (workspace->module.removeClassMismatches && inGate(j)) {
                    mismatches.insert(static_cast<int>(j));
                }
            });
    }
}

void TrackAssociator::runJVA(int rows, int cols, std::vector<std::vector<double>>& cost,
                             std::vector<std::vector<bool>>& allowed) {
    AssignmentSolver::refuseTooBig(std::max(cost.size(), cost.at(0).size()));
    if (rows <= 0 || cols <= 0) {
        return;
    }
    const std::vector<int>& columnOf = workspace->solver.solve(
        cost, allowed, static_cast<std::size_t>(rows), static_cast<std::size_t>(cols));
    for (int i = 0; i < rows; ++i) {
        const int j = columnOf[i];
        if (j >= 0 && j < cols && allowed.at(i).at(j)) {
            associations.emplace_back(i, j);
        }
    }
}

void TrackAssociator::assignAllowedPairs(std::size_t rows, std::size_t cols) {
    AssignmentSolver::refuseTooBig(std::max(rows, cols));
    const SparseCosts& pairs = workspace->pairs;
    if (pairs.cellCount() == 0) {
        return;
    }
    const std::vector<int>& columnOf = workspace->solver.solve(pairs, cols);
    for (std::size_t i = 0; i < rows; ++i) {
        if (pairs.find(i, columnOf[i]) != nullptr) {
            associations.emplace_back(static_cast<int>(i), columnOf[i]);
        }
    }
}

const TrackAssociator::Associations& TrackAssociator::sensorToSystemAssociation(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks, const Source& source,
    std::unordered_set<int>& removedIds) {
    associations.clear();
    if (!workspace->module.useJVA) {
        runBasicSensorToSystem(sensorTracks, systemTracks, source);
        return associations;
    }
    refuseEmpty(systemTracks);
    SensorToSystem& problem = workspace->sensorToSystem;
    problem.start(systemTracks, sensorTracks, source);
    problem.findAllowedPairs(workspace->pairs, removedIds);
    assignAllowedPairs(systemTracks.size(), sensorTracks.size());
    if (workspace->module.allowRadarToMultiple && source == Source::Radar) {
        shareRadarTracks(systemTracks);
    }
    return associations;
}

/// Every system track without a pair and without radar also takes its first allowed radar track.
void TrackAssociator::shareRadarTracks(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks) {
    const std::size_t solved = associations.size();
    std::size_t next = 0;
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        const int row = static_cast<int>(i);
        if (next < solved && associations[next].first == row) {
            ++next;
        } else if (!workspace->pairs.row(i).empty()) {
            associations.emplace_back(row, workspace->pairs.row(i).begin()->col);
        }
    }
    std::sort(associations.begin(), associations.end());
}

void TrackAssociator::runBasicSensorToSystem(
    const std::vector<std::shared_ptr<Track>>& sensorTracks,
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks, const Source& source) {
    const bool allowShared = workspace->module.allowRadarToMultiple;
    const bool shares = allowShared && source == Source::Radar;
    const bool assignsNearest = !allowShared || source == Source::VideoObject;
    std::vector<char>& taken = workspace->used;
    taken.clear();
    for (const auto& system : systemTracks) {
        taken.push_back(system->hasTracks(source) ? 1 : 0);
    }
    workspace->occupancy.start(systemTracks);
    for (std::size_t j = 0; j < sensorTracks.size(); ++j) {
        const bool held = workspace->occupancy.holds(*sensorTracks[j]);
        if ((held && !shares) || !(shares || assignsNearest)) {
            continue;
        }
        double nearest = std::numeric_limits<double>::max();
        std::size_t best = systemTracks.size();
        for (std::size_t i = 0; i < systemTracks.size(); ++i) {
            if (taken[i] != 0) {
                continue;
            }
            const GatingResult result = checkGating(*systemTracks[i], *sensorTracks[j]);
            if (!result.passed) {
                continue;
            }
            if (shares) {
                taken[i] = 1;
                associations.emplace_back(i, j);
            } else if (result.distance < nearest) {
                nearest = result.distance;
                best = i;
            }
        }
        if (best != systemTracks.size()) {
            taken[best] = 1;
            associations.emplace_back(best, j);
        }
    }
}

const TrackAssociator::Associations& TrackAssociator::systemToSystemAssociation(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    const std::unordered_set<int>& excludedIds) {
    associations.clear();
    if (!workspace->module.useJVA) {
        runBasicSystemToSystem(systemTracks, excludedIds);
        return associations;
    }
    refuseEmpty(systemTracks);
    AssignmentSolver::refuseTooBig(systemTracks.size());
    workspace->systemToSystem.findAllowedPairs(systemTracks, excludedIds, workspace->pairs);
    assignAllowedPairs(systemTracks.size(), systemTracks.size());
    keepCheapestPairs(systemTracks.size());
    return associations;
}

/// Orders the pairs by cost and keeps those whose tracks no cheaper pair has used. Of pairs with
/// exactly the same cost only the last one counts.
void TrackAssociator::keepCheapestPairs(std::size_t size) {
    auto& ranking = workspace->ranking;
    ranking.clear();
    for (const auto& pair : associations) {
        for (const SparseCosts::Cell& cell :
             workspace->pairs.row(static_cast<std::size_t>(pair.first))) {
            if (cell.col == pair.second) {
                ranking.push_back({std::isfinite(cell.cost) ? cell.cost : forbiddenCost, pair});
            }
        }
    }
    std::sort(ranking.begin(), ranking.end(), [](const auto& a, const auto& b) {
        return a.cost < b.cost || (a.cost == b.cost && a.pair < b.pair);
    });
    workspace->used.assign(size, 0);
    associations.clear();
    for (std::size_t k = 0; k < ranking.size(); ++k) {
        const bool replaced = k + 1 < ranking.size() && ranking[k + 1].cost == ranking[k].cost;
        char& rowUsed = workspace->used[static_cast<std::size_t>(ranking[k].pair.first)];
        char& colUsed = workspace->used[static_cast<std::size_t>(ranking[k].pair.second)];
        if (!replaced && rowUsed == 0 && colUsed == 0) {
            rowUsed = 1;
            colUsed = 1;
            associations.push_back(ranking[k].pair);
        }
    }
}

void TrackAssociator::runBasicSystemToSystem(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    const std::unordered_set<int>& excludedIds) {
    workspace->systemToSystem.pairNearest(systemTracks, excludedIds, associations);
}

const TrackAssociator::Associations& TrackAssociator::getAssociations() const {
    return associations;
}

}  // namespace Veskar
