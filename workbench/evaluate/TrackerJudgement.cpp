// SPDX-License-Identifier: Apache-2.0
#include "evaluate/TrackerJudgement.h"

#include "io/Interruption.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Workbench {
namespace {

bool isInFieldOfView(const RadarSetup& radar, const Eigen::Vector2d& position) {
    const Eigen::Vector2d offset = position - radar.mounting.position.head<2>();
    const double yaw = radians(radar.mounting.yaw);
    const Eigen::Vector2d forward(std::cos(yaw), std::sin(yaw));
    const double offAxis =
        std::abs(std::atan2(forward[0] * offset[1] - forward[1] * offset[0], forward.dot(offset)));
    return offset.norm() <= radar.maximumRange && offAxis <= radians(0.5 * radar.fieldOfView);
}

/// Calls a function with the card and the scene of every part.
template <typename Cards, typename Function>
void forEachPart(Cards& cards, const PartedScene& scene, Function function) {
    function(cards.whole, scene.scene);
    const auto restrictTo = [&](Scorecard& card, std::int32_t Membership::*kind, std::size_t part) {
        const auto keep = [&](const std::vector<Membership>& members) {
            std::vector<bool> kept(members.size());
            std::transform(members.begin(), members.end(), kept.begin(), [&](const Membership& m) {
                return m.*kind == static_cast<std::int32_t>(part);
            });
            return kept;
        };
        const std::vector<bool> truths = keep(scene.truths);
        const std::vector<bool> tracks = keep(scene.tracks);
        const auto isWhole = [](const std::vector<bool>& kept) {
            return std::find(kept.begin(), kept.end(), false) == kept.end();
        };
        if (isWhole(truths) && isWhole(tracks)) {
            function(card, scene.scene);
        } else {
            function(card, partOf(scene.scene, truths, tracks));
        }
    };
    for (std::size_t i = 0; i < cards.classes.size(); ++i) {
        restrictTo(cards.classes[i], &Membership::classIndex, i);
    }
    for (std::size_t i = 0; i < cards.bands.size(); ++i) {
        restrictTo(cards.bands[i], &Membership::band, i);
    }
}

SetDistanceParameters setDistance(const EvaluationOptions& options) {
    return {options.cutoff, 2.0};
}

}  // namespace

Membership SceneParts::membershipOf(const std::string& className, const Eigen::Vector2d& position,
                                    const std::vector<std::string>& classes) const {
    Membership parts;
    const auto known = std::find(classes.begin(), classes.end(), className);
    if (known != classes.end()) {
        parts.classIndex = static_cast<std::int32_t>(known - classes.begin());
    }
    // None for ranges below the first band.
    const auto& bands = options_.bands;
    const double range = (position - observer()).norm();
    parts.band = static_cast<std::int32_t>(std::upper_bound(bands.begin(), bands.end(), range) -
                                           bands.begin() - 1);
    return parts;
}

bool SceneParts::isEvaluated(const Eigen::Vector2d& position) const {
    return !options_.commonFieldOfView ||
           (projection_.sees({position[0], position[1], 0.0}) && isInFieldOfView(radar_, position));
}

TrackerJudgement::TrackerJudgement(const SceneParts& sceneParts)
    : parts_(sceneParts), cards_{newCard(), {}, {sceneParts.bands(), newCard()}} {}

Scorecard TrackerJudgement::newCard() const {
    return {parts_.options().cutoff, parts_.observer()};
}

void TrackerJudgement::judge(const TrueMoment& truth, std::vector<JudgedTrack> tracks) {
    while (cards_.classes.size() < truth.classes.size()) {
        cards_.classes.push_back(newCard());
    }
    const PartedScene scene = sceneOf(truth, std::move(tracks));
    forEachPart(cards_, scene, [](Scorecard& card, const JudgedScene& part) { card.add(part); });
    scenes_.write(scene);
    ++judged_;
    if (parts_.options().keepsMoments) {
        const auto& [instant, near, matches] = scene.scene;
        std::vector<int> objects;
        for (const TrueObject& object : instant.truths) {
            objects.push_back(object.id);
        }
        moments_.push_back({instant.time, gospa(instant, matches, setDistance(parts_.options())),
                            cards_.whole.matches(), std::move(objects)});
    }
}

/// The tracker's scene as far as it is evaluated. A track that is matched to an object is kept or
/// left out with the object, and belongs to the same parts, so that tracks near the border between
/// two parts count neither as missed nor as false.
PartedScene TrackerJudgement::sceneOf(const TrueMoment& truth, std::vector<JudgedTrack> tracks) {
    JudgedScene everything = truth.truths.scene;
    auto& [instant, near, matches] = everything;
    instant.tracks = std::move(tracks);
    for (JudgedTrack& track : instant.tracks) {
        track.number = trackNumbers_.try_emplace(track.id, static_cast<int>(trackNumbers_.size()))
                           .first->second;
    }
    near = nearPairs(instant, parts_.options().cutoff);
    matches = matchWithinCutoff(instant, near, setDistance(parts_.options()));

    constexpr int unmatched = -1;
    std::vector<int> partners(instant.tracks.size(), unmatched);
    for (const auto& [i, j] : matches) {
        partners[static_cast<std::size_t>(j)] = i;
    }
    PartedScene kept;
    std::vector<bool> keepTrack;
    for (std::size_t j = 0; j < instant.tracks.size(); ++j) {
        const JudgedTrack& track = instant.tracks[j];
        const auto partner = static_cast<std::size_t>(partners[j]);
        const bool isMatched = partners[j] != unmatched;
        keepTrack.push_back(isMatched ? truth.isEvaluated[partner]
                                      : parts_.isEvaluated(track.position));
        if (keepTrack.back()) {
            kept.tracks.push_back(
                isMatched ? truth.truths.truths[partner]
                          : parts_.membershipOf(track.className, track.position, truth.classes));
        }
    }
    for (std::size_t i = 0; i < truth.isEvaluated.size(); ++i) {
        if (truth.isEvaluated[i]) {
            kept.truths.push_back(truth.truths.truths[i]);
        }
    }
    kept.scene = partOf(everything, truth.isEvaluated, keepTrack);
    pairNumbers_.number(kept.scene.near, kept.scene.instant);
    return kept;
}

void TrackerJudgement::judgeAgain() {
    forEachPart(cards_, {}, [](Scorecard& card, const JudgedScene&) { card.beginAgain(); });
    scenes_.rewind();
    for (int i = 0; i < judged_; ++i) {
        throwIfInterrupted();
        PartedScene parted = scenes_.read();
        JudgedScene& scene = parted.scene;
        scene.near = nearPairs(scene.instant, parts_.options().cutoff);
        pairNumbers_.number(scene.near, scene.instant);
        forEachPart(cards_, parted,
                    [](Scorecard& card, const JudgedScene& part) { card.addAgain(part); });
    }
}

}  // namespace Workbench
