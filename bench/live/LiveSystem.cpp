// SPDX-License-Identifier: Apache-2.0
#include "live/LiveSystem.h"

#include "host/TestInstallation.h"
#include "host/installation/RecordingHeader.h"
#include "live/onvif/SceneCodec.h"
#include "live/support/FreePort.h"
#include "live/support/LoopUntil.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <nlohmann/json.hpp>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace VeskarBench {
namespace {

namespace Live = Veskar::Live;

const std::string cameraTopic = "bench/camera/onvif-mj/VideoAnalytics/main/objects";
const std::string radarTopic = "bench/radar/onvif-mj/VideoAnalytics/main/objects";

Live::MqttOptions localBroker(std::uint16_t port) {
    Live::MqttOptions options;
    options.host = "127.0.0.1";
    options.port = port;
    return options;
}

/// @param viewPort of the live view; 0: there is none
std::string runJson(std::uint16_t port, const std::string& installation, std::uint16_t viewPort) {
    const auto sensor = [](const char* kind, const std::string& topic) {
        return nlohmann::json{{"kind", kind},
                              {"format", "onvif-json"},
                              {"input", {{"type", "mqtt"}, {"topic", topic}}}};
    };
    nlohmann::json run;
    run["installation"] = installation;
    run["brokers"] = {{{"host", "127.0.0.1"}, {"port", port}}};
    run["sensors"] = {sensor("camera", cameraTopic), sensor("radar", radarTopic)};
    run["outputs"] = {
        {{"format", "json-lines"}, {"to", {{"type", "mqtt"}, {"topic", "bench/fused"}}}}};
    run["status"] = {{"interval", 1}, {"mqtt", {{"topic", "bench/status"}}}};
    if (viewPort != 0) {
        run["view"] = {{"address", "127.0.0.1:" + std::to_string(viewPort)}};
    }
    return run.dump();
}

}  // namespace

LiveSystem::LiveSystem(Walkers walkers, std::size_t viewers)
    : walkers_(std::move(walkers)),
      faults_([](const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }),
      client_(loop_, localBroker(broker_.port()), faults_),
      camera_(client_, {cameraTopic, 0, false}, {}),
      radar_(client_, {radarTopic, 0, false}, {}),
      fused_(client_, "bench/fused", 0,
             [this](const Live::Message& message) {
                 const std::string video = R"({"source":"video")";
                 ++(message.bytes.substr(0, video.size()) == video ? fusedVideo_ : fusedRadar_);
             }),
      statuses_(client_, "bench/status", 0,
                [this](const Live::Message& message) { status_ = std::string(message.bytes); }),
      cameraScene_(VeskarTest::testInstallation(), "camera"),
      radarScene_(VeskarTest::testInstallation(), "radar") {
    Veskar::Host::Internal::RecordingHeader header;
    static_cast<Veskar::Host::Installation&>(header) = VeskarTest::testInstallation();
    header.name = "bench";
    std::ofstream(directory_.file("installation.jsonl")) << toJsonLine(header);
    const std::uint16_t viewPort = viewers > 0 ? VeskarTest::freePort() : std::uint16_t{0};
    std::ofstream(directory_.file("run.json"))
        << runJson(broker_.port(), directory_.file("installation.jsonl"), viewPort);
    VeskarTest::loopUntil(loop_, [this] { return client_.counters().isConnected; });
    start();
    status("uptime");
    if (viewers > 0) {
        viewers_.emplace(viewPort, viewers);
    }
}

LiveSystem::~LiveSystem() {
    viewers_.reset();
    stop();
}

void LiveSystem::start() {
    const std::string run = directory_.file("run.json");
    std::string program = VESKAR_PROGRAM;
    std::string command = "run";
    std::string path = run;
    char* const arguments[] = {program.data(), command.data(), path.data(), nullptr};
    if (::posix_spawn(&program_, program.c_str(), nullptr, nullptr, arguments, environ) != 0) {
        throw std::runtime_error("cannot run " + program);
    }
}

void LiveSystem::stop() {
    if (program_ > 0) {
        ::kill(program_, SIGTERM);
        ::waitpid(program_, nullptr, 0);
        program_ = -1;
    }
}

void LiveSystem::restart() {
    stop();
    start();
}

LiveSystem::Clock::time_point LiveSystem::publish(Veskar::Source source) {
    const bool isRadar = source == Veskar::Radar;
    const Live::UtcTime utc = std::chrono::system_clock::now().time_since_epoch();
    const double time = std::chrono::duration<double>(Clock::now() - start_).count();
    Live::SensorScene& scene = isRadar ? radarScene_ : cameraScene_;
    const std::string text =
        toJson(Live::Scene{scene.describe(walkers_.seenBy(source, time), utc)});
    const Clock::time_point handedOver = Clock::now();
    (isRadar ? radar_ : camera_).send(text);
    return handedOver;
}

LiveSystem::Clock::time_point LiveSystem::awaitFused(Veskar::Source source,
                                                     Clock::time_point latest) {
    const std::uint64_t& count = source == Veskar::Radar ? fusedRadar_ : fusedVideo_;
    const std::uint64_t before = count;
    auto now = Clock::now();
    for (; count == before && now < latest; now = Clock::now()) {
        loop_.turn(latest - now);
    }
    return now;
}

void LiveSystem::waitUntil(Clock::time_point time) {
    for (auto now = Clock::now(); now < time; now = Clock::now()) {
        loop_.turn(time - now);
    }
}

double LiveSystem::status(const std::string& key) {
    status_.reset();
    VeskarTest::loopUntil(loop_, [this] { return status_.has_value(); });
    return nlohmann::json::parse(status_.value()).at(key);
}

}  // namespace VeskarBench
