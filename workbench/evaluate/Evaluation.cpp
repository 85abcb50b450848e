// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Evaluation.h"

#include <veskar/SystemTrack.h>

#include "host/fused/SystemTrackReading.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

const std::string wholeScene = "all";

/// Nothing when the track has no valid ground position.
std::optional<Picture::Reported> reportedOf(const FusedTrack& track) {
    if (!track.ground || !track.ground->position.allFinite() ||
        !track.ground->velocity.allFinite()) {
        return std::nullopt;
    }
    Picture::Reported reported;
    reported.track.id = track.id;
    reported.track.className = track.labels.objectClass.name;
    reported.track.position = track.ground->position;
    reported.track.velocity = track.ground->velocity;
    reported.track.covariance = track.ground->covariance;
    reported.track.velocityCovariance = track.ground->velocityCovariance;
    reported.coasting = std::numeric_limits<double>::infinity();
    for (const Support& support : track.sensors) {
        reported.coasting = std::min(reported.coasting, support.coasting);
    }
    return reported;
}

Instant instantOf(const TruthFrame& truth, std::vector<JudgedTrack> tracks) {
    Instant instant{truth.time, {}, std::move(tracks)};
    for (const TruthObject& object : truth.objects) {
        instant.truths.push_back({object.id, object.className, object.position, object.velocity});
    }
    return instant;
}

bool isInFieldOfView(const RadarSetup& radar, const Eigen::Vector2d& position) {
    const Eigen::Vector2d offset = position - radar.mounting.position.head<2>();
    const double yaw = radians(radar.mounting.yaw);
    const Eigen::Vector2d forward(std::cos(yaw), std::sin(yaw));
    const double offAxis =
        std::abs(std::atan2(forward[0] * offset[1] - forward[1] * offset[0], forward.dot(offset)));
    return offset.norm() <= radar.maximumRange && offAxis <= radians(0.5 * radar.fieldOfView);
}

/// Restricts an instant to a part of the scene. A track that is matched to an object is kept or
/// left out with the object, so that tracks near the border between two parts count neither as
/// missed nor as false.
template <typename TruthIsKept, typename TrackIsKept>
Instant partOf(const Instant& whole, const Pairs& pairs, TruthIsKept truthIsKept,
               TrackIsKept trackIsKept) {
    Instant part{whole.time, {}, {}};
    std::vector<bool> keepTruth;
    for (const TrueObject& truth : whole.truths) {
        keepTruth.push_back(truthIsKept(keepTruth.size(), truth));
        if (keepTruth.back()) {
            part.truths.push_back(truth);
        }
    }
    std::vector<bool> keepTrack;
    for (const JudgedTrack& track : whole.tracks) {
        keepTrack.push_back(trackIsKept(track));
    }
    for (const auto& [truth, track] : pairs) {
        keepTrack[static_cast<std::size_t>(track)] = keepTruth[static_cast<std::size_t>(truth)];
    }
    for (std::size_t i = 0; i < keepTrack.size(); ++i) {
        if (keepTrack[i]) {
            part.tracks.push_back(whole.tracks[i]);
        }
    }
    return part;
}

}  // namespace

Evaluation::Evaluation(const RecordingHeader& installation, const Veskar::Config& config,
                       const EvaluationOptions& options)
    : header_(installation), options_(options), adapter_(installation, config) {
    const Picture empty(options_.coastingLimit);
    trackers_.push_back({"fusion", std::nullopt, 0, empty, {}, {}});
    for (const Veskar::Source source : {Veskar::Radar, Veskar::VideoObject}) {
        for (const int hits : options_.confirmationHits) {
            trackers_.push_back(
                {fmt::format("{} {}", sourceName(source), hits), source, hits, empty, {}, {}});
        }
    }
}

void Evaluation::add(const RecordingLine& line) {
    if (const auto* truth = std::get_if<TruthFrame>(&line)) {
        predictSlowSensors(truth->time);
        judge(*truth);
    } else {
        takeSensor(std::get<SensorFrame>(line));
    }
}

void Evaluation::add(const FusedFrame& frame) {
    SensorTracks reports;
    for (const FusedTrack& track : frame.tracks) {
        const std::optional<Picture::Reported> reported = reportedOf(track);
        if (track.confirmed && reported) {
            reports.push_back(*reported);
        }
    }
    trackers_.front().picture.replace(frame.time, std::move(reports));
}

/// Predicts the tracks of slow sensors as the fusion's host does, and updates the pictures with
/// them.
void Evaluation::predictSlowSensors(double time) {
    while (const auto added = duties_.nextBefore(time)) {
        if (added->basis != nullptr) {
            show(added->source, added->time, adapter_.convert(*added->basis, 0.0, added->ahead));
        }
    }
}

