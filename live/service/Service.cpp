// SPDX-License-Identifier: Apache-2.0
#include "live/service/Service.h"

#include <veskar-host/InputError.h>

#include "live/service/ProcessUsage.h"

#include <algorithm>
#include <csignal>
#include <string>
#include <utility>
#include <variant>

#include <systemd/sd-daemon.h>

namespace Veskar::Live {
namespace {

/// How often the fusion's clock goes on without a frame.
constexpr EventLoop::Duration tickInterval = std::chrono::milliseconds(100);

double secondsOf(EventLoop::Duration duration) {
    return std::chrono::duration<double>(duration).count();
}

/// @return UTC of a time of the steady clock
UtcTime utcOf(double steady) {
    const auto time = std::chrono::round<UtcTime>(std::chrono::duration<double>(steady));
    const UtcTime age = EventLoop::Clock::now().time_since_epoch() - time;
    return std::chrono::system_clock::now().time_since_epoch() - age;
}

/// @return UNIX time of time 0 of the steady clock, s
double epochOfSteadyClock() {
    return secondsOf(utcOf(0.0));
}

bool wantsTags(const RunConfiguration& run) {
    return std::any_of(run.outputs.begin(), run.outputs.end(),
                       [](const OutputSettings& output) { return output.withTags; });
}

}  // namespace

Service::Service(RunConfiguration run, ReadSettings readSettings, Faults& faults,
                 ViewContent content, const MakeWatch& makeWatch)
    : run_(std::move(run)),
      readSettings_(std::move(readSettings)),
      faults_(faults),
      fusion_(
          run_.installation, wantsTags(run_),
          [this](const Host::FusedFrame& frame) { fused(frame); }, faults),
      ticks_(loop_.timer([this] { tick(); })) {
    // Before any thread starts: threads inherit what is blocked.
    for (const int signal : {SIGTERM, SIGINT}) {
        signals_.push_back(loop_.onSignal(signal, [this] { loop_.stop(); }));
    }
    signals_.push_back(loop_.onSignal(SIGHUP, [this] { reload(); }));
    open(std::move(content));
    if (makeWatch) {
        addWatch(makeWatch());
    }
}

/// What can fail without a trace comes first: files of an earlier run are moved only by a program
/// that starts.
void Service::open(ViewContent content) {
    if (readSettings_) {
        if (run_.view) {
            view_ = makeView(*run_.view, std::move(content));
        }
        fuse(readSettings_());
    }
    for (const BrokerSettings& broker : run_.brokers) {
        brokers_[broker.name] = std::make_unique<MqttClient>(loop_, broker.options, faults_);
    }
    for (const SensorSettings& settings : run_.sensors) {
        addSensor(settings);
    }
    addStatus();
    if (readSettings_) {
        addOutputs();
    }
    fusion_.record(makeRecorder());
}

void Service::fuse(const FusionSettings& settings) {
    fusion_.fuse(settings);
    if (view_) {
        view_->convertWith(std::make_shared<Host::HostAdapter>(run_.installation, settings.config,
                                                               settings.parameters));
    }
}

void Service::addOutputs() {
    // Where nobody listens any more, there is nothing left to do.
    const EventLoop::Task closed = run_.outputs.size() == 1 && !run_.record
                                       ? EventLoop::Task([this] { loop_.stop(); })
                                       : EventLoop::Task();
    for (const bool isFile : {false, true}) {
        for (const OutputSettings& settings : run_.outputs) {
            if (std::holds_alternative<FilePlace>(settings.to) == isFile) {
                outputs_.push_back(std::make_unique<TrackOutput>(
                    settings, run_.installation, loop_,
                    makeOutput(settings.name, settings.to, loop_, brokers_, faults_, {}, closed)));
            }
        }
    }
}

void Service::addSensor(const SensorSettings& settings) {
    auto sensor = std::make_unique<Sensor>(
        Sensor{SensorFeed(settings, run_.installation, faults_,
                          [this](Host::SensorFrame frame) { take(std::move(frame)); }),
               settings.source, nullptr});
    // Those that share an input get every line, and leave out those of the other one.
    const auto forEach = [this, own = sensor.get(),
                          isShared = settings.sharesInput](const auto& hand) {
        if (!isShared) {
            hand(*own);
            return;
        }
        for (const auto& one : sensors_) {
            hand(*one);
        }
    };
    if (settings.sharesInput && !sensors_.empty()) {
        sensor->input = sensors_.front()->input;
    } else {
        sensor->input = makeInput(
            settings, loop_, brokers_, faults_,
            [this, forEach](const Message& message) {
                forEach([&](Sensor& one) { receive(message, one); });
            },
            [forEach](const std::string& channel) {
                forEach([&](Sensor& one) { one.feed.forget(channel); });
            },
            [this] { endOfInput(); });
    }
    sensors_.push_back(std::move(sensor));
}

void Service::take(Host::SensorFrame frame) {
    const EventLoop::Clock::time_point now = EventLoop::Clock::now();
    frame.received = secondsOf(now.time_since_epoch());
    if (view_) {
        view_->see(frame);
    }
    if (alarm_) {
        alarm_->see(frame);
    }
    fusion_.push(std::move(frame), now);
}

void Service::receive(const Message& message, Sensor& sensor) {
    arrival_ = {message.arrived, sensor.source};
    sensor.feed.receive(message, std::chrono::system_clock::now());
    arrival_.reset();
}

void Service::addStatus() {
    const StatusSettings& status = run_.status;
    const auto document = [this] { return report().toJson(); };
    if (status.topic) {
        statusTopic_ = makeOutput("status", *status.topic, loop_, brokers_, faults_);
    }
    if (status.socket) {
        statusSocket_ = makeOutput("status", *status.socket, loop_, brokers_, faults_,
                                   [document] { return document() + "\n"; });
    }
    if (status.prometheus) {
        metrics_.emplace(loop_, *status.prometheus, faults_,
                         [this] { return report().toPrometheus(); });
    }
    tellStatus_ = loop_.timer([this, document] {
        const std::string text = document();
        if (statusTopic_) {
            statusTopic_->send(text);
        }
        if (statusSocket_) {
            statusSocket_->send(text + "\n");
        }
        tellStatus_.expireAfter(std::chrono::duration_cast<EventLoop::Duration>(
            std::chrono::duration<double>(run_.status.interval)));
    });
    if (statusTopic_ || statusSocket_) {
        tellStatus_.expireAfter(EventLoop::Duration::zero());
    }
}

void Service::addWatch(std::unique_ptr<MountingWatch> watch) {
    std::unique_ptr<Output> topic;
    if (run_.watch && run_.watch->topic) {
        topic = makeOutput("watch", *run_.watch->topic, loop_, brokers_, faults_);
    }
    alarm_.emplace(std::move(watch), std::move(topic), faults_);
}

/// @return what records into the file of the configuration; null: nothing does
std::unique_ptr<Host::FrameRecorder> Service::makeRecorder() const {
    if (!run_.record) {
        return nullptr;
    }
    Host::FrameRecorder::Options options = run_.record->options;
    options.epoch = epochOfSteadyClock();
    return std::make_unique<Host::FrameRecorder>(run_.record->path, run_.installation, options);
}

/// The disk may be slow; the fusion goes on meanwhile.
void Service::retire(std::unique_ptr<Host::FrameRecorder> recorder) {
    retiring_ = std::async(std::launch::async,
                           [ending = std::move(recorder)]() mutable { ending.reset(); });
}

/// All that can fail comes first: then nothing has changed.
void Service::reload() {
    sd_notifyf(0, "RELOADING=1\nMONOTONIC_USEC=%lld",
               static_cast<long long>(std::chrono::duration_cast<std::chrono::microseconds>(
                                          EventLoop::Clock::now().time_since_epoch())
                                          .count()));
    std::string status = "Reloaded";
    try {
        std::optional<FusionSettings> settings;
        if (readSettings_) {
            settings = readSettings_();
        }
        std::unique_ptr<Host::FrameRecorder> recorder = makeRecorder();
        retire(fusion_.end(EventLoop::Clock::now()));
        for (const auto& output : outputs_) {
            output->endTracks(std::chrono::system_clock::now().time_since_epoch());
        }
        if (settings) {
            fuse(*settings);
        }
        fusion_.record(std::move(recorder));
    } catch (const Host::InputError& error) {
        // Each reason is a cause of its own: whoever reloads wants to know it.
        faults_.report(std::string("reload: ") + error.what(), "nothing has changed");
        status = "Not reloaded: see the log";
    }
    sd_notifyf(0, "READY=1\nSTATUS=%s", status.c_str());
}

void Service::endOfInput() {
    const bool isOnlyInput =
        std::all_of(run_.sensors.begin(), run_.sensors.end(), [](const SensorSettings& sensor) {
            return std::holds_alternative<StandardStream>(sensor.input);
        });
    if (isOnlyInput) {
        loop_.stop();
    }
}

void Service::tick() {
    fusion_.advance(EventLoop::Clock::now());
    updateView();
    if (alarm_) {
        alarm_->tell();
    }
    ticks_.expireAfter(tickInterval);
}

void Service::updateView() {
    if (view_) {
        fusion_.observe(view_->observer());
        if (view_->wantsStatus()) {
            view_->tell(report().toJson());
        }
    }
}

void Service::fused(const Host::FusedFrame& frame) {
    const UtcTime utc = utcOf(frame.time);
    for (const auto& output : outputs_) {
        output->offer(frame, utc);
    }
    if (view_) {
        view_->show(frame);
    }
    ++framesOut_;
    tracksOut_ += frame.tracks.size();
    if (arrival_) {
        // A frame of the other sensor has waited since it was received.
        const double now = secondsOf(EventLoop::Clock::now().time_since_epoch());
        latency_.add(now - (frame.source == arrival_->source
                                ? secondsOf(arrival_->time.time_since_epoch())
                                : frame.received));
    }
}

void Service::run() {
    loop_.keepWatchdog();
    ticks_.expireAfter(tickInterval);
    sd_notify(0, "READY=1");
    loop_.run();
    sd_notify(0, "STOPPING=1");
    drain();
}

/// What came in is fused and recorded; what was fused goes out as far as the readers are there.
void Service::drain() {
    const EventLoop::Clock::time_point deadline = EventLoop::Clock::now() + longestDrain;
    signals_.clear();  // they stay blocked
    sensors_.clear();
    ticks_.disarm();
    tellStatus_.disarm();
    retire(fusion_.end(EventLoop::Clock::now()));
    for (const auto& output : outputs_) {
        output->flush();
        output->endTracks(std::chrono::system_clock::now().time_since_epoch());
    }
    while (!isDrained() && EventLoop::Clock::now() < deadline) {
        loop_.turn(std::chrono::milliseconds(10));
    }
}

bool Service::isDrained() const {
    return (!statusTopic_ || statusTopic_->isDrained()) && (!alarm_ || alarm_->isDrained()) &&
           std::all_of(outputs_.begin(), outputs_.end(),
                       [](const auto& output) { return output->output().isDrained(); });
}

StatusReport Service::report() {
    using Kind = StatusReport::Kind;
    using Unit = StatusReport::Unit;
    StatusReport report;
    const auto count = [](std::uint64_t value) { return static_cast<double>(value); };
    report.add("uptime", secondsOf(EventLoop::Clock::now() - start_), Kind::Gauge, Unit::Seconds);
    const ProcessUsage usage = ProcessUsage::now();
    report.add("memory", usage.memory, Kind::Gauge, Unit::Bytes);
    report.add("cpuSeconds", usage.cpuSeconds, Kind::Counter, Unit::Seconds);
    report.add("epoch", epochOfSteadyClock(), Kind::Gauge, Unit::Seconds);
    report.add("framesIn", count(fusion_.taken().taken), Kind::Counter);
    report.add("framesRefused", count(fusion_.taken().refused), Kind::Counter);
    report.add("reportsIn", count(fusion_.taken().reports), Kind::Counter);
    report.add("reportsLeftOut", count(fusion_.taken().reportsLeftOut), Kind::Counter);
    report.add("framesOut", count(framesOut_), Kind::Counter);
    report.add("tracksOut", count(tracksOut_), Kind::Counter);
    if (alarm_) {
        alarm_->addTo(report);
    }
    report.add("latencyMedian", latency_.quantile(0.5), Kind::Gauge, Unit::Seconds);
    report.add("latencyP99", latency_.quantile(0.99), Kind::Gauge, Unit::Seconds);
    if (const auto fused = fusion_.fused()) {
        report.add("framesAdded", count(fused->addedFrames), Kind::Gauge);
        report.add("framesFailed", count(fused->failedFrames), Kind::Gauge);
    }
    if (const auto recorded = fusion_.recorded()) {
        report.add("framesRecorded", count(recorded->written), Kind::Gauge);
        report.add("framesNotRecorded",
                   count(recorded->dropped + recorded->refused + recorded->failed), Kind::Gauge);
    }
    std::uint64_t faults = 0;
    for (const auto& [cause, number] : faults_.counts()) {
        faults += number;
    }
    report.add("faults", count(faults), Kind::Counter);
    for (const auto& sensor : sensors_) {
        const auto add = [&](const char* name, double value, Kind kind, Unit unit = Unit::One) {
            report.add("sensor", sensor->feed.name(), name, value, kind, unit);
        };
        const InputCounters& input = sensor->input->counters();
        const SensorClock::Status& clock = sensor->feed.clock();
        add("messages", count(input.messages), Kind::Counter);
        add("bytes", count(input.bytes), Kind::Counter);
        add("dropped", count(input.tooLong + input.cut + input.retained + input.overflowed),
            Kind::Counter);
        add("publishers", count(input.publishers), Kind::Gauge);
        add("refused", count(sensor->feed.refused()), Kind::Counter);
        add("frames", count(sensor->feed.frames()), Kind::Counter);
        add("framesTaken", count(clock.taken), Kind::Counter);
        add("framesStray", count(clock.stray), Kind::Counter);
        add("framesUnplaced", count(clock.unplaced), Kind::Counter);
        add("framesLate", count(clock.irregular.late), Kind::Counter);
        add("framesRepeated", count(clock.irregular.repeated), Kind::Counter);
        add("framesReordered", count(clock.irregular.reordered), Kind::Counter);
        add("clockSteps", count(clock.steps), Kind::Counter);
        add("clockOffset", clock.offset, Kind::Gauge, Unit::Seconds);
        add("clockJitter", clock.jitter, Kind::Gauge, Unit::Seconds);
    }
    for (const auto& sensor : sensors_) {
        if (const LeftOut* leftOut = sensor->feed.leftOut()) {
            for (const auto& [term, number] : leftOut->counts()) {
                report.addLeftOut(sensor->feed.name(), term, count(number));
            }
        }
    }
    for (const auto& output : outputs_) {
        const auto add = [&](const char* name, double value, Kind kind) {
            report.add("output", output->name(), name, value, kind);
        };
        const OutputCounters counters = output->output().counters();
        add("accepted", count(counters.accepted), Kind::Counter);
        add("written", count(counters.written), Kind::Counter);
        add("dropped", count(counters.dropped), Kind::Counter);
        add("failed", count(counters.failed), Kind::Counter);
        add("replaced", count(output->replaced()), Kind::Counter);
        add("waiting", count(counters.waiting), Kind::Gauge);
        add("waitingBytes", count(counters.waitingBytes), Kind::Gauge);
        add("readers", count(counters.readers), Kind::Gauge);
    }
    for (const auto& [name, broker] : brokers_) {
        const auto add = [&, &group = name](const char* key, double value, Kind kind) {
            report.add("broker", group, key, value, kind);
        };
        const BrokerCounters& counters = broker->counters();
        add("connected", counters.isConnected ? 1.0 : 0.0, Kind::Gauge);
        add("connections", count(counters.connections), Kind::Counter);
        add("refused", count(counters.refused), Kind::Counter);
        add("failed", count(counters.failed), Kind::Counter);
        add("lost", count(counters.lost), Kind::Counter);
    }
    return report;
}

}  // namespace Veskar::Live
