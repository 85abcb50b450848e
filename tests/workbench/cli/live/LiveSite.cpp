// SPDX-License-Identifier: Apache-2.0
#include "cli/live/LiveSite.h"

#include "support/Pipe.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace VeskarTest {
namespace {

constexpr std::chrono::milliseconds framePeriod(50);

/// @return an xs:dateTime of UNIX time
std::string dateTime(double time) {
    const auto micros = static_cast<std::int64_t>(std::llround(time * 1e6));
    const auto seconds = static_cast<std::time_t>(micros / 1'000'000);
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::string date(32, '\0');
    date.resize(std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &parts));
    const std::string fraction = std::to_string(1'000'000 + micros % 1'000'000);
    return date + "." + fraction.substr(1) + "Z";
}

/// @return a class word of ONVIF
std::string classWord(std::string word) {
    word[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(word[0])));
    return word;
}

nlohmann::json onvifObject(const nlohmann::json& track) {
    nlohmann::json object{{"@ObjectId", track["id"]}};
    if (track.contains("box")) {
        const nlohmann::json& box = track["box"];
        object["Appearance"]["Shape"] = {{"BoundingBox",
                                          {{"@left", box["left"]},
                                           {"@top", box["top"]},
                                           {"@right", box["right"]},
                                           {"@bottom", box["bottom"]}}},
                                         {"CenterOfGravity", {{"@x", 0.0}, {"@y", 0.0}}}};
    }
    if (track.contains("class")) {
        object["Appearance"]["Class"]["Type"] = nlohmann::json::array(
            {{{"#text", classWord(track["class"])}, {"@Likelihood", track["classProbability"]}}});
    }
    if (track.contains("range")) {
        const double azimuth = track["azimuth"];
        const double direction = track["direction"];
        object["Appearance"]["SphericalCoordinate"] = {{"@Distance", track["range"]},
                                                       {"@AzimuthAngle", 90.0 - azimuth},
                                                       {"@ElevationAngle", 0.0}};
        object["Behaviour"] = {{"Speed", track["speed"]},
                               {"Direction", {{"@yaw", std::remainder(90.0 - direction, 360.0)}}}};
    }
    return object;
}

}  // namespace

std::size_t occurrences(const std::string& text, const std::string& piece) {
    std::size_t count = 0;
    for (auto at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1)) {
        ++count;
    }
    return count;
}

Lines linesOf(const std::string& text) {
    Lines lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string megabytes(std::size_t count, char letter) {
    return std::string(count * 1'000'000, letter);
}

Lines warningsOf(const std::string& errors) {
    Lines lines = linesOf(errors);
    const auto isFromLoad = [](const std::string& line) {
        return line == "veskar: FusionModule: A video frame is older than the one before it";
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isFromLoad), lines.end());
    return lines;
}

double utcNow() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string onvifJson(const nlohmann::json& frame) {
    nlohmann::json scene{{"@UtcTime", dateTime(frame["time"])},
                         {"Object", nlohmann::json::array()}};
    for (const nlohmann::json& track : frame["tracks"]) {
        scene["Object"].push_back(onvifObject(track));
    }
    return nlohmann::json{{"Frame", nlohmann::json::array({scene})}}.dump();
}

nlohmann::json sensorFrame(const std::string& source, std::size_t count) {
    nlohmann::json tracks = nlohmann::json::array();
    for (std::size_t i = 0; i < count; ++i) {
        const double part = (static_cast<double>(i) + 0.5) / static_cast<double>(count);
        const auto row = static_cast<double>(i % 7);
        nlohmann::json track{{"id", i + 1}, {"class", "human"}, {"classProbability", 0.8}};
        if (source == "radar") {
            track.update({{"range", 12.0 + 3.0 * row},
                          {"azimuth", 80.0 * part - 40.0},
                          {"speed", 1.2},
                          {"direction", 30.0}});
        } else {
            const double left = 1.8 * part - 0.95;
            const double bottom = 0.05 * row - 0.2;
            track["box"] = {
                {"left", left}, {"bottom", bottom}, {"right", left + 0.04}, {"top", bottom + 0.2}};
            track["age"] = 1.0;
        }
        tracks.push_back(std::move(track));
    }
    return {{"source", source}, {"time", utcNow()}, {"tracks", std::move(tracks)}};
}

std::vector<nlohmann::json> simulatedFrames() {
    std::vector<nlohmann::json> frames;
    for (const std::string& line :
         linesOf(veskar({"simulate", dataFile("tiny.scenario.json")}).output)) {
        nlohmann::json frame = nlohmann::json::parse(line);
        if (frame.contains("tracks")) {
            frames.push_back(std::move(frame));
        }
    }
    return frames;
}