void Evaluation::takeSensor(const SensorFrame& frame) {
    predictSlowSensors(frame.received);
    duties_.saw(frame);
    for (const Report& report : frame.tracks) {
        const ReportBase& base = baseOf(report);
        if (base.coasting == 0.0) {
            ++hitsOfTrack_[{frame.source, base.id}];
        }
    }
    show(frame.source, frame.time, adapter_.convert(frame));
}

/// Converts sensor tracks like system tracks with a single sensor, so that both are judged alike.
void Evaluation::show(Veskar::Source source, double time,
                      const std::vector<std::shared_ptr<Veskar::Track>>& tracks) {
    for (Judged& tracker : trackers_) {
        if (tracker.source != source) {
            continue;
        }
        SensorTracks reports;
        for (const std::shared_ptr<Veskar::Track>& track : tracks) {
            if (hitsOfTrack_[{source, track->id}] < tracker.hits) {
                continue;
            }
            const Veskar::SystemTrack alone(track, track->id);
            if (const auto reported = reportedOf(readTrack(alone, adapter_))) {
                reports.push_back(*reported);
            }
        }
        tracker.picture.replace(time, std::move(reports));
    }
}

void Evaluation::judge(const TruthFrame& truth) {
    for (const TruthObject& object : truth.objects) {
        const bool isNew =
            std::find(classes_.begin(), classes_.end(), object.className) == classes_.end();
        if (isNew && object.className != wholeScene) {
            classes_.push_back(object.className);
        }
    }
    for (Judged& tracker : trackers_) {
        judge(tracker, truth);
    }
    ++judged_;
}

void Evaluation::judge(Judged& tracker, const TruthFrame& truth) {
    const SetDistanceParameters setDistance{options_.cutoff, 2.0};
    const Instant everything = instantOf(truth, tracker.picture.at(truth.time));
    const Instant scene = partOf(
        everything, matchWithinCutoff(everything, setDistance),
        [&](std::size_t i, const TrueObject&) {
            return !options_.commonFieldOfView ||
                   (truth.objects[i].inVideo && truth.objects[i].inRadar);
        },
        [&](const JudgedTrack& track) {
            return !options_.commonFieldOfView || isInCommonView(track.position);
        });
    Scorecard& whole = card(tracker, wholeScene);
    whole.add(scene);
    tracker.moments.push_back({truth.time, gospa(scene, setDistance), whole.matches()});

    const Pairs pairs = matchWithinCutoff(scene, setDistance);
    for (const std::string& name : classes_) {
        card(tracker, name)
            .add(partOf(
                scene, pairs,
                [&](std::size_t, const TrueObject& object) { return object.className == name; },
                [&](const JudgedTrack& track) { return track.className == name; }));
    }
    for (const double band : options_.bands) {
        const std::string name = bandName(band);
        const auto isInside = [&](const auto& member) { return bandOf(member.position) == name; };
        card(tracker, name)
            .add(partOf(
                scene, pairs,
                [&](std::size_t, const TrueObject& object) { return isInside(object); }, isInside));
    }
}

Scorecard& Evaluation::card(Judged& tracker, const std::string& part) {
    return tracker.cards
        .try_emplace(part, options_.cutoff, adapter_.projection().origin().head<2>())
        .first->second;
}

bool Evaluation::isInCommonView(const Eigen::Vector2d& position) const {
    return adapter_.projection().sees({position[0], position[1], 0.0}) &&
           isInFieldOfView(header_.radar, position);
}

std::string Evaluation::bandName(double from) const {
    const auto next = std::upper_bound(options_.bands.begin(), options_.bands.end(), from);
    return next == options_.bands.end() ? fmt::format("{} m and more", from)
                                        : fmt::format("{} to {} m", from, *next);
}

/// Empty for ranges below the first band.
std::string Evaluation::bandOf(const Eigen::Vector2d& position) const {
    const double range = (position - adapter_.projection().origin().head<2>()).norm();
    const auto next = std::upper_bound(options_.bands.begin(), options_.bands.end(), range);
    return next == options_.bands.begin() ? "" : bandName(*std::prev(next));
}

std::vector<PartFigures> Evaluation::figures() const {
    std::vector<std::string> parts{wholeScene};
    parts.insert(parts.end(), classes_.begin(), classes_.end());
    for (const double band : options_.bands) {
        parts.push_back(bandName(band));
    }
    std::vector<PartFigures> result;
    for (const std::string& part : parts) {
        PartFigures figures{part, {}};
        for (const Judged& tracker : trackers_) {
            const auto card = tracker.cards.find(part);
            if (card != tracker.cards.end()) {
                figures.trackers.push_back({tracker.name, card->second.figures()});
            }
        }
        result.push_back(std::move(figures));
    }
    return result;
}

std::vector<GospaSeries> Evaluation::gospaOverTime() const {
    std::vector<GospaSeries> series;
    series.reserve(trackers_.size());
    for (const Judged& tracker : trackers_) {
        series.push_back({tracker.name, tracker.moments});
    }
    return series;
}

}  // namespace Workbench
