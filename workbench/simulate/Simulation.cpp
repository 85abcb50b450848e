// SPDX-License-Identifier: Apache-2.0
#include "simulate/Simulation.h"

#include "simulate/Sight.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace Workbench {
namespace {

constexpr double truthInterval = 0.1;  // seconds

}  // namespace

Simulation::Simulation(const Scenario& scenario, std::uint64_t seed)
    : scenario_(scenario),
      seed_(seed),
      motion_(scenario, seed),
      statedCamera_(scenario.camera.build()),
      video_(scenario, seed),
      radar_(scenario, seed) {}

RecordingHeader Simulation::header() const {
    RecordingHeader header;
    header.name = scenario_.name;
    header.origin = fmt::format("simulated: {}", scenario_.description);
    header.licence = "Apache-2.0";
    header.camera = scenario_.camera;
    header.radar = scenario_.radar;
    header.site = scenario_.site;
    header.seed = seed_;
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
    // During an outage the frame is missing; the sensor's tracker sees only the gap in time.
    if (isOut(*schedule.traits, time)) {
        return;
    }
    SensorFrame frame;
    frame.source = schedule.source;
    frame.time = time + schedule.traits->timestampError;
    frame.tracks = sensor.look(time, motion_.at(time));
    if (frame.tracks.empty() && !schedule.traits->emptyFrames) {
        return;
    }
    frame.received = std::max({time + delay, schedule.lastReceived, frame.time});
    schedule.lastReceived = frame.received;
    underway_.emplace(frame.received, std::move(frame));
}

void Simulation::recordTruth(double time) {
    TruthFrame frame;
    frame.time = time;
    for (const ObjectState& state : motion_.at(time)) {
        TruthObject object;
        object.id = state.id;
        object.className = state.traits->className;
        object.position = state.nearestPoint();
        object.velocity = state.velocity;
        object.size = state.traits->size;
        object.centre = state.centre;
        object.inVideo =
            statedCamera_.sees({object.position[0], object.position[1], 0.0}) &&
            !isBehindWall(scenario_.walls, statedCamera_.origin().head<2>(), state.centre);
        object.inRadar = radar_.measure(object.position, object.velocity).has_value() &&
                         !isBehindWall(scenario_.walls, scenario_.radar.mounting.position.head<2>(),
                                       state.centre);
        frame.objects.push_back(object);
    }
    underway_.emplace(time, std::move(frame));
}

void Simulation::deliver(double until, const std::function<void(const RecordingLine&)>& write) {
    while (!underway_.empty() && underway_.begin()->first < until) {
        write(underway_.begin()->second);
        underway_.erase(underway_.begin());
    }
}

void Simulation::run(const std::function<void(const RecordingLine&)>& write,
                     const std::function<void(double)>& progress) {
    Schedule videoSchedule{&scenario_.video, Veskar::VideoObject, Random(seed_, "video delay")};
    Schedule radarSchedule{&scenario_.radarSensor, Veskar::Radar, Random(seed_, "radar delay")};
    std::uint64_t truthFrame = 0;
    for (;;) {
        const double truthTime = static_cast<double>(truthFrame) * truthInterval;
        const double time = std::min({truthTime, videoSchedule.next(), radarSchedule.next()});
        if (time > scenario_.duration) {
            break;
        }
        deliver(time, write);
        if (truthTime == time) {
            recordTruth(time);
            ++truthFrame;
        } else if (videoSchedule.next() == time) {
            look(videoSchedule, video_);
        } else {
            look(radarSchedule, radar_);
        }
        progress(time);
    }
    deliver(std::numeric_limits<double>::infinity(), write);
}

}  // namespace Workbench