LiveSite::LiveSite(const Broker::Options& options, const MqttPeer::Options& peer)
    : broker_(options), peer_(broker_.port(), peer) {
    run_["installation"] = nlohmann::json::parse(R"({
        "camera": {"bdc": false, "rotation": {"pitch": 20, "yaw": 0, "roll": 0},
                   "resolution": [1920, 1080], "sensorOffset": [0, 0],
                   "imageToRadiansPolynomial": [0, 0.7853981633974483, 0, 0],
                   "radiansToImagePolynomial": [0, 1.2732395447351628, 0, 0],
                   "fov": [0.7853981633974483, 0.44], "position": [0, 0, 5]},
        "radar": {"position": [0, 0, 4.6], "rotation": {"pitch": 0, "yaw": 0, "roll": 0},
                  "rangeStd": 0.3, "azimuthStd": 1, "velocityStd": 0.5},
        "site": {"latitude": 55.7189, "longitude": 13.2254, "heading": 140}})");
    run_["brokers"] = nlohmann::json::array(
        {{{"name", "site"}, {"host", "127.0.0.1"}, {"port", broker_.port()}}});
    run_["sensors"] = nlohmann::json::array();
    for (const auto& [kind, topic] : {std::pair("camera", cameraTopic), {"radar", radarTopic}}) {
        run_["sensors"].push_back({{"kind", kind},
                                   {"format", "onvif-json"},
                                   {"input", {{"type", "mqtt"}, {"topic", topic}, {"qos", 1}}}});
    }
    run_["outputs"] = nlohmann::json::array();
    run_["status"] = {{"socket", {{"path", socketOf("status")}}}};
}

void LiveSite::letCameraConnect() {
    run_["sensors"][0]["format"] = "json-lines";
    run_["sensors"][0]["input"] = {{"type", "unix"}, {"path", socketOf("camera")}};
}

void LiveSite::addOutput(const std::string& name, const std::string& format,
                         const nlohmann::json& to, const nlohmann::json& more) {
    nlohmann::json output{{"name", name}, {"format", format}, {"to", to}};
    output.update(more);
    run_["outputs"].push_back(output);
}

std::string LiveSite::configuration() const {
    std::string path = directory_ / "run.json";
    spill(path, run_.dump(2));
    return path;
}

void LiveSite::awaitStart(const RunningProgram& program) const {
    program.await([this] {
        try {
            connectTo(socketOf("status"));
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    });
    // Who is answered knows that all is open.
    static_cast<void>(status());
}

nlohmann::json LiveSite::status() const {
    const Veskar::FileDescriptor connection = connectTo(socketOf("status"));
    std::string line;
    while (line.empty() || line.back() != '\n') {
        const std::string piece = readSome(connection.get());
        if (piece.empty()) {
            throw std::runtime_error("no status");
        }
        line += piece;
    }
    return nlohmann::json::parse(line.substr(0, line.find('\n')));
}

bool LiveSite::meanwhile(const std::function<void()>& send, const Condition& condition) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(60);
    for (Clock::time_point next = Clock::now(); !condition(status()); next += framePeriod) {
        if (next > end) {
            ADD_FAILURE() << status().dump(1);
            return false;
        }
        send();
        while (Clock::now() < next) {
            peer_.turn(std::chrono::milliseconds(5));
        }
    }
    return true;
}

bool LiveSite::heard(const std::function<bool()>& condition) {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(60);
    while (!condition() && Clock::now() < end) {
        peer_.turn(std::chrono::milliseconds(5));
    }
    return condition();
}

bool LiveSite::until(const Condition& condition) {
    return meanwhile([] {}, condition);
}

bool LiveSite::publishUntil(const Condition& condition, std::size_t objects) {
    return meanwhile([&] { publish(objects); }, condition);
}

bool LiveSite::writeUntil(const Veskar::FileDescriptor& camera, const Condition& condition) {
    return meanwhile([&] { writeAll(camera.get(), sensorFrame("video").dump() + "\n"); },
                     condition);
}

void LiveSite::publish(std::size_t objects) {
    peer_.publish(cameraTopic, onvifJson(sensorFrame("video", objects)));
    peer_.publish(radarTopic, onvifJson(sensorFrame("radar", objects)));
}

std::uint64_t LiveSite::framesJudged(const nlohmann::json& sensor) {
    std::uint64_t frames = 0;
    for (const char* fate : {"framesTaken", "framesStray", "framesUnplaced", "framesLate",
                             "framesRepeated", "framesReordered"}) {
        frames += sensor[fate].get<std::uint64_t>();
    }
    return frames;
}

void LiveSite::expectAccounted(const nlohmann::json& status) {
    for (const auto& [name, output] : status["output"].items()) {
        const auto of = [&output = output](const char* what) {
            return output[what].get<std::uint64_t>();
        };
        EXPECT_EQ(of("accepted"), of("written") + of("dropped") + of("failed") + of("waiting"))
            << name;
    }
}

}  // namespace VeskarTest
