// SPDX-License-Identifier: Apache-2.0
// What every fused frame does.
#include <veskar/FusionModule.h>

#include "association/ClassRule.h"
#include "fusion/FusionModuleState.h"
#include "track/Dereference.h"

#include <exception>
#include <limits>
#include <stdexcept>
#include <utility>

namespace Veskar {
namespace {

using Tracks = std::vector<std::shared_ptr<Track>>;

std::chrono::nanoseconds monotonicTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// The latest generator. Never destroyed: modules made earlier draw from it as long as they live.
std::shared_ptr<ObjectIdGenerator> publish(std::shared_ptr<ObjectIdGenerator> generator) {
    static auto* const latest = new std::shared_ptr<ObjectIdGenerator>();
    *latest = std::move(generator);
    ObjectIdGenerator::instance = latest->get();
    return *latest;
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

}  // namespace

FusionModule::FusionModule(const Config& config) : FusionModule(config, monotonicTime) {}

FusionModule::FusionModule(const Config& config, SteadyClock steadyClock)
    : config_(config),
      associator_(config),
      autocalibrationHandler_(config),
      motionAnalyzer_(config),
      idGenerator_(publish(std::make_shared<ObjectIdGenerator>())),
      clock_(std::move(steadyClock)),
      arrivals_(std::make_unique<Arrivals>()),
      workspace_(std::make_unique<Workspace>(config_, associator_.rules())) {}

FusionModule::~FusionModule() = default;

void FusionModule::cycleFrame(Source source, double timestamp, const Tracks& tracks) {
    setObserver(frameObserver_);
    if (frameObserver_ != nullptr) {
        frameObserver_->onFrame({source, timestamp, tracks.size(), systemTracks.size()});
    }
    predictTracks(timestamp);
    observeSensor(source, timestamp, tracks);
    std::exception_ptr unsolved;
    try {
        update(source, tracks);
        startSystemTracks(tracks);
    } catch (const std::runtime_error&) {
        // Too many tracks to assign. Coasting tracks must still die, so that the load can fall.
        unsolved = std::current_exception();
    }
    lastSensorTracks_[source] = tracks;
    management();
    if (unsolved) {
        std::rethrow_exception(unsolved);
    }
    handleAutocalibration(source, timestamp);
}

void FusionModule::predictTracks(double timestamp) {
    for (const std::shared_ptr<SystemTrack>& systemTrack : systemTracks) {
        dereference(systemTrack).predict(timestamp);
    }
    for (const Source source : {Source::Radar, Source::VideoObject}) {
        for (const std::shared_ptr<Track>& pointer : lastSensorTracks_[source]) {
            Track& track = dereference(pointer);
            if (track.time < timestamp) {
                track.predict(timestamp);
            }
        }
    }
}

/// What the optional rules need to know of the sensors, beside the tracks of this frame.
void FusionModule::observeSensor(Source source, double timestamp, const Tracks& tracks) {
    workspace_->rules.observe(source, timestamp, tracks, lastSensorTracks_[comparedSource(source)]);
    workspace_->frameTime = timestamp;
    if (source == Source::Radar) {
        workspace_->radarTime = timestamp;
    }
}

void FusionModule::setObserver(FusionObserver* observer) {
    frameObserver_ = observer;
    observer_ = observer != nullptr && observer->wantsDecisions() ? observer : nullptr;
}

void FusionModule::clear() {
    systemTracks.clear();
    for (auto& [source, tracks] : lastSensorTracks_) {
        tracks.clear();
    }
    workspace_->rules.clear();
    workspace_->radarTime.reset();
}

bool FusionModule::trackedOdHasMotion(int id, double u, double v) {
    return motionAnalyzer_.updateAndCheckMotion(id, u, v);
}

void FusionModule::handleAutocalibration(const Source& source, double timestamp) {
    if (source == Source::Radar) {
        autocalibrationHandler_.handleUpdate(systemTracks, lastSensorTracks_[Source::VideoObject],
                                             toNanoseconds(timestamp));
    }
}

}  // namespace Veskar
