// SPDX-License-Identifier: Apache-2.0
#include "association/Scene.h"

#include "support/TrackFactory.h"

#include <array>
#include <cmath>
#include <string>

namespace VeskarTest {
namespace {

using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;

/// Three class groups, one class without a group, and one unsupported class.
const std::array<std::string, 8> classes = {"human", "car",  "truck",      "unknown",
                                            "human", "bike", "human_face", "motorcycle_bicycle"};

bool chance(RandomEstimates& random, double probability) {
    return random.uniform(0.0, 1.0) < probability;
}

std::shared_ptr<Track> makeSensorTrack(const SceneSettings& settings, RandomEstimates& random,
                                       Source source, int id) {
    Report report;
    report.source = source;
    report.id = id;
    report.time = random.integer(1, 12);
    report.className = classes[random.integer(0, classes.size() - 1)];
    report.classProbability = random.uniform(0.0, 1.0);
    if (settings.onGrid) {
        for (const int k : {0, 2, 4}) {
            report.state[k] = random.integer(-1, 1);
        }
        report.state[1] = random.integer(0, 1);
        report.covariance = Veskar::StateMatrix::Identity() * 0.5;
    } else {
        report.state = random.state();
        report.covariance = random.covariance() * random.uniform(0.05, 0.5);
        for (const int k : {0, 2, 4}) {
            report.state[k] *= settings.spread;
        }
        // Some components are nearly at rest.
        for (const int k : {1, 3, 5}) {
            report.state[k] *= chance(random, 0.3) ? 0.001 : 0.5;
        }
    }
    auto track = makeTrack(report);
    track->time += random.uniform(0.0, 6.0);
    track->boundingBox = {0.0, 0.2, 0.0, random.uniform(0.0, 0.4)};
    if (chance(random, source == Source::Radar ? 0.7 : 0.1)) {
        track->speed = random.uniform(0.0, 6.0);
    }
    return track;
}

/// Places a report near the first track of a system track, to get more pairs inside the gates.
void standBeside(Track& track, const SystemTrack& system, RandomEstimates& random) {
    for (int k = 0; k < 6; ++k) {
        track.state[k] = system.state[k] + random.uniform(-0.2, 0.2);
    }
}

Source drawSource(RandomEstimates& random) {
    const int draw = random.integer(0, 9);
    return draw < 5 ? Source::VideoObject : draw < 9 ? Source::Radar : Source::VideoVura;
}

}  // namespace

Scene makeScene(const SceneSettings& settings, RandomEstimates& random) {
    Scene scene;
    scene.source = settings.source;
    for (int i = 0; i < settings.systems; ++i) {
        auto first = makeSensorTrack(settings, random, drawSource(random), 1000 + i);
        if (!scene.systems.empty() && !settings.onGrid && chance(random, 0.3)) {
            const int k = random.integer(0, static_cast<int>(scene.systems.size()) - 1);
            standBeside(*first, *scene.systems[k], random);
        }
        auto system = makeSystemTrack(first, 1 + i);
        if (chance(random, settings.otherSource)) {
            const Source other =
                first->source == Source::Radar ? Source::VideoObject : Source::Radar;
            const auto second = makeSensorTrack(settings, random, other, 2000 + i);
            if (!settings.onGrid) {
                standBeside(*second, *system, random);
            }
            system->updateState(second);
            system->updateClass(*second);
        }
        if (settings.onGrid) {
            system->covariance = Veskar::StateMatrix::Identity() * 0.5;
            system->state = first->state;
        }
        if (settings.allSourcesKnown) {
            system->setCoastingTimeTracks(0.0);
            for (const Source s : {Source::VideoVura, Source::System}) {
                system->sensorTracks[s];
            }
        }
        if (chance(random, 0.1)) {
            scene.excludedIds.insert(system->id);
        }
        scene.systems.push_back(system);
    }
    for (int j = 0; j < settings.sensors; ++j) {
        auto sensor = makeSensorTrack(settings, random, settings.source, 3000 + j);
        if (!scene.systems.empty()) {
            const int k = random.integer(0, static_cast<int>(scene.systems.size()) - 1);
            SystemTrack& system = *scene.systems[k];
            if (!settings.onGrid && chance(random, 0.7)) {
                standBeside(*sensor, system, random);
            }
            if (chance(random, settings.reported) && system.hasTracks(settings.source)) {
                sensor->id = system.getSensorTracks(settings.source).begin()->first;
            }
        }
        scene.sensors.push_back(sensor);
    }
    return scene;
}

Veskar::Config makeSceneConfig(RandomEstimates& random) {
    Veskar::Config config;
    config.module.gatingDistance = random.uniform(1.0, 5.0);
    config.module.positionGatingDistance = random.uniform(0.5, 4.0);
    config.module.velocityGatingSimilarity = random.uniform(-0.5, 0.9);
    config.module.velocityMinGatingLimit = random.uniform(0.0, 1.0);
    config.module.stationaryBlockingMinSpeed = 10.0 / 3.6;
    config.module.stationaryBlockingMaxUVSpeed = 0.03;
    config.module.stationaryBlockingMinVideoAge = 3.0;
    config.detectionPriority.vodHeightFractionLimit = 0.1;
    return config;
}

}  // namespace VeskarTest
