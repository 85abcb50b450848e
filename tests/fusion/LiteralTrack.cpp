// SPDX-License-Identifier: Apache-2.0
#include "fusion/LiteralTrack.h"

#include <veskar/ImagePlane.h>

namespace VeskarTest::Literal {

std::shared_ptr<Track> literal(const Veskar::Track& track) {
    auto copy = std::make_shared<Track>();
    for (int i = 0; i < 6; ++i) {
        copy->x[static_cast<std::size_t>(i)] = track.state[i];
        for (int j = 0; j < 6; ++j) {
            copy->P[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] =
                track.covariance(i, j);
        }
    }
    copy->time = track.time;
    copy->startTime = track.startTime;
    copy->id = track.id;
    copy->source = track.source;
    copy->labels = {Label{track.className, track.classProbability},
                    Label{track.colorName, track.colorProbability},
                    Label{track.upperClothingColorName, track.upperClothingColorProbability},
                    Label{track.lowerClothingColorName, track.lowerClothingColorProbability}};
    copy->box = {track.boundingBox[0], track.boundingBox[1], track.boundingBox[2],
                 track.boundingBox[3]};
    copy->coastingTime = track.coastingTime;
    copy->probability = track.probability;
    copy->speed = track.speed;
    copy->startPosition = {track.startPosition[0], track.startPosition[1]};
    copy->isConfident = track.isConfident;
    return copy;
}

void Track::predict(double t) {
    const double dt = t - time;
    Matrix6 F{};
    for (std::size_t i = 0; i < 6; ++i) {
        F[i][i] = 1.0;
    }
    F[0][1] = dt;
    F[2][3] = dt;
    const Vector6 old = x;
    x = product(F, x);
    P = product(product(F, P), transposed(F));
    box[0] += x[0] - old[0];
    box[2] += x[2] - old[2];
    time = t;
}

SystemTrack::SystemTrack(const std::shared_ptr<Track>& track, int systemId) {
    id = systemId;
    x = track->x;
    P = track->P;
    time = track->time;
    startTime = track->startTime;
    sensorTracks[2];
    sensorTracks[0];
    sensorTracks[track->source][track->id] = track;
    trackProbabilityHistory.resize(5, 0.5);
    box = track->box;
    startPosition = track->startPosition;
    systemStartTime = track->startTime;
    updateLabels(*track);
}

void SystemTrack::predict(double t) {
    for (auto& [s, tracks] : sensorTracks) {
        for (auto& [i, track] : tracks) {
            track->coastingTime += t - time;
        }
    }
    Track::predict(t);
    for (const int s : {2, 0}) {
        for (auto& [i, track] : sensorTracks[s]) {
            track->predict(t);
        }
    }
}

double SystemTrack::getAge() const {
    return hasTracks(0) ? first(0).time - first(0).startTime : -1.0;
}

std::optional<double> SystemTrack::getSpeed() const {
    return hasTracks(2) ? first(2).getSpeed() : std::nullopt;
}

Label SystemTrack::getLabel(std::size_t which) const {
    if (!voted[which] && hasTracks(2)) {
        const Label label = first(2).getLabel(which);
        const bool isClass = which == 0;
        return {label.name, isClass ? label.probability * 100.0 : label.probability};
    }
    return labels[which];
}

bool SystemTrack::hasTracks(int s) const {
    const auto tracks = sensorTracks.find(s);
    return tracks != sensorTracks.end() && !tracks->second.empty();
}

bool SystemTrack::hasCoastingTracks(int s) const {
    if (sensorTracks.count(s) == 0) {
        return false;
    }
    for (const auto& [i, track] : sensorTracks.at(s)) {
        if (track->coastingTime > 0.0) {
            return true;
        }
    }
    return false;
}

void SystemTrack::pruneSensorTracksByIdx(int s, int idx) {
    if (!hasTracks(s) || sensorTracks[s].count(idx) == 0) {
        return;
    }
    applyDefusion(*sensorTracks[s][idx]);
    sensorTracks[s].erase(idx);
    if (s == 0 && hasTracks(2)) {
        box = first(2).box;
    }
}

void SystemTrack::pruneSensorTracksByCoastingTime(int s) {
    std::vector<int> ids;
    for (const auto& [i, track] : sensorTracks[s]) {
        ids.push_back(i);
    }
    for (const int i : ids) {
        if (sensorTracks[s][i]->coastingTime >= 0.5) {
            pruneSensorTracksByIdx(s, i);
        }
    }
}

void SystemTrack::updateState(const std::shared_ptr<Track>& track) {
    std::map<int, std::shared_ptr<Track>>& tracks = sensorTracks[track->source];
    Matrix6 Y = inverse(P);
    Vector6 y = product(inverse(P), x);
    if (tracks.count(track->id) > 0) {
        const Track& old = *tracks[track->id];
        Y = sum(Y, -1.0, inverse(old.P));
        y = sum(y, -1.0, product(inverse(old.P), old.x));
        track->startTime = old.startTime;
    }
    Y = sum(Y, 1.0, inverse(track->P));
    y = sum(y, 1.0, product(inverse(track->P), track->x));
    tracks[track->id] = track;
    P = inverse(Y);
    x = product(P, y);
    if (track->source == 0 || (track->source == 2 && sensorTracks[0].empty())) {
        box = track->box;
    }
    updateOriginAndStartTime();
}

void SystemTrack::applyDefusion(const Track& track) {
    if (sensorTracks[0].size() + sensorTracks[2].size() < 2) {
        return;
    }
    const Matrix6 Y = sum(inverse(P), -1.0, inverse(track.P));
    const Vector6 y = sum(product(inverse(P), x), -1.0, product(inverse(track.P), track.x));
    P = inverse(Y);
    x = product(P, y);
}

void SystemTrack::updateOriginAndStartTime() {
    if (Veskar::isInsideImage(startPosition[0], startPosition[1])) {
        return;
    }
    if (!Veskar::isInsideImage(x[0], x[2])) {
        startPosition = {x[0], x[2]};
    } else {
        const Eigen::Vector2d entry =
            Veskar::intersectionWithImageBorder(startPosition[0], startPosition[1], x[0], x[2]);
        startPosition = {entry[0], entry[1]};
    }
    systemStartTime = time;
}

double SystemTrack::getTrackProbability() const {
    double total = 0.0;
    for (const double q : trackProbabilityHistory) {
        total += q;
    }
    return total / 5.0;
}

void SystemTrack::updateTrackProbability(double gain) {
    const double q = getTrackProbability();
    trackProbabilityHistory.pop_back();
    trackProbabilityHistory.insert(trackProbabilityHistory.begin(),
                                   q / (1.0 / gain + (1.0 - 1.0 / gain) * q));
}

void SystemTrack::updateIsConfident() {
    isConfident = hasTracks(2) || (hasTracks(0) && first(0).isConfident);
}

void SystemTrack::updateLabels(const Track& track) {
    for (std::size_t which = 0; which < labels.size(); ++which) {
        const Label label = track.getLabel(which);
        if (track.source == 0 && label.name != "unknown") {
            voted[which] = true;
            labels[which] = label;
        }
    }
}

}  // namespace VeskarTest::Literal
