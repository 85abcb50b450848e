// SPDX-License-Identifier: Apache-2.0
#include "fusion/LiteralAssociation.h"

#include <veskar/Vocabulary.h>

#include <cmath>
#include <limits>
#include <map>
#include <set>

namespace VeskarTest::Literal {
namespace {

constexpr double forbidden = 9999.0;

bool isClose(double a, double b) {
    return std::abs(a - b) < 1e-7 * (1.0 + std::abs(b));
}

Vector<3> positions(const Vector6& x) {
    return {x[0], x[2], x[4]};
}

bool isSupported(const Track& track) {
    return Veskar::Vocabulary::supportedClasses.count(track.getLabel(0).name) > 0;
}

/// The solver's pairs by ascending cost; of pairs with equal cost only the last is kept.
Pairs inOrderOfCost(const Pairs& pairs, const Costs& cost) {
    std::map<double, std::pair<int, int>> byCost;
    for (const auto& pair : pairs) {
        byCost[cost.at(static_cast<std::size_t>(pair.first))
                   .at(static_cast<std::size_t>(pair.second))] = pair;
    }
    std::set<int> used;
    Pairs kept;
    for (const auto& [c, pair] : byCost) {
        if (used.count(pair.first) == 0 && used.count(pair.second) == 0) {
            used.insert(pair.first);
            used.insert(pair.second);
            kept.push_back(pair);
        }
    }
    return kept;
}

}  // namespace

Gate Associator::checkGating(const Track& systemTrack, const Track& sensorTrack) const {
    if (!isSupported(systemTrack) || !isSupported(sensorTrack)) {
        return {forbidden, false};
    }
    const Vector6 d = sum(systemTrack.x, -1.0, sensorTrack.x);
    const Matrix6 S = sum(systemTrack.P, 1.0, sensorTrack.P);
    if (!config_.splitGating) {
        const double distance = mahalanobis(d, S);
        isDoubtful_ = isDoubtful_ || isClose(distance, config_.gatingDistance);
        return {distance, distance < config_.gatingDistance};
    }
    const Matrix<3> S3 = {
        {{S[0][0], S[0][2], S[0][4]}, {S[2][0], S[2][2], S[2][4]}, {S[4][0], S[4][2], S[4][4]}}};
    const double p = mahalanobis(positions(d), S3);
    const double ax = systemTrack.x[1];
    const double ay = systemTrack.x[3];
    const double bx = sensorTrack.x[1];
    const double by = sensorTrack.x[3];
    const double a = std::sqrt(ax * ax + ay * ay);
    const double b = std::sqrt(bx * bx + by * by);
    const double s = (ax * bx + ay * by) / (a * b + 2.220446049250313e-16);
    bool passed = p < config_.positionGatingDistance;
    if (a + b > config_.velocityMinGatingLimit) {
        passed = passed && s > config_.velocityGatingSimilarity;
    }
    isDoubtful_ = isDoubtful_ || isClose(p, config_.positionGatingDistance) ||
                  isClose(s, config_.velocityGatingSimilarity) ||
                  isClose(a + b, config_.velocityMinGatingLimit);
    if (isVetoed(systemTrack, sensorTrack)) {
        passed = false;
    }
    return {
        p / config_.positionGatingDistance + (1.0 - s) / (1.0 - config_.velocityGatingSimilarity),
        passed};
}

double Associator::weighed(double distance) const {
    for (const double other : distances_) {
        isDoubtful_ = isDoubtful_ || isClose(distance, other);
    }
    distances_.push_back(distance);
    return distance;
}

bool Associator::takeDoubt() {
    const bool result = isDoubtful_;
    isDoubtful_ = false;
    distances_.clear();
    return result;
}

bool Associator::isVetoed(const Track& systemTrack, const Track& sensorTrack) const {
    double m = 0.0;
    const Track* still = nullptr;
    if (systemTrack.getSpeed()) {
        m = *systemTrack.getSpeed();
        still = &sensorTrack;
    } else if (sensorTrack.getSpeed()) {
        m = *sensorTrack.getSpeed();
        still = &systemTrack;
    } else {
        return false;
    }
    const double speed = std::sqrt(still->x[1] * still->x[1] + still->x[3] * still->x[3]);
    return m > config_.stationaryBlockingMinSpeed &&
           still->getAge() > config_.stationaryBlockingMinVideoAge &&
           speed < config_.stationaryBlockingMaxUVSpeed && 0.5 * still->box[3] > boxLimit_;
}

bool Associator::haveMatchingClasses(const SystemTrack& systemTrack, const Track& track,
                                     int source) const {
    const int other = source == 2 ? 0 : 2;
    if (!systemTrack.hasTracks(other)) {
        return false;
    }
    const auto& groups = Veskar::Vocabulary::classGroups;
    const auto mine = groups.find(systemTrack.first(other).getLabel(0).name);
    const auto its = groups.find(track.getLabel(0).name);
    return mine != groups.end() && its != groups.end() && mine->second == its->second;
}

/// Whether a sensor track is held by a system track and must not be shared.
bool Associator::isBarred(const Track& track, const SystemTracks& systemTracks, int source) const {
    if (source == 2 && config_.allowRadarToMultiple) {
        return false;
    }
    for (const auto& systemTrack : systemTracks) {
        if (systemTrack->sensorTracks.at(track.source).count(track.id) > 0) {
            return true;
        }
    }
    return false;
}

Pairs Associator::sensorToSystemAssociation(const Tracks& tracks, const SystemTracks& systemTracks,
                                            int source, std::unordered_set<int>& removedIds) const {
    if (!config_.useJVA) {
        return greedySensorToSystem(tracks, systemTracks, source);
    }
    Costs cost;
    Allowed allowed;
    std::vector<std::vector<int>> match;
    for (const auto& systemTrack : systemTracks) {
        cost.emplace_back(tracks.size(), forbidden);
        allowed.emplace_back(tracks.size(), false);
        match.emplace_back(tracks.size(), 1);
        for (std::size_t j = 0; j < tracks.size(); ++j) {
            const bool hasVideo = systemTrack->hasTracks(0);
            const bool hasRadar = systemTrack->hasTracks(2);
            if ((hasVideo && source == 2) || (hasRadar && source == 0)) {
                match.back()[j] = haveMatchingClasses(*systemTrack, *tracks[j], source) ? 1 : 0;
            }
            if ((hasVideo && source == 0) || (hasRadar && source == 2) ||
                isBarred(*tracks[j], systemTracks, source)) {
                continue;
            }
            const Gate gate = checkGating(*systemTrack, *tracks[j]);
            if (gate.passed) {
                cost.back()[j] = weighed(gate.distance);
                allowed.back()[j] = true;
            }
        }
    }
    forbidMismatches(tracks, systemTracks, cost, allowed, match, removedIds);
    Pairs solved = runLiterally(static_cast<int>(systemTracks.size()),
                                static_cast<int>(tracks.size()), cost, allowed);
    if (!config_.allowRadarToMultiple) {
        return solved;
    }
    std::set<std::pair<int, int>> pairs(solved.begin(), solved.end());
    std::set<int> paired;
    for (const auto& [i, j] : solved) {
        paired.insert(i);
    }
    for (std::size_t i = 0; source == 2 && i < systemTracks.size(); ++i) {
        if (paired.count(static_cast<int>(i)) > 0 || systemTracks[i]->hasTracks(2)) {
            continue;
        }
        for (std::size_t j = 0; j < tracks.size(); ++j) {
            if (allowed[i][j]) {
                pairs.emplace(static_cast<int>(i), static_cast<int>(j));
                break;
            }
        }
    }
    return Pairs(pairs.begin(), pairs.end());
}

void Associator::forbidMismatches(const Tracks& tracks, const SystemTracks& systemTracks,
                                  Costs& cost, Allowed& allowed,
                                  const std::vector<std::vector<int>>& match,
                                  std::unordered_set<int>& removedIds) const {
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        bool hasMatchingCandidate = false;
        for (std::size_t j = 0; j < tracks.size(); ++j) {
            if (match[i][j] == 1 && checkGating(*systemTracks[i], *tracks[j]).passed) {
                hasMatchingCandidate = true;
            }
        }
        for (std::size_t j = 0; hasMatchingCandidate && j < tracks.size(); ++j) {
            if (match[i][j] == 1) {
                continue;
            }
            cost[i][j] = forbidden;
            allowed[i][j] = false;
            if (config_.removeClassMismatches && checkGating(*systemTracks[i], *tracks[j]).passed) {
                removedIds.insert(tracks[j]->id);
            }
        }
    }
}

