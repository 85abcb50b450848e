// SPDX-License-Identifier: Apache-2.0
#include "association/LiteralAssociator.h"

#include <veskar/Vocabulary.h>

#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>

#include <syslog.h>

namespace VeskarTest {

using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;
namespace Vocabulary = Veskar::Vocabulary;

LiteralAssociator::LiteralAssociator(const Veskar::Config& c) : config_(c) {}

bool LiteralAssociator::isSupportedClass(const Track& track) const {
    return Vocabulary::supportedClasses.count(track.getClassName()) == 1;
}

LiteralAssociator::Gating LiteralAssociator::checkGating(const Track& systemTrack,
                                                         const Track& sensorTrack) const {
    if (!isSupportedClass(systemTrack)) {
        return {9999.0, false};
    }
    if (!isSupportedClass(sensorTrack)) {
        return {9999.0, false};
    }
    if (!config_.module.splitGating) {
        const double distance = systemTrack.statisticalDistance(sensorTrack);
        return {distance, distance < config_.module.gatingDistance};
    }
    const double p = systemTrack.positionStatisticalDistance(sensorTrack);
    const auto similarity =
        systemTrack.velocitySimilarity(sensorTrack, config_.module.velocityMinGatingLimit);
    const double s = similarity.second;
    bool passed = false;
    if (similarity.first) {
        passed = p < config_.module.positionGatingDistance &&
                 s > config_.module.velocityGatingSimilarity;
    } else {
        passed = p < config_.module.positionGatingDistance;
    }
    std::optional<double> m = systemTrack.getSpeed();
    const Track* T = &sensorTrack;
    if (!m.has_value()) {
        m = sensorTrack.getSpeed();
        T = &systemTrack;
    }
    if (m.has_value()) {
        const bool a = m.value() > config_.module.stationaryBlockingMinSpeed;
        const bool b = T->getAge() > config_.module.stationaryBlockingMinVideoAge;
        if (a && b) {
            const double vx = T->state(1);
            const double vy = T->state(3);
            const bool c =
                std::sqrt(vx * vx + vy * vy) < config_.module.stationaryBlockingMaxUVSpeed;
            const bool d =
                T->boundingBox(3) * 0.5 > config_.detectionPriority.vodHeightFractionLimit;
            if (c && d) {
                passed = false;
            }
        }
    }
    const double distance = p / config_.module.positionGatingDistance +
                            (1 - s) / (1 - config_.module.velocityGatingSimilarity);
    return {distance, passed};
}

bool LiteralAssociator::haveMatchingClasses(const SystemTrack& systemTrack, const Track& track,
                                            Source source) const {
    const Source other = source == Source::Radar ? Source::VideoObject : Source::Radar;
    if (!systemTrack.hasTracks(other)) {
        syslog(LOG_ERR, "System track did not have sensor track from sensor %d\n", source);
        return false;
    }
    const Track& first = *systemTrack.getSensorTracks(other).begin()->second;
    const std::string a = first.getClassName();
    const std::string b = track.getClassName();
    if (Vocabulary::classGroups.count(a) == 0 || Vocabulary::classGroups.count(b) == 0) {
        return false;
    }
    return Vocabulary::classGroups.at(a) == Vocabulary::classGroups.at(b);
}

bool LiteralAssociator::isOccupied(const Track& track, const SystemTracks& systemTracks) const {
    for (const auto& systemTrack : systemTracks) {
        const auto& held = systemTrack->getSensorTracks(track.source);
        if (held.find(track.id) != held.end()) {
            return true;
        }
    }
    return false;
}

void LiteralAssociator::sensorToSystemCostMatrix(const SensorTracks& sensorTracks,
                                                 const SystemTracks& systemTracks, Costs& cost,
                                                 Allowed& allowed, ClassMatch& classMatch,
                                                 Source source) const {
    if (systemTracks.empty()) {
        return;
    }
    const bool radar = source == Source::Radar;
    const bool video = source == Source::VideoObject;
    for (const auto& systemTrack : systemTracks) {
        std::vector<double> costRow;
        std::vector<bool> allowedRow;
        std::vector<int> matchRow;
        for (const auto& sensorTrack : sensorTracks) {
            const bool hasVideo = systemTrack->hasTracks(Source::VideoObject);
            const bool hasRadar = systemTrack->hasTracks(Source::Radar);
            if ((hasVideo && radar) || (hasRadar && video)) {
                matchRow.push_back(haveMatchingClasses(*systemTrack, *sensorTrack, source) ? 1 : 0);
            } else {
                matchRow.push_back(1);
            }
            double c = 9999.0;
            bool ok = false;
            const bool sameSource = (hasVideo && video) || (hasRadar && radar);
            if (!sameSource && !(isOccupied(*sensorTrack, systemTracks) &&
                                 !(radar && config_.module.allowRadarToMultiple))) {
                const Gating g = checkGating(*systemTrack, *sensorTrack);
                if (g.passed) {
                    c = g.distance;
                    ok = true;
                }
            }
            costRow.push_back(c);
            allowedRow.push_back(ok);
        }
        cost.push_back(costRow);
        allowed.push_back(allowedRow);
        classMatch.push_back(matchRow);
    }
}

void LiteralAssociator::systemToSystemCostMatrix(const SystemTracks& systemTracks, Costs& cost,
                                                 Allowed& allowed,
                                                 const std::unordered_set<int>& excludedIds) const {
    if (systemTracks.empty()) {
        return;
    }
    for (std::size_t i = 0; i < systemTracks.size(); i++) {
        std::vector<double> costRow;
        std::vector<bool> allowedRow;
        for (std::size_t j = 0; j < systemTracks.size(); j++) {
            const SystemTrack& A = *systemTracks.at(i);
            const SystemTrack& B = *systemTracks.at(j);
            const bool videoA = A.hasTracks(Source::VideoObject);
            const bool radarA = A.hasTracks(Source::Radar);
            const bool videoB = B.hasTracks(Source::VideoObject);
            const bool radarB = B.hasTracks(Source::Radar);
            double c = 9999.0;
            bool ok = false;
            const bool diagonal = i == j;
            const bool sources = (videoB && radarB) || (videoA && videoB) || (radarA && videoA) ||
                                 (radarA && radarB);
            const bool excluded = excludedIds.count(A.id) != 0 || excludedIds.count(B.id) != 0;
            if (!diagonal && !sources && !excluded && B.startTime > A.startTime) {
                const Gating g = checkGating(A, B);
                if (g.passed) {
                    c = g.distance;
                    ok = true;
                }
            }
            costRow.push_back(c);
            allowedRow.push_back(ok);
        }
        cost.push_back(costRow);
        allowed.push_back(allowedRow);
    }
}

void LiteralAssociator::handleClassMatching(const SensorTracks& sensorTracks,
                                            const SystemTracks& systemTracks, Costs& cost,
                                            Allowed& allowed, const ClassMatch& classMatch,
                                            std::unordered_set<int>& mismatches) const {
    for (std::size_t i = 0; i < cost.size(); i++) {
        bool found = false;
        for (std::size_t j = 0; j < cost.at(i).size() && !found; j++) {
            if (classMatch.at(i).at(j) == 1 &&
                checkGating(*systemTracks.at(i), *sensorTracks.at(j)).passed) {
                found = true;
            }
        }
        if (!found) {
            continue;
        }
        for (std::size_t j = 0; j < cost.at(i).size(); j++) {
            if (classMatch.at(i).at(j) == 0) {
                allowed.at(i).at(j) = false;
                cost.at(i).at(j) = 9999.0;
                if (config_.module.removeClassMismatches &&
                    checkGating(*systemTracks.at(i), *sensorTracks.at(j)).passed) {
                    mismatches.insert(static_cast<int>(j));
                }
            }
        }
    }
}

Pairs LiteralAssociator::sensorToSystemAssociation(const SensorTracks& sensorTracks,
                                                   const SystemTracks& systemTracks, Source source,
                                                   std::unordered_set<int>& removedIds) const {
    if (!config_.module.useJVA) {
        return nearestSensorToSystem(sensorTracks, systemTracks, source);
    }
    Costs cost;
    Allowed allowed;
    ClassMatch classMatch;
    sensorToSystemCostMatrix(sensorTracks, systemTracks, cost, allowed, classMatch, source);
    std::unordered_set<int> mismatches;
    handleClassMatching(sensorTracks, systemTracks, cost, allowed, classMatch, mismatches);
    for (const int j : mismatches) {
        removedIds.insert(sensorTracks.at(j)->id);
    }
    Pairs solved = runLiterally(static_cast<int>(systemTracks.size()),
                                static_cast<int>(sensorTracks.size()), cost, allowed);
    if (!config_.module.allowRadarToMultiple) {
        return solved;
    }
    std::set<std::pair<int, int>> all(solved.begin(), solved.end());
    if (source == Source::Radar) {
        std::set<int> paired;
        for (const auto& pair : solved) {
            paired.insert(pair.first);
        }
        for (int i = 0; i < static_cast<int>(systemTracks.size()); i++) {
            if (paired.count(i) != 0 || systemTracks.at(i)->hasTracks(source)) {
                continue;
            }
            for (int j = 0; j < static_cast<int>(sensorTracks.size()); j++) {
                if (allowed.at(i).at(j)) {
                    all.insert({i, j});
                    paired.insert(i);
                    break;
                }
            }
        }
    }
    return {all.begin(), all.end()};
}

Pairs LiteralAssociator::nearestSensorToSystem(const SensorTracks& sensorTracks,
                                               const SystemTracks& systemTracks,
                                               Source source) const {
    const bool multiple = config_.module.allowRadarToMultiple;
    Pairs result;
    std::set<int> taken;
    for (int j = 0; j < static_cast<int>(sensorTracks.size()); j++) {
        const Track& t = *sensorTracks.at(j);
        if (isOccupied(t, systemTracks) && !(source == Source::Radar && multiple)) {
            continue;
        }
        double best = std::numeric_limits<double>::max();
        int bestIndex = -1;
        for (int i = 0; i < static_cast<int>(systemTracks.size()); i++) {
            const SystemTrack& s = *systemTracks.at(i);
            if (s.hasTracks(source)) {
                continue;
            }
            const Gating g = checkGating(s, t);
            if (!g.passed) {
                continue;
            }
            if (taken.count(i) == 0 && g.distance < best) {
                best = g.distance;
                bestIndex = i;
            }
            if (multiple && source == Source::Radar && taken.count(i) == 0) {
                result.emplace_back(i, j);
                taken.insert(i);
            }
        }
        if (multiple && source != Source::VideoObject) {
            continue;
        }
        if (bestIndex >= 0) {
            taken.insert(bestIndex);
            result.emplace_back(bestIndex, j);
        }
    }
    return result;
}

Pairs LiteralAssociator::systemToSystemAssociation(
    const SystemTracks& systemTracks, const std::unordered_set<int>& excludedIds) const {
    if (!config_.module.useJVA) {
        return nearestSystemToSystem(systemTracks, excludedIds);
    }
    Costs cost;
    Allowed allowed;
    systemToSystemCostMatrix(systemTracks, cost, allowed, excludedIds);
    const int n = static_cast<int>(systemTracks.size());
    std::map<double, std::pair<int, int>> ordered;
    for (const auto& pair : runLiterally(n, n, cost, allowed)) {
        const double key = cost.at(pair.first).at(pair.second);
        ordered[std::isfinite(key) ? key : 9999.0] = pair;
    }
    Pairs result;
    std::set<int> used;
    for (const auto& entry : ordered) {
        const int row = entry.second.first;
        const int col = entry.second.second;
        if (used.count(row) == 0 && used.count(col) == 0) {
            used.insert(row);
            used.insert(col);
            result.emplace_back(row, col);
        }
    }
    return result;
}

Pairs LiteralAssociator::nearestSystemToSystem(const SystemTracks& systemTracks,
                                               const std::unordered_set<int>& excludedIds) const {
    Pairs result;
    std::set<int> taken;
    for (int a = 0; a < static_cast<int>(systemTracks.size()); a++) {
        const SystemTrack& A = *systemTracks.at(a);
        if (A.hasTracks(Source::VideoObject)) {
            continue;
        }
        double best = std::numeric_limits<double>::max();
        int b = -1;
        for (int k = 0; k < static_cast<int>(systemTracks.size()); k++) {
            const SystemTrack& B = *systemTracks.at(k);
            if (B.hasTracks(Source::Radar) || taken.count(B.id) != 0) {
                continue;
            }
            const Gating g = checkGating(A, B);
            if (g.passed && g.distance < best) {
                best = g.distance;
                b = k;
            }
        }
        if (b < 0) {
            continue;
        }
        const SystemTrack& B = *systemTracks.at(b);
        if (A.hasTracks(Source::Radar) && !A.hasTracks(Source::VideoObject) &&
            B.hasTracks(Source::VideoObject) && !B.hasTracks(Source::Radar) &&
            excludedIds.count(A.id) == 0 && excludedIds.count(B.id) == 0 &&
            A.startTime > B.startTime) {
            taken.insert(B.id);
            result.emplace_back(a, b);
            taken.insert(A.id);
            result.emplace_back(b, a);
        }
    }
    return result;
}

}  // namespace VeskarTest
