// SPDX-License-Identifier: Apache-2.0
#include "device/Scene.h"

#include <veskar/Vocabulary.h>

#include <array>

namespace VeskarDevice {
namespace {

constexpr double likelihoodRatio = 1.7;

/// Standard deviations of the components of a report.
Veskar::StateVector deviations(Veskar::Source source) {
    Veskar::StateVector std;
    if (source == Veskar::Radar) {
        std << 0.03, 0.03, 0.1, 0.05, 0.5, 0.5;
    } else {
        std << 0.015, 0.02, 0.015, 0.02, 4.0, 3.0;
    }
    return std;
}

/// Neighbouring components are correlated, as position and rate of a tracked object are.
Veskar::StateMatrix covariance(const Veskar::StateVector& std) {
    Veskar::StateMatrix P;
    for (int j = 0; j < P.cols(); ++j) {
        for (int i = 0; i < P.rows(); ++i) {
            const double correlation = i == j ? 1.0 : (i / 2 == j / 2 ? 0.4 : 0.05);
            P(i, j) = correlation * (std[i] * std[j]);
        }
    }
    return P;
}

}  // namespace

Scene::Scene(const SceneSettings& view, unsigned seed) : settings_(view), random_(seed) {
    for (int i = 0; i < settings_.objects; ++i) {
        objects_.push_back(newObject());
    }
}

Scene::Object Scene::newObject() {
    const std::array<const char*, 4> classes = {"human", "car", "truck", "unknown"};
    Object object{};
    object.state << random_.uniform(-0.95, 0.95), random_.uniform(-0.08, 0.08),
        random_.uniform(-0.9, 0.2), random_.uniform(-0.04, 0.04), random_.uniform(10.0, 120.0), 0.0;
    object.className = classes[static_cast<std::size_t>(random_.integer(0, 3))];
    object.videoId = nextId_++;
    object.radarId = nextId_++;
    return object;
}

void Scene::moveTo(double time) {
    const double dt = time - now_;
    now_ = time;
    for (Object& object : objects_) {
        for (const int position : {0, 2}) {
            double& rate = object.state[position + 1];
            const double next = object.state[position] + dt * rate;
            if (next < -1.0 || next > 1.0) {
                rate = -rate;
            } else {
                object.state[position] = next;
            }
        }
    }
}

std::vector<std::shared_ptr<Veskar::Track>> Scene::report(Veskar::Source source) {
    std::vector<std::shared_ptr<Veskar::Track>> tracks;
    tracks.reserve(objects_.size() + 1);
    for (Object& object : objects_) {
        int& id = source == Veskar::Radar ? object.radarId : object.videoId;
        if (random_.uniform(0.0, 1.0) < settings_.idChange) {
            id = nextId_++;
        }
        if (random_.uniform(0.0, 1.0) >= settings_.dropout) {
            tracks.push_back(measure(object, source, id));
        }
    }
    if (random_.uniform(0.0, 1.0) < settings_.falseAlarms) {
        const Object ghost = newObject();
        tracks.push_back(measure(ghost, source, ghost.videoId));
    }
    return tracks;
}

std::shared_ptr<Veskar::Track> Scene::measure(const Object& object, Veskar::Source source, int id) {
    const Veskar::StateVector std = deviations(source);
    Veskar::StateVector state = object.state;
    for (int i = 0; i < state.size(); ++i) {
        state[i] += std[i] * random_.uniform(-1.0, 1.0);
    }
    const std::string unknown = Veskar::Vocabulary::unknown;
    auto track = std::make_shared<Veskar::Track>(state, covariance(std), now_, id, source,
                                                 Veskar::ImagePlaneRange, object.className, 0.8,
                                                 unknown, 0.0, unknown, 0.0, unknown, 0.0);
    const double width = 1.0 / object.state[4];
    track->boundingBox << state[0] - width / 2.0, width, state[2], 2.0 * width;
    track->probability = likelihoodRatio;
    if (source == Veskar::Radar) {
        track->speed = 3.0;
    }
    return track;
}

}  // namespace VeskarDevice