Pairs Associator::greedySensorToSystem(const Tracks& tracks, const SystemTracks& systemTracks,
                                       int source) const {
    const bool isShared = config_.allowRadarToMultiple && source == 2;
    Pairs pairs;
    std::set<std::size_t> taken;
    for (std::size_t j = 0; j < tracks.size(); ++j) {
        if (isBarred(*tracks[j], systemTracks, source)) {
            continue;
        }
        double best = std::numeric_limits<double>::max();
        std::optional<std::size_t> bestIndex;
        for (std::size_t i = 0; i < systemTracks.size(); ++i) {
            if (systemTracks[i]->hasTracks(source)) {
                continue;
            }
            const Gate gate = checkGating(*systemTracks[i], *tracks[j]);
            if (!gate.passed || taken.count(i) > 0) {
                continue;
            }
            if (weighed(gate.distance) < best) {
                best = gate.distance;
                bestIndex = i;
            }
            if (isShared) {
                pairs.emplace_back(static_cast<int>(i), static_cast<int>(j));
                taken.insert(i);
            }
        }
        if (config_.allowRadarToMultiple && source != 0) {
            continue;
        }
        if (bestIndex) {
            taken.insert(*bestIndex);
            pairs.emplace_back(static_cast<int>(*bestIndex), static_cast<int>(j));
        }
    }
    return pairs;
}

