// SPDX-License-Identifier: Apache-2.0
// A system track's probability of existence, its confidence and its labels.
#include <veskar/SystemTrack.h>
#include <veskar/Vocabulary.h>

#include "track/ExactType.h"
#include "track/Support.h"

#include <algorithm>
#include <numeric>

namespace Veskar {
namespace {

/// Where one of the four labels lives, in the system track and in the tracks that report it.
struct Label {
    bool SystemTrack::*voted;
    std::string Track::*name;
    double Track::*probability;
    std::string (Track::*getName)() const;
    double (Track::*getProbability)() const;

    void update(SystemTrack& system, const Track& track) const {
        if (track.source != Source::VideoObject) {
            return;
        }
        if (isExactly<Track>(track)) {
            take(system, track.*name, track);  // without the copy that the getter makes
        } else {
            take(system, (track.*getName)(), track);
        }
    }

    /// The latest known label of a video-object track wins.
    void take(SystemTrack& system, const std::string& reported, const Track& track) const {
        if (reported == Vocabulary::unknown) {
            return;
        }
        system.*voted = true;
        system.*name = reported;
        system.*probability = (track.*getProbability)();
    }

    std::string nameIn(const SystemTrack& system) const {
        const Track* radar = labelFallback(system, system.*voted);
        return radar == nullptr ? system.*name : (radar->*getName)();
    }

    /// @param radarScale factor on a probability that the radar track answers
    double probabilityIn(const SystemTrack& system, double radarScale = 1.0) const {
        const Track* radar = labelFallback(system, system.*voted);
        return radar == nullptr ? system.*probability : radarScale * (radar->*getProbability)();
    }
};

constexpr Label objectClass = {&SystemTrack::classVoted, &Track::className,
                               &Track::classProbability, &Track::getClassName,
                               &Track::getClassProbability};
constexpr Label color = {&SystemTrack::colorVoted, &Track::colorName, &Track::colorProbability,
                         &Track::getColorName, &Track::getColorProbability};
constexpr Label upperClothingColor = {
    &SystemTrack::upperClothingColorVoted, &Track::upperClothingColorName,
    &Track::upperClothingColorProbability, &Track::getUpperClothingColorName,
    &Track::getUpperClothingColorProbability};
constexpr Label lowerClothingColor = {
    &SystemTrack::lowerClothingColorVoted, &Track::lowerClothingColorName,
    &Track::lowerClothingColorProbability, &Track::getLowerClothingColorName,
    &Track::getLowerClothingColorProbability};

}  // namespace

double SystemTrack::getTrackProbability() const {
    return std::accumulate(trackProbabilityHistory.begin(), trackProbabilityHistory.end(), 0.0) /
           5.0;
}

void SystemTrack::updateTrackProbability(double gain) {
    if (trackProbabilityHistory.empty()) {
        return;
    }
    const double q = getTrackProbability();
    const double posterior = q / (1.0 / gain + (1.0 - 1.0 / gain) * q);
    std::move_backward(trackProbabilityHistory.begin(), trackProbabilityHistory.end() - 1,
                       trackProbabilityHistory.end());
    trackProbabilityHistory.front() = posterior;
}

void SystemTrack::updateIsConfident() {
    const Track* video = firstTrack(*this, Source::VideoObject);
    isConfident = hasTracks(Source::Radar) || (video != nullptr && video->isConfident);
}

void SystemTrack::updateClass(const Track& track) {
    objectClass.update(*this, track);
}

void SystemTrack::updateColor(const Track& track) {
    color.update(*this, track);
}

void SystemTrack::updateUpperClothingColor(const Track& track) {
    upperClothingColor.update(*this, track);
}

void SystemTrack::updateLowerClothingColor(const Track& track) {
    lowerClothingColor.update(*this, track);
}

std::string SystemTrack::getClassName() const {
    return objectClass.nameIn(*this);
}

double SystemTrack::getClassProbability() const {
    // Users count on a radar's class probability in percent; the video one stays a fraction.
    return objectClass.probabilityIn(*this, 100.0);
}

std::string SystemTrack::getColorName() const {
    return color.nameIn(*this);
}

double SystemTrack::getColorProbability() const {
    return color.probabilityIn(*this);
}

std::string SystemTrack::getUpperClothingColorName() const {
    return upperClothingColor.nameIn(*this);
}

double SystemTrack::getUpperClothingColorProbability() const {
    return upperClothingColor.probabilityIn(*this);
}

std::string SystemTrack::getLowerClothingColorName() const {
    return lowerClothingColor.nameIn(*this);
}

double SystemTrack::getLowerClothingColorProbability() const {
    return lowerClothingColor.probabilityIn(*this);
}

}  // namespace Veskar
