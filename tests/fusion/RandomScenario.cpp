// SPDX-License-Identifier: Apache-2.0
#include "fusion/RandomScenario.h"

#include <algorithm>
#include <cmath>

namespace VeskarTest {

using Veskar::Source;
using Veskar::StateVector;
using Veskar::Track;

RandomScenario::RandomScenario(unsigned seed, const Switches& switches) : random_(seed) {
    switches.apply(config_);
    auto& module = config_.module;
    module.gainNegative = {random_.uniform(0.5, 0.9), random_.uniform(0.5, 0.9)};
    module.gatingDistance = random_.uniform(2.0, 6.0);
    module.positionGatingDistance = random_.uniform(1.5, 4.0);
    module.velocityGatingSimilarity = random_.uniform(-0.8, 0.5);
    module.velocityMinGatingLimit = random_.uniform(0.0, 1.5);
    module.stationaryBlockingMinSpeed = 4.0;
    module.stationaryBlockingMaxUVSpeed = 0.3;
    module.stationaryBlockingMinVideoAge = random_.uniform(0.0, 2.0);
    config_.detectionPriority.vodHeightFractionLimit = 0.1;
    module.systemTrackConfirmationLimitUpper = random_.uniform(0.7, 0.97);
    module.systemTrackConfirmationLimitLower = random_.uniform(0.51, 0.7);

    const int count = random_.integer(1, 4);
    for (int i = 0; i < count; ++i) {
        objects_.push_back(makeObject());
    }
}

template <typename T>
T RandomScenario::oneOf(const std::vector<T>& values) {
    return values[static_cast<std::size_t>(
        random_.integer(0, static_cast<int>(values.size()) - 1))];
}

Step RandomScenario::next() {
    advance();
    Step step{};
    step.source = chance(0.5) ? Source::Radar : Source::VideoObject;
    if (chance(0.02)) {
        step.source = Source::VideoVura;
    }
    step.timestamp = time_;
    if (step.source == Source::Radar) {
        step.timestamp += random_.uniform(-0.25, 0.12);  // late ones, and some that are held back
    } else if (chance(0.03)) {
        step.timestamp -= 0.06;
    }
    step.now = std::chrono::nanoseconds(static_cast<std::int64_t>((time_ + 0.02) * 1e9));
    if (chance(0.05)) {
        return step;
    }
    for (Object& object : objects_) {
        report(object, step);
    }
    disturb(step);
    return step;
}

/// Advances the scene; the time step may be a pause or zero.
void RandomScenario::advance() {
    double dt = random_.uniform(0.03, 0.07);
    if (chance(0.02)) {
        dt = random_.uniform(0.3, 1.8);
    } else if (chance(0.05)) {
        dt = 0.0;
    }
    time_ += dt;
    for (Object& object : objects_) {
        object.state[0] += dt * object.state[1];
        object.state[2] += dt * object.state[3];
    }
    if (chance(0.01) && objects_.size() > 1) {
        objects_.pop_back();
    }
    if (chance(0.02) && objects_.size() < 5) {
        objects_.push_back(makeObject());
    }
}

StateVector RandomScenario::placeInScene() {
    StateVector state;
    state << random_.uniform(-1.3, 1.3), random_.uniform(-0.3, 0.3), random_.uniform(-1.1, 1.1),
        random_.uniform(-0.3, 0.3), random_.uniform(0.0, 2.0), random_.uniform(-0.3, 0.3);
    return state;
}

RandomScenario::Object RandomScenario::makeObject() {
    Object object;
    object.state = placeInScene();
    object.className = oneOf<std::string>({"human", "human", "car", "animal", "bike"});
    for (const Source source : {Source::VideoObject, Source::Radar}) {
        object.views[source] = {random_.integer(1, 12), random_.integer(0, 10)};
    }
    return object;
}

void RandomScenario::report(Object& object, Step& step) {
    View& view = object.views[step.source];
    if (view.framesLost > 0) {
        --view.framesLost;
        return;
    }
    if (chance(0.02)) {
        view.framesLost = random_.integer(1, 12);
    }
    if (chance(0.02)) {
        view.id = random_.integer(1, 12);
    }
    if (chance(0.08)) {
        return;
    }
    step.tracks.push_back(makeReport(step, view.id, object));
    if (chance(0.03)) {
        step.tracks.back()->state = placeInScene();
    }
}

std::shared_ptr<Track> RandomScenario::makeReport(const Step& step, int id, const Object& object) {
    StateVector state = object.state;
    for (int i = 0; i < 6; ++i) {
        state[i] += random_.uniform(-0.2, 0.2);
    }
    // Condition numbers below 100, so that inverses and their differences stay accurate.
    const Veskar::StateMatrix P =
        0.02 * random_.covariance() + 0.01 * Veskar::StateMatrix::Identity();
    std::string className = object.className;
    if (chance(0.1)) {
        className = oneOf<std::string>({"human", "car", "truck", "bike", "unknown", "human_face"});
    }
    auto track = std::make_shared<Track>(
        state, P, step.timestamp, id, step.source, Veskar::CoordinateSystem::ImagePlaneRange,
        className, random_.uniform(0.0, 1.0), "unknown", 0.0, "unknown", 0.0, "unknown", 0.0);
    for (std::string* color :
         {&track->colorName, &track->upperClothingColorName, &track->lowerClothingColorName}) {
        *color = oneOf<std::string>({"red", "blue", "unknown"});
    }
    for (double* probability : {&track->colorProbability, &track->upperClothingColorProbability,
                                &track->lowerClothingColorProbability}) {
        *probability = random_.uniform(0.0, 1.0);
    }
    track->boundingBox << state[0] - 0.05, 0.1, state[2], random_.uniform(0.05, 0.4);
    track->probability = oneOf<double>({0.6, 1.0, 1.2, 2.0, 3.0});
    track->coastingTime = chance(0.05) ? oneOf<double>({0.2, 0.45, 0.5, 0.6}) : 0.0;
    track->isConfident = chance(0.7);
    if (chance(0.1)) {
        track->startTime -= random_.uniform(0.0, 5.0);
    }
    if (step.source == Source::Radar && chance(0.8)) {
        track->speed = random_.uniform(0.0, 6.0);
    }
    return track;
}

/// Adds clutter and repeated reports with the same id.
void RandomScenario::disturb(Step& step) {
    if (chance(0.1)) {
        Object nothing = makeObject();
        step.tracks.push_back(makeReport(step, random_.integer(1, 12), nothing));
    }
    if (step.tracks.empty()) {
        return;
    }
    if (chance(0.03)) {
        const int id = oneOf(step.tracks)->id;
        step.tracks.push_back(makeReport(step, id, oneOf(objects_)));
    }
    if (chance(0.1)) {
        std::reverse(step.tracks.begin(), step.tracks.end());
    }
}

}  // namespace VeskarTest