Pairs Associator::systemToSystemAssociation(const SystemTracks& systemTracks,
                                            const std::unordered_set<int>& excludedIds) const {
    if (!config_.useJVA) {
        return greedySystemToSystem(systemTracks, excludedIds);
    }
    const std::size_t n = systemTracks.size();
    Costs cost(n, std::vector<double>(n, forbidden));
    Allowed allowed(n, std::vector<bool>(n, false));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) {
            const SystemTrack& a = *systemTracks[i];
            const SystemTrack& b = *systemTracks[j];
            if (i == j || (b.hasTracks(0) && b.hasTracks(2)) ||
                (a.hasTracks(0) && b.hasTracks(0)) || (a.hasTracks(2) && a.hasTracks(0)) ||
                (a.hasTracks(2) && b.hasTracks(2))) {
                continue;
            }
            if (excludedIds.count(a.id) > 0 || excludedIds.count(b.id) > 0 ||
                !(b.startTime > a.startTime)) {
                continue;
            }
            const Gate gate = checkGating(a, b);
            if (gate.passed) {
                cost[i][j] = weighed(gate.distance);
                allowed[i][j] = true;
            }
        }
    }
    const int size = static_cast<int>(n);
    return inOrderOfCost(runLiterally(size, size, cost, allowed), cost);
}

Pairs Associator::greedySystemToSystem(const SystemTracks& systemTracks,
                                       const std::unordered_set<int>& excludedIds) const {
    Pairs pairs;
    std::set<int> taken;
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        const SystemTrack& a = *systemTracks[i];
        if (a.hasTracks(0)) {
            continue;
        }
        double best = std::numeric_limits<double>::max();
        std::optional<std::size_t> bestIndex;
        for (std::size_t j = 0; j < systemTracks.size(); ++j) {
            const SystemTrack& b = *systemTracks[j];
            if (b.hasTracks(2) || taken.count(b.id) > 0) {
                continue;
            }
            const Gate gate = checkGating(a, b);
            if (gate.passed && weighed(gate.distance) < best) {
                best = gate.distance;
                bestIndex = j;
            }
        }
        if (!bestIndex) {
            continue;
        }
        const SystemTrack& b = *systemTracks[*bestIndex];
        if (a.hasTracks(2) && b.hasTracks(0) && excludedIds.count(a.id) == 0 &&
            excludedIds.count(b.id) == 0 && a.startTime > b.startTime) {
            taken.insert(b.id);
            pairs.emplace_back(static_cast<int>(i), static_cast<int>(*bestIndex));
            taken.insert(a.id);
            pairs.emplace_back(static_cast<int>(*bestIndex), static_cast<int>(i));
        }
    }
    return pairs;
}

}  // namespace VeskarTest::Literal
