// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/NearPairs.h"

#include <cmath>
#include <cstddef>

namespace Workbench {
namespace {

struct Place {
    double x;
    double y;
    int track;
};

}  // namespace

NearPairs nearPairs(const Instant& instant, double reach) {
    // Sorted by x, the tracks near an object stand together: in a crowd of hundreds, few of the
    // distances need to be computed.
    std::vector<Place> places;
    places.reserve(instant.tracks.size());
    for (const JudgedTrack& track : instant.tracks) {
        places.push_back({track.position.x(), track.position.y(), static_cast<int>(places.size())});
    }
    std::sort(places.begin(), places.end(),
              [](const Place& a, const Place& b) { return a.x < b.x; });
    NearPairs pairs;
    for (std::size_t i = 0; i < instant.truths.size(); ++i) {
        const Eigen::Vector2d& truth = instant.truths[i].position;
        const auto first = static_cast<std::ptrdiff_t>(pairs.size());
        for (auto place =
                 std::lower_bound(places.begin(), places.end(), truth.x() - reach,
                                  [](const Place&candidate, double x) { return candidate.x < x; });
             place != places.end() && place->x <= truth.x() + reach; ++place) {
            if (std::abs(place->y - truth.y()) > reach) {
                continue;
            }
            const double distance = (Eigen::Vector2d(place->x, place->y) - truth).norm();
            if (distance <= reach) {
                pairs.push_back({static_cast<int>(i), place->track, distance, 0});
            }
        }
        std::sort(pairs.begin() + first, pairs.end(),
                  [](const NearPair& a, const NearPair& b) { return a.track < b.track; });
    }
    return pairs;
}

}  // namespace Workbench
