// SPDX-License-Identifier: Apache-2.0
#include "fusion/LiteralFusion.h"

#include <limits>

namespace VeskarTest::Literal {

void Fusion::cycle(int source, double timestamp, const Tracks& tracks, std::int64_t now) {
    if (source == 0) {
        cycleFrame(0, timestamp, tracks);
        lastVideoTimestamp_ = timestamp;
        return;
    }
    if (source != 2) {
        return;
    }
    radarFrameQueue_.push_back({timestamp, tracks});
    const std::int64_t microseconds = now / 1000;
    const double seconds = static_cast<double>(microseconds) / 1e6;
    while (!radarFrameQueue_.empty()) {
        const Frame front = radarFrameQueue_.front();
        if (seconds - front.timestamp <= 1.5) {
            break;
        }
        cycleFrame(2, front.timestamp, front.tracks);
        radarFrameQueue_.pop_front();
        ++events["radar frame fused because it was old"];
    }
    while (!radarFrameQueue_.empty()) {
        const Frame front = radarFrameQueue_.front();
        if (!(front.timestamp < lastVideoTimestamp_ + 0.1)) {
            break;
        }
        cycleFrame(2, front.timestamp, front.tracks);
        radarFrameQueue_.pop_front();
    }
}

void Fusion::cycleFrame(int source, double timestamp, const Tracks& tracks) {
    predictTracks(timestamp);
    update(source, tracks);
    for (const auto& track : tracks) {
        initialize(track);
    }
    lastSensorTracks_[source] = tracks;
    management();
}

void Fusion::predictTracks(double timestamp) {
    for (const auto& systemTrack : systemTracks) {
        systemTrack->predict(timestamp);
    }
    for (const int source : {2, 0}) {
        for (const auto& track : lastSensorTracks_[source]) {
            if (track->time < timestamp) {
                track->predict(timestamp);
            }
        }
    }
}

void Fusion::update(int source, const Tracks& tracks) {
    refusedSet_.clear();
    marked_.clear();
    continuation(source, tracks);
    association(source, tracks);
    unmarked(source);
}

void Fusion::continuation(int source, const Tracks& tracks) {
    std::map<int, std::shared_ptr<Track>> reports;
    for (const auto& track : tracks) {
        reports[track->id] = track;
    }
    for (const auto& systemTrack : systemTracks) {
        if (!systemTrack->hasTracks(source)) {
            continue;
        }
        const bool fused = systemTrack->hasTracks(2) && systemTrack->hasTracks(0);
        std::vector<int> heldIds;
        for (const auto& [id, held] : systemTrack->sensorTracks.at(source)) {
            heldIds.push_back(id);
        }
        std::vector<int> refused;
        for (const int id : heldIds) {
            if (reports.count(id) == 0) {
                continue;
            }
            const std::shared_ptr<Track> report = reports[id];
            const Gate gate = associator_.checkGating(*systemTrack, *report);
            if (fused && !gate.passed) {
                refused.push_back(id);
                refusedSet_.insert(systemTrack->id);
                ++events["report refused by the gate"];
            } else if (config_.removeClassMismatches && fused && gate.passed) {
                if (!associator_.haveMatchingClasses(*systemTrack, *report, source)) {
                    refused.push_back(id);
                    ++events["report refused by its class"];
                }
            }
            fuse(*systemTrack, report);
        }
        for (const int id : refused) {
            systemTrack->pruneSensorTracksByIdx(source, id);
        }
        if (systemTrack->hasTracks(source)) {
            marked_.insert(systemTrack);
        }
    }
}

void Fusion::association(int source, const Tracks& tracks) {
    if (source == 2 && systemTracks.size() > 1) {
        const Pairs pairs = associator_.systemToSystemAssociation(systemTracks, refusedSet_);
        const SystemTracks before = systemTracks;
        std::set<int> gone;
        for (const auto& [a, b] : pairs) {
            if (gone.count(a) > 0 || gone.count(b) > 0) {
                ++events["pair to merge left out"];
                continue;
            }
            merge(*before.at(static_cast<std::size_t>(a)), *before.at(static_cast<std::size_t>(b)));
            gone.insert(b);
            ++events["system track folded into another"];
        }
        systemTracks.clear();
        for (std::size_t i = 0; i < before.size(); ++i) {
            if (gone.count(static_cast<int>(i)) == 0) {
                systemTracks.push_back(before[i]);
            }
        }
    }
    if (systemTracks.empty() || tracks.empty()) {
        return;
    }
    const Pairs pairs =
        associator_.sensorToSystemAssociation(tracks, systemTracks, source, excludedTrackIds_);
    for (const auto& [i, j] : pairs) {
        const auto& systemTrack = systemTracks.at(static_cast<std::size_t>(i));
        const auto& track = tracks.at(static_cast<std::size_t>(j));
        if (systemTrack->hasTracks(track->source)) {
            continue;
        }
        fuse(*systemTrack, track);
        marked_.insert(systemTrack);
        ++events["sensor track associated"];
    }
}

void Fusion::unmarked(int source) {
    for (const auto& systemTrack : systemTracks) {
        if (marked_.count(systemTrack) > 0) {
            continue;
        }
        double gain = 1.0;
        if (systemTrack->hasCoastingTracks(source)) {
            ++events["coasting track weighed down"];
            if (source == 0) {
                gain = config_.gainNegative.video;
            }
            if (source == 2) {
                gain = config_.gainNegative.radar;
            }
        }
        systemTrack->updateTrackProbability(gain);
    }
}

void Fusion::initialize(const std::shared_ptr<Track>& track) {
    for (const auto& systemTrack : systemTracks) {
        if (systemTrack->sensorTracks.at(track->source).count(track->id) > 0) {
            return;
        }
    }
    if (config_.removeClassMismatches && excludedTrackIds_.count(track->id) > 0) {
        ++events["sensor track kept from starting"];
        return;
    }
    lastId = lastId == std::numeric_limits<int>::max() ? 0 : lastId + 1;
    systemTracks.push_back(std::make_shared<SystemTrack>(track, lastId));
}

void Fusion::management() {
    for (const auto& systemTrack : systemTracks) {
        const double p = systemTrack->getTrackProbability();
        bool confirms = config_.systemTrackConfirmationLimitUpper < p;
        if (!confirms && systemTrack->hasTracks(0) && systemTrack->hasTracks(2)) {
            confirms = config_.systemTrackConfirmationLimitLower < p;
        }
        if (confirms) {
            systemTrack->isConfirmed = true;
        }
        systemTrack->pruneSensorTracksByCoastingTime(2);
        systemTrack->pruneSensorTracksByCoastingTime(0);
        systemTrack->updateIsConfident();
        events["confirmed"] += systemTrack->isConfirmed ? 1 : 0;
    }
    SystemTracks alive;
    for (const auto& systemTrack : systemTracks) {
        if (systemTrack->hasTracks(0) || systemTrack->hasTracks(2)) {
            alive.push_back(systemTrack);
        }
    }
    events["system track died"] += static_cast<int>(systemTracks.size() - alive.size());
    systemTracks = alive;
    if (config_.allowRadarToMultiple) {
        deleteCopies();
    }
    excludedTrackIds_.clear();
}

void Fusion::deleteCopies() {
    std::set<int> ids;
    for (const auto& a : systemTracks) {
        if (!a->hasTracks(2) || a->hasTracks(0) || a->sensorTracks.at(2).size() != 1) {
            continue;
        }
        const int v = a->sensorTracks.at(2).begin()->first;
        for (const auto& b : systemTracks) {
            if (b->hasTracks(0) && b->hasTracks(2) && b->sensorTracks.at(2).count(v) > 0) {
                ids.insert(a->id);
            }
        }
    }
    SystemTracks kept;
    for (const auto& systemTrack : systemTracks) {
        if (ids.count(systemTrack->id) == 0) {
            kept.push_back(systemTrack);
        }
    }
    events["radar-only copy deleted"] += static_cast<int>(systemTracks.size() - kept.size());
    systemTracks = kept;
}

void Fusion::merge(SystemTrack& target, const SystemTrack& other) {
    fuse(target, other.sensorTracks.at(other.hasTracks(0) ? 0 : 2).begin()->second);
}

void Fusion::fuse(SystemTrack& systemTrack, const std::shared_ptr<Track>& track) {
    systemTrack.updateState(track);
    systemTrack.updateTrackProbability(track->probability);
    systemTrack.updateLabels(*track);
}

void Fusion::clear() {
    systemTracks.clear();
    for (auto& [source, tracks] : lastSensorTracks_) {
        tracks.clear();
    }
}

}  // namespace VeskarTest::Literal
