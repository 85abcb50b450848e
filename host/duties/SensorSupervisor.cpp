// SPDX-License-Identifier: Apache-2.0
#include "host/duties/SensorSupervisor.h"

#include <algorithm>
#include <limits>

namespace Veskar::Host::Internal {
namespace {

constexpr double never = std::numeric_limits<double>::infinity();

}  // namespace

bool SensorSupervisor::isBelieved(const Sensor& sensor) const {
    return isSlow(sensor) && sensor.due <= sensor.silent;
}

void SensorSupervisor::schedule(Source source, Sensor& sensor) const {
    if (isSlow(sensor)) {
        sensor.due = sensor.received + parameters_.predictionInterval;
        sensor.silent = sensor.received +
                        std::min(parameters_.belief * sensor.interval, parameters_.longestBelief);
    } else if (source == VideoObject) {
        // Tolerates jitter of half a frame interval before the camera counts as silent.
        sensor.due = sensor.received + std::max(parameters_.videoSilence, 1.5 * sensor.interval);
        sensor.silent = sensor.due;
    } else {
        sensor.due = never;
    }
}

// Stops instead of looping forever where the clock's resolution is coarser than the interval.
void SensorSupervisor::postpone(Sensor& sensor, double interval) const {
    const double next = sensor.due + interval;
    const bool isStep = next > sensor.due && next <= lastReport_ + parameters_.longestGap;
    sensor.due = isStep ? next : never;
}

// Takes the smallest of the last intervals, so that a sensor with a gap, or one that reports only
// when it detects something, does not count as slow.
void SensorSupervisor::measureInterval(Sensor& sensor, double time) {
    constexpr std::size_t remembered = 3;
    sensor.intervals.push_back(time - sensor.time);
    if (sensor.intervals.size() > remembered) {
        sensor.intervals.pop_front();
    }
    sensor.interval = *std::min_element(sensor.intervals.begin(), sensor.intervals.end());
}

void SensorSupervisor::saw(const SensorFrame& frame) {
    const auto [entry, isFirst] = sensors_.try_emplace(frame.source);
    Sensor& sensor = entry->second;
    if (!isFirst) {
        measureInterval(sensor, frame.time);
    }
    sensor.time = frame.time;
    sensor.received = lastReport_ = frame.received;
    if (isSlow(sensor)) {
        sensor.frame = frame;
    }
    schedule(frame.source, sensor);
    // A camera that has not sent any frame counts as silent from the first radar frame on.
    const auto [video, isUnheard] = sensors_.try_emplace(VideoObject);
    if (isUnheard) {
        video->second.time = frame.time;
        video->second.received = frame.received;
        schedule(VideoObject, video->second);
    } else if (video->second.due == never) {
        video->second.due = frame.received + parameters_.videoSilence;
    }
}

std::optional<AddedFrame> SensorSupervisor::nextBefore(double now) {
    const auto first =
        std::min_element(sensors_.begin(), sensors_.end(),
                         [](const auto& a, const auto& b) { return a.second.due < b.second.due; });
    if (first == sensors_.end() || !(first->second.due < now)) {
        return std::nullopt;
    }
    auto& [source, sensor] = *first;
    const double elapsed = sensor.due - sensor.received;
    AddedFrame added{source, sensor.time + elapsed, sensor.due, nullptr, 0.0};
    if (isBelieved(sensor)) {
        added.basis = &sensor.frame;
        added.ahead = elapsed;
        added.slowInterval = sensor.interval;
        lastReport_ = sensor.due;
        postpone(sensor, parameters_.predictionInterval);
    } else if (source == VideoObject) {
        postpone(sensor, parameters_.videoSilence);
    } else {
        sensor.due = never;
        return nextBefore(now);
    }
    return added;
}

double SensorSupervisor::slowInterval(Source source) const {
    const auto sensor = sensors_.find(source);
    return sensor != sensors_.end() && isSlow(sensor->second) ? sensor->second.interval : 0.0;
}

std::optional<AddedFrame> SensorSupervisor::videoFor(double time, double now) {
    const auto video = sensors_.find(VideoObject);
    if (video == sensors_.end() || now < video->second.silent) {
        return std::nullopt;
    }
    video->second.due = now + parameters_.videoSilence;
    return AddedFrame{VideoObject, time, now, nullptr, 0.0};
}

}  // namespace Veskar::Host::Internal
