// SPDX-License-Identifier: Apache-2.0
#include "replay/Replay.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// What lies beyond the clock's reach, 292 years, counts as its end.
std::chrono::nanoseconds nanoseconds(double seconds) {
    constexpr double reach = 9.2e9;
    return std::chrono::nanoseconds(std::llround(std::clamp(seconds, -reach, reach) * 1e9));
}

}  // namespace

std::optional<double> RadarQueue::radarGiven(double time, double clock) {
    constexpr double longestWait = 1.5;
    // The module looks at its clock in whole microseconds.
    const std::int64_t microseconds = nanoseconds(clock).count() / 1000;
    const double now = static_cast<double>(microseconds) / 1e6;
    waiting_.push_back(time);
    std::optional<double> fused;
    const auto drainWhile = [&](auto isReady) {
        while (!waiting_.empty() && isReady(waiting_.front())) {
            fused = waiting_.front();
            waiting_.pop_front();
        }
    };
    drainWhile([&](double front) { return now - front > longestWait; });
    drainWhile([&](double front) { return front < lastVideo_ + videoLead; });
    return fused;
}

Replay::Replay(const RecordingHeader& header, const Veskar::Config& config, Sink sink,
               bool withTags)
    : adapter_(header, config),
      module_(config, [this] { return nanoseconds(clock_); }),
      sink_(std::move(sink)) {
    if (withTags) {
        priority_ = std::make_unique<Veskar::DetectionPriority>(config);
    }
}

void Replay::advance(double now) {
    while (const auto added = duties_.nextBefore(now)) {
        ++tally_.addedFrames;
        std::vector<std::shared_ptr<Veskar::Track>> tracks;
        if (added->basis != nullptr) {
            tracks = adapter_.convert(*added->basis, uptime, added->ahead);
        }
        hand({added->source, added->time, std::move(tracks)}, added->received);
    }
}

void Replay::feed(const SensorFrame& frame) {
    advance(frame.received);
    duties_.saw(frame);
    ++(frame.source == Veskar::Radar ? tally_.radarFrames : tally_.videoFrames);
    hand({frame.source, frame.time, adapter_.convert(frame, uptime)}, frame.received);
}

/// The module looks at waiting radar frames only when it is given another one. A radar frame that
/// would have to wait is therefore kept here until the video frame that it waits for has come; a
/// silent camera is not waited for.
void Replay::hand(HostFrame frame, double received) {
    if (frame.source == Veskar::Radar) {
        release(received);
        if (queue_.wouldWait(frame.time + uptime)) {
            const auto empty = duties_.videoFor(frame.time, received);
            if (!empty) {
                held_ = std::move(frame);
                return;
            }
            ++tally_.addedFrames;
            cycle(empty->source, empty->time, received, {});
        }
    }
    cycle(frame.source, frame.time, received, frame.tracks);
    if (held_ && !queue_.wouldWait(held_->time + uptime)) {
        release(received);
    }
}

void Replay::release(double received) {
    if (held_) {
        const HostFrame frame = *std::exchange(held_, std::nullopt);
        cycle(frame.source, frame.time, received, frame.tracks);
    }
}

void Replay::cycle(Veskar::Source source, double time, double received,
                   const std::vector<std::shared_ptr<Veskar::Track>>& tracks) {
    clock_ = received + uptime;
    const auto start = std::chrono::steady_clock::now();
    bool hasFailed = false;
    try {
        module_.cycle(source, time + uptime, tracks);
    } catch (const std::runtime_error& error) {
        // Too many tracks for one assignment: the fusion has aged its tracks and goes on with the
        // next frame.
        hasFailed = true;
        if (tally_.failedFrames++ == 0) {
            tally_.firstFailure =
                fmt::format("{} frame at {} s: {}", sourceName(source), time, error.what());
        }
    }
    tally_.librarySeconds +=
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    if (source == Veskar::VideoObject) {
        queue_.videoFused(time + uptime);
        report(source, time, received);
    } else if (const auto fused = queue_.radarGiven(time + uptime, clock_); fused || hasFailed) {
        report(source, fused.value_or(time + uptime) - uptime, received);
    }
}

void Replay::report(Veskar::Source source, double time, double received) {
    FrameReading frame{time, received, source, {}};
    if (!module_.systemTracks.empty()) {
        frame.time = module_.systemTracks.front()->time - uptime;
    }
    frame.tracks.reserve(module_.systemTracks.size());
    for (const auto& track : module_.systemTracks) {
        frame.tracks.push_back(readTrack(*track));
        if (priority_) {
            frame.tracks.back().track.tags = priority_->evaluateTrack(*track);
        }
    }
    sink_(std::move(frame));
}

}  // namespace Workbench
