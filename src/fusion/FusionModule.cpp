// SPDX-License-Identifier: Apache-2.0
#include <veskar/FusionModule.h>

#include "fusion/Workspace.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <utility>

#include <syslog.h>

namespace Veskar {
namespace {

using Tracks = std::vector<std::shared_ptr<Track>>;

/// How far radar may run ahead of video, seconds.
constexpr double radarLead = 0.1;

std::chrono::nanoseconds monotonicTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

double toSeconds(std::chrono::nanoseconds time) {
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(time);
    return static_cast<double>(whole.count()) / 1e6;
}

/// Truncates, and saturates where 64 bits do not reach.
std::int64_t toNanoseconds(double seconds) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    const double nanoseconds = seconds * 1e9;
    if (nanoseconds >= limit) {
        return std::numeric_limits<std::int64_t>::max();
    }
    return nanoseconds >= -limit ? static_cast<std::int64_t>(nanoseconds)
                                 : std::numeric_limits<std::int64_t>::min();
}

/// One track that is not finite would poison the system track that it joins for good.
Tracks leaveOutNonFinite(const Tracks& tracks) {
    Tracks finite;
    finite.reserve(tracks.size());
    std::copy_if(tracks.begin(), tracks.end(), std::back_inserter(finite),
                 [](const std::shared_ptr<Track>& track) {
                     return track->state.allFinite() && track->covariance.allFinite();
                 });
    if (finite.size() < tracks.size()) {
        syslog(LOG_ERR, "FusionModule: Left out %d tracks that are not finite\n",
               static_cast<int>(tracks.size() - finite.size()));
    }
    return finite;
}

}  // namespace

FusionModule::FusionModule(const Config& configuration)
    : FusionModule(configuration, monotonicTime) {}

FusionModule::FusionModule(const Config& configuration, SteadyClock steadyClock)
    : config(configuration),
      associator(configuration),
      autocalibrationHandler(configuration),
      motionAnalyzer(configuration),
      clock(std::move(steadyClock)),
      workspace(std::make_unique<Workspace>()) {
    ObjectIdGenerator::instance = &idGenerator;
}

FusionModule::~FusionModule() = default;

void FusionModule::cycle(Source source, double timestamp, const Tracks& tracks) {
    const double now = toSeconds(clock());
    if (source != VideoObject && source != Radar) {
        return;
    }
    if (!std::isfinite(timestamp)) {
        syslog(LOG_ERR, "FusionModule: Ignored a frame with a time stamp that is not finite\n");
        return;
    }
    Tracks finite = leaveOutNonFinite(tracks);
    if (source == VideoObject) {
        // No step of the frame reads it, and video time goes on when the frame fails.
        lastVideoTimestamp = timestamp;
        cycleFrame(VideoObject, timestamp, finite);
    } else {
        radarFrameQueue.push_back({timestamp, std::move(finite)});
        drainRadarQueue(now);
    }
}

/// Strictly first in, first out: a frame that must wait holds up those behind it.
void FusionModule::drainRadarQueue(double now) {
    while (!radarFrameQueue.empty() && now - radarFrameQueue.front().timestamp > radarMaxWait) {
        fuseOldestRadarFrame();
    }
    while (!radarFrameQueue.empty() &&
           radarFrameQueue.front().timestamp < lastVideoTimestamp + radarLead) {
        fuseOldestRadarFrame();
    }
}

/// Takes the frame off the queue first: one that fails is never tried again.
void FusionModule::fuseOldestRadarFrame() {
    const CycleFrame frame = std::move(radarFrameQueue.front());
    radarFrameQueue.pop_front();
    cycleFrame(Radar, frame.timestamp, frame.tracks);
}

void FusionModule::cycleFrame(Source source, double timestamp, const Tracks& tracks) {
    if (observer != nullptr) {
        observer->onFrame({source, timestamp, tracks.size(), systemTracks.size()});
    }
    predictTracks(timestamp);
    std::exception_ptr unsolved;
    try {
        update(source, tracks);
        startSystemTracks(tracks);
    } catch (const std::runtime_error&) {
        // Too many tracks to assign. Coasting tracks must still die, so that the load can fall.
        unsolved = std::current_exception();
    }
    lastSensorTracks[source] = tracks;
    management();
    if (unsolved) {
        std::rethrow_exception(unsolved);
    }
    handleAutocalibration(source, timestamp);
}

void FusionModule::predictTracks(double timestamp) {
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        // The standard library asserts that what * takes is there; of -> it only hopes so.
        SystemTrack& systemTrack = *pointer;
        systemTrack.predict(timestamp);
    }
    for (const Source source : {Radar, VideoObject}) {
        for (const std::shared_ptr<Track>& track : lastSensorTracks[source]) {
            if (track->time < timestamp) {
                track->predict(timestamp);
            }
        }
    }
}

void FusionModule::setObserver(FusionObserver* watcher) {
    observer = watcher;
}

void FusionModule::clear() {
    systemTracks.clear();
    for (auto& [source, tracks] : lastSensorTracks) {
        tracks.clear();
    }
}

bool FusionModule::trackedOdHasMotion(int id, double u, double v) {
    return motionAnalyzer.updateAndCheckMotion(id, u, v);
}

void FusionModule::handleAutocalibration(const Source& source, double timestamp) {
    if (source == Radar) {
        autocalibrationHandler.handleUpdate(systemTracks, lastSensorTracks[VideoObject],
                                            toNanoseconds(timestamp));
    }
}

}  // namespace Veskar
