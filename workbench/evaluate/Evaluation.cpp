// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Evaluation.h"

#include <veskar/SystemTrack.h>

#include "host/fused/SystemTrackReading.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

const std::string wholeScene = "all";
/// So many moments wait until they are judged together: one tracker after the other finds its
/// tables in the cache, and starting threads costs nothing in comparison.
constexpr std::size_t batch = 32;

}  // namespace

Evaluation::Evaluation(const RecordingHeader& installation, const Veskar::Config& config,
                       const EvaluationOptions& options)
    : options_(options),
      adapter_(installation, config),
      parts_(installation, adapter_.projection(), options) {
    const auto add = [&](const std::string& name, std::optional<Veskar::Source> source, int hits) {
        trackers_.push_back({name, source, hits, Picture(options_.coastingLimit),
                             std::make_unique<TrackerJudgement>(parts_)});
    };
    add("fusion", std::nullopt, 0);
    for (const Veskar::Source source : {Veskar::Radar, Veskar::VideoObject}) {
        for (const int hits : options_.confirmationHits) {
            add(fmt::format("{} {}", sourceName(source), hits), source, hits);
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
        const std::optional<Picture::Reported> reported = Picture::reportedOf(track);
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
    std::vector<std::pair<int, Picture::Reported>> seen;  // with the number of detections
    for (const std::shared_ptr<Veskar::Track>& track : tracks) {
        const Veskar::SystemTrack alone(track, track->id);
        if (auto reported = Picture::reportedOf(readTrack(alone, adapter_))) {
            seen.emplace_back(hitsOfTrack_[{source, track->id}], std::move(*reported));
        }
    }
    for (Tracker& tracker : trackers_) {
        if (tracker.source != source) {
            continue;
        }
        SensorTracks reports;
        for (const auto& [hits, reported] : seen) {
            if (hits >= tracker.hits) {
                reports.push_back(reported);
            }
        }
        tracker.picture.replace(time, std::move(reports));
    }
}

void Evaluation::judge(const TruthFrame& truth) {
    waiting_.emplace_back();
    Moment& moment = waiting_.back();
    PartedScene& truths = moment.truth.truths;
    truths.scene.instant.time = truth.time;
    for (const TruthObject& object : truth.objects) {
        const std::string& name = object.className;
        if (name != wholeScene &&
            std::find(classes_.begin(), classes_.end(), name) == classes_.end()) {
            classes_.push_back(name);
        }
        const int number =
            truthNumbers_.try_emplace(object.id, static_cast<int>(truthNumbers_.size()))
                .first->second;
        truths.scene.instant.truths.push_back(
            {object.id, number, name, object.position, object.velocity});
        truths.truths.push_back(parts_.membershipOf(name, object.position, classes_));
        moment.truth.isEvaluated.push_back(!options_.commonFieldOfView ||
                                           (object.inVideo && object.inRadar));
    }
    moment.truth.classes = classes_;
    for (const Tracker& tracker : trackers_) {
        moment.tracks.push_back(tracker.picture.at(truth.time));
    }
    ++judged_;
    if (waiting_.size() == batch) {
        judgeWaiting();
    }
}

/// Judges the waiting moments on other threads, after the earlier ones.
void Evaluation::judgeWaiting() {
    finishJudging();
    underWay_ = std::exchange(waiting_, {});
    forEachTracker([this](std::size_t i) {
        for (Moment& moment : underWay_) {
            trackers_[i].judgement->judge(moment.truth, std::move(moment.tracks[i]));
        }
    });
}

/// Starts a function of the tracker's place for every tracker.
void Evaluation::forEachTracker(const std::function<void(std::size_t)>& function) {
    const std::size_t count = trackers_.size();
    const std::size_t threads =
        std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, count);
    const auto next = std::make_shared<std::atomic<std::size_t>>(0);
    for (std::size_t thread = 0; thread < threads; ++thread) {
        threads_.push_back(std::async(std::launch::async, [=] {
            for (std::size_t i = (*next)++; i < count; i = (*next)++) {
                function(i);
            }
        }));
    }
}

void Evaluation::finishJudging() {
    for (std::future<void>& thread : threads_) {
        thread.wait();
    }
    for (std::future<void>& thread : std::exchange(threads_, {})) {
        thread.get();
    }
}

std::string Evaluation::bandName(std::size_t band) const {
    const double from = options_.bands[band];
    return band + 1 == options_.bands.size()
               ? fmt::format("{} m and more", from)
               : fmt::format("{} to {} m", from, options_.bands[band + 1]);
}

std::vector<PartFigures> Evaluation::figures() {
    judgeWaiting();
    finishJudging();
    forEachTracker([this](std::size_t i) { trackers_[i].judgement->judgeAgain(); });
    finishJudging();
    std::vector<PartFigures> result;
    const auto addPart = [&](const std::string& name, auto cardOf) {
        PartFigures& part = result.emplace_back(PartFigures{name, {}});
        for (const Tracker& tracker : trackers_) {
            if (judged_ > 0) {
                part.trackers.push_back(
                    {tracker.name, cardOf(tracker.judgement->cards()).figures()});
            }
        }
    };
    addPart(wholeScene,
            [](const TrackerJudgement::Cards& cards) -> const Scorecard& { return cards.whole; });
    for (std::size_t i = 0; i < classes_.size(); ++i) {
        addPart(classes_[i], [&](const TrackerJudgement::Cards& cards) -> const Scorecard& {
            return cards.classes[i];
        });
    }
    for (std::size_t i = 0; i < options_.bands.size(); ++i) {
        addPart(bandName(i), [&](const TrackerJudgement::Cards& cards) -> const Scorecard& {
            return cards.bands[i];
        });
    }
    return result;
}

std::vector<GospaSeries> Evaluation::gospaOverTime() {
    judgeWaiting();
    finishJudging();
    std::vector<GospaSeries> series;
    series.reserve(trackers_.size());
    for (const Tracker& tracker : trackers_) {
        series.push_back({tracker.name, tracker.judgement->moments()});
    }
    return series;
}

}  // namespace Workbench
