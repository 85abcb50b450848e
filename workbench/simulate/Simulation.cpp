// SPDX-License-Identifier: Apache-2.0
#include "simulate/Simulation.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace Workbench {
namespace {

constexpr double truthInterval = 0.1;  // seconds

}  // namespace

Simulation::Simulation(const Scenario& givenScenario, std::uint64_t givenSeed)
    : scenario(givenScenario),
      seed(givenSeed),
      motion(givenScenario, givenSeed),
      statedCamera(givenScenario.camera.build()),
      video(givenScenario, givenSeed),
      radar(givenScenario, givenSeed) {}

RecordingHeader Simulation::header() const {
    RecordingHeader header;
    header.name = scenario.name;
    header.origin = fmt::format("simulated: {}", scenario.description);
    header.licence = "Apache-2.0";
    header.camera = scenario.camera;
    header.radar = scenario.radar;
    header.site = scenario.site;
    header.seed = seed;
    header.truth = TruthKind::Complete;
    return header;
}

double Simulation::Schedule::next() const {
    return traits->phase + static_cast<double>(frame) / traits->rate;
}

template <typename Sensor>
void Simulation::look(Schedule& schedule, Sensor& sensor) {
    const double time = schedule.next();
    ++schedule.frame;
    const double delay = std::max(
        0.0, schedule.traits->latency + schedule.traits->jitter * schedule.random.normal());
    // A dead sensor misses the frame; its tracker finds out by the gap in time.
    if (isOut(*schedule.traits, time)) {
        return;
    }
    SensorFrame frame;
    frame.source = schedule.source;
    frame.time = time + schedule.traits->timestampError;
    frame.tracks = sensor.look(time, motion.at(time));
    if (frame.tracks.empty() && !schedule.traits->emptyFrames) {
        return;
    }
    frame.received = std::max({time + delay, schedule.lastReceived, frame.time});
    schedule.lastReceived = frame.received;
    underway.emplace(frame.received, std::move(frame));
}

void Simulation::recordTruth(double time) {
    TruthFrame frame;
    frame.time = time;
    for (const ObjectState& state : motion.at(time)) {
        TruthObject object;
        object.id = state.id;
        object.className = state.traits->className;
        object.position = state.nearestPoint();
        object.velocity = state.velocity;
        object.size = state.traits->size;
        object.centre = state.centre;
        object.inVideo = statedCamera.sees({object.position[0], object.position[1], 0.0});
        object.inRadar = radar.measure(object.position, object.velocity).has_value();
        frame.objects.push_back(object);
    }
    underway.emplace(time, std::move(frame));
}

void Simulation::deliver(double until, const std::function<void(const RecordingLine&)>& write) {
    while (!underway.empty() && underway.begin()->first < until) {
        write(underway.begin()->second);
        underway.erase(underway.begin());
    }
}

void Simulation::run(const std::function<void(const RecordingLine&)>& write,
                     const std::function<void(double)>& progress) {
    Schedule videoSchedule{&scenario.video, Veskar::VideoObject, Random(seed, "video delay")};
    Schedule radarSchedule{&scenario.radarSensor, Veskar::Radar, Random(seed, "radar delay")};
    std::uint64_t truthFrame = 0;
    for (;;) {
        const double truthTime = static_cast<double>(truthFrame) * truthInterval;
        const double time = std::min({truthTime, videoSchedule.next(), radarSchedule.next()});
        if (time > scenario.duration) {
            break;
        }
        deliver(time, write);
        if (truthTime == time) {
            recordTruth(time);
            ++truthFrame;
        } else if (videoSchedule.next() == time) {
            look(videoSchedule, video);
        } else {
            look(radarSchedule, radar);
        }
        progress(time);
    }
    deliver(std::numeric_limits<double>::infinity(), write);
}

}  // namespace Workbench
