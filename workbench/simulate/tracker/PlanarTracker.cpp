// SPDX-License-Identifier: Apache-2.0
#include "simulate/tracker/PlanarTracker.h"

#include <veskar/Config.h>
#include <veskar/TrackAssociator.h>

#include <algorithm>
#include <map>
#include <numeric>

namespace Workbench {
namespace {

// A track and a detection inside its gate.
struct Candidate {
    std::size_t track;
    std::size_t detection;
    double cost;
};

// Splits the candidates into groups that share no track and no detection. Several small assignment
// problems are faster than a large one and stay below the solver's limit.
class Groups {
public:
    explicit Groups(std::size_t size) : parent_(size) {
        std::iota(parent_.begin(), parent_.end(), std::size_t{0});
    }
    std::size_t rootOf(std::size_t item) {
        while (parent_[item] != item) {
            item = parent_[item] = parent_[parent_[item]];
        }
        return item;
    }
    void join(std::size_t a, std::size_t b) { parent_[rootOf(a)] = rootOf(b); }

private:
    std::vector<std::size_t> parent_;
};

std::size_t indexOf(std::vector<std::size_t>& known, std::size_t item) {
    const auto found = std::find(known.begin(), known.end(), item);
    if (found == known.end()) {
        known.push_back(item);
        return known.size() - 1;
    }
    return static_cast<std::size_t>(found - known.begin());
}

std::vector<std::pair<std::size_t, std::size_t>> solve(const std::vector<Candidate>& group) {
    std::vector<std::size_t> rows;
    std::vector<std::size_t> columns;
    for (const Candidate& candidate : group) {
        indexOf(rows, candidate.track);
        indexOf(columns, candidate.detection);
    }
    constexpr double forbidden = 9999.0;
    std::vector<std::vector<double>> cost(rows.size(),
                                          std::vector<double>(columns.size(), forbidden));
    std::vector<std::vector<bool>> allowed(rows.size(), std::vector<bool>(columns.size(), false));
    for (const Candidate& candidate : group) {
        const std::size_t row = indexOf(rows, candidate.track);
        const std::size_t column = indexOf(columns, candidate.detection);
        cost[row][column] = candidate.cost;
        allowed[row][column] = true;
    }
    Veskar::TrackAssociator solver{Veskar::Config()};
    solver.runJVA(static_cast<int>(rows.size()), static_cast<int>(columns.size()), cost, allowed);
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (const auto& [row, column] : solver.getAssociations()) {
        pairs.emplace_back(rows[static_cast<std::size_t>(row)],
                           columns[static_cast<std::size_t>(column)]);
    }
    return pairs;
}

}  // namespace

std::vector<std::pair<std::size_t, std::size_t>> PlanarTracker::assign(
    const std::vector<PlanarDetection>& detections) const {
    std::vector<Candidate> candidates;
    Groups groups(list_.size() + detections.size());
    for (std::size_t i = 0; i < list_.size(); ++i) {
        for (std::size_t j = 0; j < detections.size(); ++j) {
            const PlanarDetection& detection = detections[j];
            const PlanarFilter& filter = list_[i].filter;
            if (filter.isFarOutside(detection.position, detection.covariance,
                                    tuning_.squaredGate)) {
                continue;
            }
            const double cost = filter.squaredDistance(detection.position, detection.covariance);
            if (cost < tuning_.squaredGate) {
                candidates.push_back({i, j, cost});
                groups.join(i, list_.size() + j);
            }
        }
    }
    std::map<std::size_t, std::vector<Candidate>> byGroup;
    for (const Candidate& candidate : candidates) {
        byGroup[groups.rootOf(candidate.track)].push_back(candidate);
    }
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (const auto& [root, group] : byGroup) {
        const auto solved = solve(group);
        pairs.insert(pairs.end(), solved.begin(), solved.end());
    }
    return pairs;
}

bool PlanarTracker::isLost(const PlanarTrack& track, double time) const {
    const double limit = isConfirmed(track) ? tuning_.confirmedCoasting : tuning_.tentativeCoasting;
    return time - track.seen > limit;
}

PlanarFilter PlanarTracker::start(const PlanarDetection& detection) const {
    if (detection.velocity) {
        return {detection.position, detection.covariance, detection.velocity->value,
                detection.velocity->covariance};
    }
    const double variance = tuning_.initialVelocityStd * tuning_.initialVelocityStd;
    return {detection.position, detection.covariance, Eigen::Vector2d::Zero(),
            variance * Eigen::Matrix2d::Identity()};
}

void PlanarTracker::update(double time, const std::vector<PlanarDetection>& detections) {
    for (PlanarTrack& track : list_) {
        track.filter.predict(time - now_, tuning_.accelerationStd);
        track.detection.reset();
    }
    now_ = time;
    std::vector<bool> isTaken(detections.size(), false);
    for (const auto& [i, j] : assign(detections)) {
        PlanarTrack& track = list_[i];
        track.filter.update(detections[j].position, detections[j].covariance);
        track.seen = time;
        track.detection = j;
        ++track.hits;
        isTaken[j] = true;
    }
    list_.erase(std::remove_if(list_.begin(), list_.end(),
                               [&](const PlanarTrack& track) { return isLost(track, time); }),
                list_.end());
    for (std::size_t j = 0; j < detections.size(); ++j) {
        if (!isTaken[j]) {
            list_.push_back({nextId_, nextId_, start(detections[j]), time, time, 1, j});
            ++nextId_;
        }
    }
}

}  // namespace Workbench
