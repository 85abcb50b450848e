// SPDX-License-Identifier: Apache-2.0
// The live program, from its start to its end.
#pragma once

#include "live/service/Latency.h"
#include "live/service/LiveFusion.h"
#include "live/service/MetricsServer.h"
#include "live/service/MountingWatch.h"
#include "live/service/Places.h"
#include "live/service/SensorFeed.h"
#include "live/service/StatusReport.h"
#include "live/service/TrackOutput.h"
#include "live/transport/EventLoop.h"
#include "live/view/LiveView.h"

#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Veskar::Live {

/// Brings sensors, fusion, recorder and outputs together on one event loop, until SIGTERM or
/// SIGINT, or until standard input has ended and there is no other input, or until the reader of
/// standard output has gone and there is no other output. SIGHUP lets the fusion begin anew with
/// settings that are read again, and the recording with a new file; connections stay. systemd is
/// told of readiness, and its watchdog that the loop runs.
class Service {
public:
    /// @return the settings of the fusion as they stand in its files now
    /// @throw InputError why they cannot be used
    using ReadSettings = std::function<FusionSettings()>;
    using MakeWatch = std::function<std::unique_ptr<MountingWatch>()>;

    /// How long the outputs have at the end to write what waits.
    static constexpr EventLoop::Duration longestDrain = std::chrono::milliseconds(1200);

    /// Opens everything.
    /// @param run what is asked for
    /// @param readSettings called now and at each SIGHUP; empty: frames are only recorded, and
    ///                     outputs are left out
    /// @param faults receives what goes wrong
    /// @param content what the view shows, where the run has one
    /// @param makeWatch makes what judges the installation, where the run wants that; called when
    ///                  signals are blocked, for it may start threads
    /// @throw InputError when something cannot be opened or read
    Service(RunConfiguration run, ReadSettings readSettings, Faults& faults,
            ViewContent content = {}, const MakeWatch& makeWatch = {});

    /// Runs to the end.
    void run();
    /// @return the port of the view; 0: there is none
    std::uint16_t viewPort() const { return view_ ? view_->port() : std::uint16_t{0}; }

private:
    /// A sensor and where its messages come from.
    struct Sensor {
        SensorFeed feed;
        Source source;
        std::shared_ptr<Input> input;
    };

    void open(ViewContent content);
    void fuse(const FusionSettings& settings);
    void updateView();
    void addSensor(const SensorSettings& settings);
    void take(Host::SensorFrame frame);
    void receive(const Message& message, Sensor& sensor);
    void addStatus();
    void addWatch(std::unique_ptr<MountingWatch> watch);
    void addOutputs();
    std::unique_ptr<Host::FrameRecorder> makeRecorder() const;
    void retire(std::unique_ptr<Host::FrameRecorder> recorder);
    void reload();
    void endOfInput();
    void tick();
    void fused(const Host::FusedFrame& frame);
    StatusReport report();
    void drain();
    bool isDrained() const;

    const RunConfiguration run_;
    const ReadSettings readSettings_;
    Faults& faults_;
    const EventLoop::Clock::time_point start_ = EventLoop::Clock::now();
    EventLoop loop_;
    std::vector<EventLoop::SignalWatch> signals_;
    Brokers brokers_;
    std::vector<std::unique_ptr<TrackOutput>> outputs_;
    std::unique_ptr<Output> statusTopic_;
    std::unique_ptr<Output> statusSocket_;
    std::optional<MetricsServer> metrics_;
    std::optional<MountingAlarm> alarm_;
    std::unique_ptr<LiveView> view_;  // observes the fusion
    LiveFusion fusion_;
    std::vector<std::unique_ptr<Sensor>> sensors_;
    std::future<void> retiring_;  ///< a recorder that writes what waits
    /// A message that is being handled.
    struct Arrival {
        EventLoop::Clock::time_point time;
        Source source;
    };
    std::optional<Arrival> arrival_;
    Latency latency_;
    std::uint64_t framesOut_ = 0;
    std::uint64_t tracksOut_ = 0;
    EventLoop::Timer ticks_;
    EventLoop::Timer tellStatus_;
};

}  // namespace Veskar::Live
