// SPDX-License-Identifier: Apache-2.0
#include "association/NearestSensorToSystem.h"

#include "track/Dereference.h"

#include <limits>

namespace Veskar {

void NearestSensorToSystem::associate(const SensorTracks& sensors, const SystemTracks& systems,
                                      const Source& source, Pairs& pairs) {
    const bool shares = config_.allowRadarToMultiple && source == Source::Radar;
    // On purpose only video is given to the nearest while radar may be shared.
    const bool givesToNearest = !config_.allowRadarToMultiple || source == Source::VideoObject;
    bool gathered = false;
    heldTracks_.start(systems);
    for (std::size_t j = 0; j < sensors.size(); ++j) {
        const Track& sensor = dereference(sensors[j]);
        const bool held = heldTracks_.holds(sensor);
        if (!rules_.isFresh(sensor) || (!shares && (held || !givesToNearest))) {
            continue;
        }
        if (!gathered) {
            gatherPlaces(systems, source);
            gathered = true;
        }
        if (shares) {
            giveToAll(sensor, static_cast<int>(j), pairs);
        } else {
            giveToNearest(sensor, static_cast<int>(j), pairs);
        }
    }
}

void NearestSensorToSystem::gatherPlaces(const SystemTracks& systems, const Source& source) {
    places_.clear();
    for (std::size_t i = 0; i < systems.size(); ++i) {
        const SystemTrack& system = dereference(systems[i]);
        if (rules_.isOpen(system, source)) {
            places_.push_back({static_cast<int>(i), &system, false, gate_.sideOf(system)});
        }
    }
    search_.assign(places_.size(),
                   [this](std::size_t k) -> const Marginals& { return places_[k].side.marginals; });
}

template <typename Visit>
void NearestSensorToSystem::visitFreeInGate(const Track& sensor, Visit visit) {
    const GateSide side = gate_.sideOf(sensor);
    search_.forEachNear(side.marginals, [&](std::size_t k) {
        Place& place = places_[k];
        if (place.taken || !rules_.mayReplaceHeld(*place.track, sensor)) {
            return;
        }
        if (const Gate::Cost cost = gate_.costInside(place.side, side); cost.passed) {
            visit(place, cost.value);
        }
    });
}

void NearestSensorToSystem::giveToAll(const Track& sensor, int index, Pairs& pairs) {
    visitFreeInGate(sensor, [&pairs, index](Place& place, double /*cost*/) {
        place.taken = true;
        pairs.emplace_back(place.index, index);
    });
}

void NearestSensorToSystem::giveToNearest(const Track& sensor, int index, Pairs& pairs) {
    double least = std::numeric_limits<double>::max();
    Place* best = nullptr;
    visitFreeInGate(sensor, [&least, &best](Place& place, double cost) {
        if (cost < least) {
            least = cost;
            best = &place;
        }
    });
    if (best != nullptr) {
        best->taken = true;
        pairs.emplace_back(best->index, index);
    }
}

}  // namespace Veskar
