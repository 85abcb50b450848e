// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/FusionPipeline.h>
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/HostAdapter.h>
#include <veskar/DetectionPriority.h>

#include "host/duties/SensorSupervisor.h"
#include "host/fused/SystemTrackReading.h"
#include "host/json/LineText.h"
#include "host/pipeline/ObserverTee.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace Veskar::Host {
namespace {

using Tracks = std::vector<std::shared_ptr<Track>>;

/// Clamps to the range of the clock, 292 years.
std::chrono::nanoseconds nanoseconds(double seconds) {
    constexpr double reach = 9.2e9;
    return std::chrono::nanoseconds(std::llround(std::clamp(seconds, -reach, reach) * 1e9));
}

/// A frame as the fusion takes it.
struct HostFrame {
    Source source;
    double time;
    Tracks tracks;
};

}  // namespace

class FusionPipeline::Engine {
public:
    Engine(const Installation& installation, const Config& config, Sink sink,
           const HostParameters& parameters, const Options& options)
        : uptime_(options.uptime),
          asksForPosition_(options.asksForPosition && !installation.site),
          adapter_(installation, config, parameters),
          module_(config, [this] { return nanoseconds(clock_); }),
          supervisor_(parameters),
          sink_(std::move(sink)) {
        module_.setObserver(&observer_);
        if (options.withTags) {
            priority_.emplace(config);
        }
    }

    void push(const SensorFrame& frame) {
        const bool isSensors = frame.source == VideoObject || frame.source == Radar;
        if (!isSensors || !std::isfinite(frame.time) || !std::isfinite(frame.received)) {
            ++counts_.ignoredFrames;
            return;
        }
        addBefore(frame.received);
        supervisor_.saw(frame);
        ++(frame.source == Radar ? counts_.radarFrames : counts_.videoFrames);
        const double slowInterval = supervisor_.slowInterval(frame.source);
        hand({frame.source, frame.time, adapter_.convert(frame, uptime_, 0.0, slowInterval)},
             frame.received);
        throwWhatTheSinkThrew();
    }

    void advance(double now) {
        addBefore(now);
        throwWhatTheSinkThrew();
    }

    void setObserver(FusionObserver* observer) { observer_.setNext(observer); }
    const Counts& counts() const { return counts_; }
    const FusionModule& fusion() const { return module_; }

private:
    void addBefore(double now) {
        while (const auto added = supervisor_.nextBefore(now)) {
            // Two stamps that agree are a new time base to the module, and one of a sensor may be
            // wrong: it gets no company.
            if (module_.isFarInTime(added->time + uptime_)) {
                continue;
            }
            ++counts_.addedFrames;
            Tracks tracks;
            if (added->basis != nullptr) {
                tracks =
                    adapter_.convert(*added->basis, uptime_, added->ahead, added->slowInterval);
            }
            hand({added->source, added->time, std::move(tracks)}, added->received);
        }
    }

    /// The module looks at waiting radar frames only when it is given another one. A radar frame
    /// that would have to wait is therefore kept here until the video frame that it waits for has
    /// come; a silent camera is not waited for.
    void hand(HostFrame frame, double received) {
        if (frame.source == Radar) {
            release(received);
            if (wouldWait(frame)) {
                const auto empty = supervisor_.videoFor(frame.time, received);
                if (!empty) {
                    held_ = std::move(frame);
                    return;
                }
                ++counts_.addedFrames;
                cycle({empty->source, empty->time, {}}, received);
            }
        }
        cycle(frame, received);
        if (held_ && !wouldWait(*held_)) {
            release(received);
        }
    }

    bool wouldWait(const HostFrame& radarFrame) const {
        return module_.waitsForVideo(radarFrame.time + uptime_);
    }

    void release(double received) {
        if (held_) {
            cycle(*std::exchange(held_, std::nullopt), received);
        }
    }

    void cycle(const HostFrame& frame, double received) {
        clock_ = received + uptime_;
        const auto start = std::chrono::steady_clock::now();
        try {
            module_.cycle(frame.source, frame.time + uptime_, frame.tracks);
        } catch (const std::runtime_error& error) {
            // Too many tracks for one assignment: the fusion has aged its tracks and continues with
            // the next frame.
            if (counts_.failedFrames++ == 0) {
                counts_.firstFailure = std::string(sourceName(frame.source)) + " frame at " +
                                       Internal::shortestText(frame.time) + " s: " + error.what();
            }
        }
        counts_.fusionSeconds +=
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        // The module fuses no frame when it holds this one back or rejects it, and several when
        // held frames become due.
        if (const auto fused = observer_.takeFrame()) {
            // Uses the frame's own time stamp where possible: subtracting the offset would round
            // it.
            const double stamp = fused->timestamp;
            tell(fused->source, stamp == frame.time + uptime_ ? frame.time : stamp - uptime_,
                 received);
        }
    }

    void tell(Source source, double time, double received) {
        if (!sink_) {
            return;
        }
        FusedFrame frame{time, received, source, {}};
        frame.tracks.reserve(module_.systemTracks.size());
        for (const auto& track : module_.systemTracks) {
            frame.tracks.push_back(Internal::readTrack(*track, adapter_));
            if (asksForPosition_) {
                askForPosition(frame.tracks.back());
            }
            if (priority_) {
                frame.tracks.back().tags = priority_->evaluateTrack(*track);
            }
        }
        try {
            sink_(frame);
        } catch (...) {
            // What is under way is finished first: the frame that was pushed may come next.
            if (!sinkFault_) {
                sinkFault_ = std::current_exception();
            }
        }
    }

    void throwWhatTheSinkThrew() {
        if (sinkFault_) {
            std::rethrow_exception(std::exchange(sinkFault_, nullptr));
        }
    }

    static void askForPosition(FusedTrack& track) {
        if (!track.ground) {
            return;
        }
        const Eigen::Vector2d& ground = track.ground->position;
        const auto position =
            ::Dbus::GeoLocation::getPosition(ground.norm(), deviceAzimuth(ground));
        if (position.valid) {
            track.geo = position;
        }
    }

    double uptime_;
    bool asksForPosition_;
    double clock_ = 0.0;  ///< clock of the module, seconds
    HostAdapter adapter_;
    Internal::ObserverTee observer_;  // must outlive the module, which calls it
    FusionModule module_;
    Internal::SensorSupervisor supervisor_;
    std::optional<HostFrame> held_;  ///< the last radar frame, while it is too far ahead of video
    Sink sink_;
    std::exception_ptr sinkFault_;  ///< the first of the call that is under way
    std::optional<DetectionPriority> priority_;
    Counts counts_;
};

FusionPipeline::FusionPipeline(const Installation& installation, const Config& config, Sink sink,
                               const HostParameters& parameters)
    : FusionPipeline(installation, config, std::move(sink), parameters, Options()) {}

FusionPipeline::FusionPipeline(const Installation& installation, const Config& config, Sink sink,
                               const HostParameters& parameters, const Options& options)
    : engine_(
          std::make_unique<Engine>(installation, config, std::move(sink), parameters, options)) {}

FusionPipeline::~FusionPipeline() = default;

void FusionPipeline::push(const SensorFrame& frame) {
    engine_->push(frame);
}

void FusionPipeline::advance(double now) {
    engine_->advance(now);
}

void FusionPipeline::setObserver(FusionObserver* observer) {
    engine_->setObserver(observer);
}

const FusionPipeline::Counts& FusionPipeline::counts() const {
    return engine_->counts();
}

const FusionModule& FusionPipeline::fusion() const {
    return engine_->fusion();
}

}  // namespace Veskar::Host
