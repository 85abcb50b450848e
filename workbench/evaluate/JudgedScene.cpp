// SPDX-License-Identifier: Apache-2.0
#include "evaluate/JudgedScene.h"

namespace Workbench {
namespace {

/// Copies the members that are kept.
/// @return the new place of each; -1: not kept
template <typename Member>
std::vector<int> copyKept(const std::vector<Member>& all, const std::vector<bool>& keep,
                          std::vector<Member>& kept) {
    std::vector<int> places(all.size(), -1);
    kept.reserve(all.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (keep[i]) {
            places[i] = static_cast<int>(kept.size());
            kept.push_back(all[i]);
        }
    }
    return places;
}

}  // namespace

JudgedScene partOf(const JudgedScene& whole, const std::vector<bool>& keepTruth,
                   const std::vector<bool>& keepTrack) {
    JudgedScene part;
    part.instant.time = whole.instant.time;
    const std::vector<int> truths = copyKept(whole.instant.truths, keepTruth, part.instant.truths);
    const std::vector<int> tracks = copyKept(whole.instant.tracks, keepTrack, part.instant.tracks);
    if (part.instant.truths.empty() || part.instant.tracks.empty()) {
        return part;
    }
    part.near.reserve(whole.near.size());
    for (const NearPair& pair : whole.near) {
        const int truth = truths[static_cast<std::size_t>(pair.truth)];
        const int track = tracks[static_cast<std::size_t>(pair.track)];
        if (truth >= 0 && track >= 0) {
            part.near.push_back({truth, track, pair.distance, pair.number});
        }
    }
    for (const auto& match : whole.matches) {
        const int truth = truths[static_cast<std::size_t>(match.first)];
        const int track = tracks[static_cast<std::size_t>(match.second)];
        if (truth >= 0 && track >= 0) {
            part.matches.emplace_back(truth, track);
        }
    }
    return part;
}

}  // namespace Workbench
