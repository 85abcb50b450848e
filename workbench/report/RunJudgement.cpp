// SPDX-License-Identifier: Apache-2.0
#include "report/RunJudgement.h"

#include "evaluate/EvaluationReport.h"
#include "report/Resolution.h"
#include "report/TrackTable.h"

#include <cmath>
#include <limits>

#include <nlohmann/json.hpp>

namespace Workbench {

RunJudgement::RunJudgement(const RecordingHeader& installation, const Veskar::Config& config)
    : header_(installation) {
    options_.keepsMoments = true;
    if (header_.truth != TruthKind::None) {
        evaluation_.emplace(installation, config, options_);
    }
}

void RunJudgement::add(const FusedFrame& frame) {
    if (evaluation_) {
        evaluation_->add(frame);
    }
}

void RunJudgement::add(const RecordingLine& line) {
    if (evaluation_) {
        evaluation_->add(line);
    }
}

Json RunJudgement::json(double start) {
    if (!evaluation_ || evaluation_->instants() == 0) {
        return nullptr;
    }
    std::vector<double> times;
    Column gospa(metres);
    TrackTable matches({"object"}, {{"track", 1.0}});
    const GospaSeries fusion = evaluation_->gospaOverTime().front();
    for (const GospaMoment& moment : fusion.moments) {
        times.push_back(moment.time);
        gospa.add(header_.truth == TruthKind::Complete ? moment.gospa.distance
                                                       : std::numeric_limits<double>::quiet_NaN());
        matches.beginFrame();
        for (const auto& [object, track] : moment.matches) {
            matches.add({object}, {static_cast<double>(track)});
        }
    }
    return {{"cutoff", options_.cutoff},        {"moments", times.size()},
            {"time", timeColumn(times, start)}, {"gospa", gospa.json()},
            {"matches", matches.json()},        {"parts", parts()}};
}

Json RunJudgement::parts() {
    Json all = Json::array();
    for (const PartFigures& part : evaluation_->figures()) {
        if (part.trackers.empty()) {
            continue;
        }
        Json& ofPart = all.emplace_back(
            Json{{"part", part.part}, {"trackers", Json::array()}, {"figures", Json::array()}});
        for (const TrackerFigures& tracker : part.trackers) {
            ofPart["trackers"].push_back(tracker.tracker);
        }
        for (std::size_t row = 0; row < part.trackers.front().figures.size(); ++row) {
            const Figure& first = part.trackers.front().figures[row];
            Json values = Json::array();
            for (const TrackerFigures& tracker : part.trackers) {
                const Figure& figure = tracker.figures[row];
                values.push_back(isAllowed(figure, header_) && std::isfinite(figure.value)
                                     ? Json(std::nearbyint(figure.value * 1e4) / 1e4)
                                     : Json(nullptr));
            }
            ofPart["figures"].push_back({{"key", first.key},
                                         {"label", first.label},
                                         {"decimals", first.decimals},
                                         {"values", std::move(values)}});
        }
    }
    return all;
}

}  // namespace Workbench
