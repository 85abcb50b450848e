// SPDX-License-Identifier: Apache-2.0
#include "live/service/RunConfiguration.h"

#include <veskar-host/InputError.h>
#include <veskar/Vocabulary.h>

#include "host/installation/InstallationFields.h"
#include "host/installation/InstallationKeys.h"
#include "host/json/JanssonValue.h"
#include "live/picture/Snapshot.h"
#include "live/rtsp/RtspUrl.h"
#include "live/service/RtspPlaces.h"
#include "live/view/LiveView.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <type_traits>
#include <utility>

#include <mosquitto.h>

namespace Veskar::Live {
namespace {

using Fields = Host::Internal::BasicFields<Host::Internal::JanssonValue>;
using Host::Internal::JsonKind;

constexpr double longestTime = 86400.0;  // s

/// @return the member's text; refused when it is empty
std::string someText(const Fields& fields, std::string_view name) {
    std::string text = fields.text(name);
    if (text.empty()) {
        fields.refuse(name, "is empty");
    }
    return text;
}

/// @return the integer between limits
std::int64_t whole(const Fields& fields, std::string_view name, double least, double most,
                   double otherwise) {
    const double value = fields.numberWithin(name, least, most, otherwise);
    if (value != std::floor(value)) {
        fields.refuse(name, "expected an integer, found a fraction");
    }
    return static_cast<std::int64_t>(value);
}

/// A word and what it means.
template <typename Meaning>
struct Word {
    std::string_view word;
    Meaning meaning;
};

/// @return the meaning of the member's word
template <typename Meaning, std::size_t size>
Meaning oneOf(const Fields& fields, std::string_view name,
              const std::array<Word<Meaning>, size>& words) {
    const std::string text = fields.text(name);
    const auto found = std::find_if(words.begin(), words.end(),
                                    [&](const auto& word) { return word.word == text; });
    if (found == words.end()) {
        std::string all;
        for (const auto& word : words) {
            all += all.empty() ? "" : &word == &words.back() ? " or " : ", ";
            all += word.word;
        }
        fields.refuse(name, "\"" + text + "\" is not " + all);
    }
    return found->meaning;
}

std::set<std::string> textsIn(const Fields& fields, std::string_view name) {
    std::set<std::string> texts;
    if (fields.has(name)) {
        fields.array(name).forEachItem([&](const Host::Internal::JanssonValue& item) {
            if (item.kind() != JsonKind::String) {
                fields.refuse(name, "expected strings only");
            }
            texts.emplace(item.text());
        });
    }
    return texts;
}

template <typename Place>
Place networkPlace(const Fields& fields, std::string_view name) {
    const std::string text = fields.text(name);
    try {
        return Place{NetworkPlace::parse(text)};
    } catch (const Host::InputError& error) {
        fields.refuse(name, error.reason());
    }
}

UnixPlace unixPlace(const Fields& fields) {
    UnixPlace place{someText(fields, "path")};
    if (place.path.size() > 107) {
        fields.refuse("path", "is longer than 107 bytes");
    }
    if (fields.has("permissions")) {
        const std::string digits = fields.text("permissions");
        const bool isOctal = digits.size() <= 4 && !digits.empty() &&
                             digits.find_first_not_of("01234567") == std::string::npos;
        if (!isOctal) {
            fields.refuse("permissions", "expected octal digits, as \"0660\"");
        }
        place.permissions = static_cast<mode_t>(std::stoul(digits, nullptr, 8));
    }
    return place;
}

/// @return the topic, to which something is published
std::string topicIn(const Fields& fields, std::string_view name) {
    std::string topic = someText(fields, name);
    if (mosquitto_pub_topic_check2(topic.data(), topic.size()) != MOSQ_ERR_SUCCESS) {
        fields.refuse(name,
                      "\"" + topic +
                          "\" is no topic to publish to: it has a wildcard (+ or #) or is too "
                          "long");
    }
    return topic;
}

/// @return the topics that are subscribed to
std::string filterIn(const Fields& fields, std::string_view name) {
    std::string filter = someText(fields, name);
    if (mosquitto_sub_topic_check2(filter.data(), filter.size()) != MOSQ_ERR_SUCCESS) {
        fields.refuse(name, "\"" + filter +
                                "\" is no filter of topics: + stands for one level, # at the end "
                                "for all further ones");
    }
    return filter;
}

/// How a topic is read.
using ReadTopic = std::string (*)(const Fields&, std::string_view);

BrokerTopic brokerTopic(const Fields& fields, ReadTopic read) {
    BrokerTopic topic;
    topic.broker = fields.text("broker", "");
    topic.topic = read(fields, "topic");
    topic.qos = static_cast<int>(whole(fields, "qos", 0, 2, 0));
    topic.isRetained = fields.boolean("retain", false);
    return topic;
}

RtspPlace rtspPlace(const Fields& fields) {
    static constexpr std::array<Word<RtspTransport>, 2> transports{
        {{"tcp", RtspTransport::Tcp}, {"udp", RtspTransport::Udp}}};
    if (const std::string missing = rtspMissing(); !missing.empty()) {
        fields.refuse("type", missing);
    }
    RtspPlace place{someText(fields, "url"), fields.text("credentials", "")};
    if (const std::string fault = faultOfRtspUrl(place.url); !fault.empty()) {
        fields.refuse("url", fault);
    }
    if (fields.has("transport")) {
        place.transport = oneOf(fields, "transport", transports);
    }
    return place;
}

/// The kinds of places.
enum class Place { Standard, File, Unix, Tcp, Udp, Server, Mqtt, Rtsp };

InputPlace inputPlace(const Fields& fields) {
    static constexpr std::array<Word<Place>, 7> kinds{{{"stdin", Place::Standard},
                                                       {"unix", Place::Unix},
                                                       {"tcp", Place::Tcp},
                                                       {"udp", Place::Udp},
                                                       {"connect", Place::Server},
                                                       {"mqtt", Place::Mqtt},
                                                       {"rtsp", Place::Rtsp}}};
    switch (oneOf(fields, "type", kinds)) {
        case Place::Unix:
            fields.allowOnly({"type", "path", "permissions"});
            return unixPlace(fields);
        case Place::Tcp:
            fields.allowOnly({"type", "address"});
            return networkPlace<TcpPlace>(fields, "address");
        case Place::Udp:
            fields.allowOnly({"type", "address"});
            return networkPlace<UdpPlace>(fields, "address");
        case Place::Server:
            fields.allowOnly({"type", "address"});
            return networkPlace<ServerPlace>(fields, "address");
        case Place::Mqtt:
            fields.allowOnly({"type", "broker", "topic", "qos"});
            return brokerTopic(fields, filterIn);
        case Place::Rtsp:
            fields.allowOnly({"type", "url", "credentials", "transport"});
            return rtspPlace(fields);
        default:
            fields.allowOnly({"type"});
            return StandardStream();
    }
}

OutputPlace outputPlace(const Fields& fields) {
    static constexpr std::array<Word<Place>, 5> kinds{{{"stdout", Place::Standard},
                                                       {"file", Place::File},
                                                       {"unix", Place::Unix},
                                                       {"tcp", Place::Tcp},
                                                       {"mqtt", Place::Mqtt}}};
    switch (oneOf(fields, "type", kinds)) {
        case Place::File: {
            fields.allowOnly({"type", "path", "rotateAfter", "keptFiles"});
            FilePlace place{someText(fields, "path"), {}};
            place.rotation.after = static_cast<std::uint64_t>(
                whole(fields, "rotateAfter", 0, 1e12, static_cast<double>(place.rotation.after)));
            place.rotation.kept = static_cast<std::size_t>(
                whole(fields, "keptFiles", 0, 1000, static_cast<double>(place.rotation.kept)));
            return place;
        }
        case Place::Unix:
            fields.allowOnly({"type", "path", "permissions"});
            return unixPlace(fields);
        case Place::Tcp:
            fields.allowOnly({"type", "address"});
            return networkPlace<TcpPlace>(fields, "address");
        case Place::Mqtt:
            fields.allowOnly({"type", "broker", "topic", "qos", "retain"});
            return brokerTopic(fields, topicIn);
        default:
            fields.allowOnly({"type"});
            return StandardStream();
    }
}

SensorSettings readSensor(const Fields& fields) {
    static constexpr std::array<Word<Source>, 2> kinds{{{"camera", VideoObject}, {"radar", Radar}}};
    static constexpr std::array<Word<SensorFormat>, 3> formats{
        {{"onvif-json", SensorFormat::OnvifJson},
         {"onvif-xml", SensorFormat::OnvifXml},
         {"json-lines", SensorFormat::JsonLines}}};
    fields.allowOnly({"name", "kind", "format", "input", "latency", "synchronised", "clockLimit",
                      "lateAfter", "takeLate", "takeRepeated", "takeReordered", "ignoredModules"});
    SensorSettings sensor;
    sensor.source = oneOf(fields, "kind", kinds);
    sensor.name = fields.has("name") ? someText(fields, "name") : fields.text("kind");
    sensor.format = oneOf(fields, "format", formats);
    sensor.input = inputPlace(fields.object("input"));
    if (std::holds_alternative<RtspPlace>(sensor.input) &&
        sensor.format != SensorFormat::OnvifXml) {
        fields.refuse("format", "what comes over RTSP is onvif-xml");
    }
    sensor.clock.sensor = sensor.name;
    sensor.clock.latency = fields.numberWithin("latency", 0.0, 60.0, sensor.clock.latency);
    sensor.clock.isSynchronised = fields.boolean("synchronised", sensor.clock.isSynchronised);
    sensor.clock.limit = fields.numberWithin("clockLimit", 0.0, 1e9, sensor.clock.limit);
    FramePolicy::Options& policy = sensor.clock.policy;
    policy.lateAfter = fields.numberWithin("lateAfter", 0.0, longestTime, policy.lateAfter);
    policy.takesLate = fields.boolean("takeLate", policy.takesLate);
    policy.takesRepeated = fields.boolean("takeRepeated", policy.takesRepeated);
    policy.takesReordered = fields.boolean("takeReordered", policy.takesReordered);
    sensor.ignoredModules = textsIn(fields, "ignoredModules");
    return sensor;
}

OutputSettings readOutput(const Fields& fields) {
    static constexpr std::array<Word<TrackFormat>, 5> formats{
        {{"json-lines", TrackFormat::JsonLines},
         {"onvif-json", TrackFormat::OnvifJson},
         {"onvif-xml", TrackFormat::OnvifXml},
         {"events", TrackFormat::Events},
         {"text", TrackFormat::Text}}};
    fields.allowOnly({"name", "format", "to", "interval", "confirmedOnly", "classes", "tags"});
    OutputSettings output;
    output.format = oneOf(fields, "format", formats);
    output.name = fields.has("name") ? someText(fields, "name") : fields.text("format");
    output.to = outputPlace(fields.object("to"));
    output.interval = fields.numberWithin("interval", 0.0, longestTime, 0.0);
    output.isConfirmedOnly = fields.boolean("confirmedOnly", false);
    output.classes = textsIn(fields, "classes");
    output.withTags = fields.boolean("tags", output.format == TrackFormat::Events);
    if (output.interval > 0.0 && output.format == TrackFormat::Events) {
        fields.refuse("interval", "events have no rate limit: every one counts");
    }
    return output;
}

MqttTls readTls(const Fields& fields) {
    fields.allowOnly({"authorities", "certificate", "key"});
    MqttTls tls;
    tls.authorities = fields.text("authorities", tls.authorities);
    tls.certificate = fields.text("certificate", "");
    tls.key = fields.text("key", "");
    if (tls.certificate.empty() != tls.key.empty()) {
        fields.refuse(tls.key.empty() ? "key" : "certificate",
                      "missing; certificate and key go together");
    }
    return tls;
}

BrokerSettings readBroker(const Fields& fields) {
    static constexpr std::array<Word<MqttProtocol>, 3> protocols{
        {{"newest", MqttProtocol::Newest}, {"5", MqttProtocol::V5}, {"3.1.1", MqttProtocol::V311}}};
    fields.allowOnly({"name", "host", "port", "clientId", "credentials", "tls", "availability",
                      "protocol", "keepAlive"});
    BrokerSettings broker;
    MqttOptions& options = broker.options;
    options.host = someText(fields, "host");
    broker.name = fields.has("name") ? someText(fields, "name") : options.host;
    options.port = static_cast<std::uint16_t>(whole(fields, "port", 0, 65535, 0));
    options.clientId = fields.text("clientId", "");
    options.credentials = fields.text("credentials", "");
    if (fields.has("tls")) {
        options.tls = readTls(fields.object("tls"));
    }
    if (fields.has("availability")) {
        options.availability.emplace().topic = topicIn(fields, "availability");
    }
    if (fields.has("protocol")) {
        options.protocol = oneOf(fields, "protocol", protocols);
    }
    options.keepAlive = std::chrono::seconds(
        whole(fields, "keepAlive", 5, 3600, static_cast<double>(options.keepAlive.count())));
    return broker;
}

std::optional<BrokerTopic> readTopic(const Fields& fields) {
    if (!fields.has("mqtt")) {
        return std::nullopt;
    }
    const Fields topic = fields.object("mqtt");
    topic.allowOnly({"broker", "topic", "qos", "retain"});
    return brokerTopic(topic, topicIn);
}

WatchSettings readWatch(const Fields& fields) {
    fields.allowOnly({"window", "limit", "mqtt"});
    WatchSettings watch;
    watch.window = fields.numberWithin("window", 10.0, 3600.0, watch.window);
    watch.limit = fields.numberWithin("limit", 0.2, 10.0, watch.limit);
    watch.topic = readTopic(fields);
    return watch;
}

StatusSettings readStatus(const Fields& fields) {
    fields.allowOnly({"interval", "mqtt", "socket", "prometheus"});
    StatusSettings status;
    status.interval = fields.numberWithin("interval", 0.1, longestTime, status.interval);
    status.topic = readTopic(fields);
    if (fields.has("socket")) {
        const Fields socket = fields.object("socket");
        socket.allowOnly({"path", "permissions"});
        status.socket = unixPlace(socket);
    }
    if (fields.has("prometheus")) {
        status.prometheus = networkPlace<NetworkPlace>(fields, "prometheus");
        const std::set<std::string> loopback{"127.0.0.1", "::1", "localhost", "lo"};
        if (loopback.count(status.prometheus->host) == 0) {
            fields.refuse("prometheus", "\"" + status.prometheus->host +
                                            "\" is not the loopback interface: whoever reaches "
                                            "the port reads everything");
        }
    }
    return status;
}

RecordSettings readRecord(const Fields& fields) {
    fields.allowOnly({"path", "name", "licence", "rotateAfter", "keptFiles"});
    RecordSettings record{someText(fields, "path"), {}};
    Host::FrameRecorder::Options& options = record.options;
    options.name = fields.text("name", "");
    options.licence = fields.text("licence", "");
    options.rotateAfter = static_cast<std::uint64_t>(
        whole(fields, "rotateAfter", 0, 1e12, static_cast<double>(options.rotateAfter)));
    options.keptFiles = static_cast<std::size_t>(
        whole(fields, "keptFiles", 0, 1000, static_cast<double>(options.keptFiles)));
    return record;
}

std::set<std::string> inLowerCase(const std::set<std::string>& texts) {
    std::set<std::string> lower;
    for (std::string text : texts) {
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) {
            return static_cast<char>(std::tolower(letter));
        });
        lower.insert(std::move(text));
    }
    return lower;
}

/// @throw InputError when others could see what happens without a token
void refuseUnguarded(const ViewSettings& view) {
    if (!view.isLocal() && view.token.empty()) {
        throw Host::InputError("view.token",
                               "missing: \"" + view.place.host +
                                   "\" is not the loopback interface, and viewers have to be told "
                                   "from others");
    }
}

/// @return the address without a fault: it may not hold a password, and is shown in messages
std::string urlOfPictures(const Fields& fields) {
    if (const std::string missing = snapshotMissing(); !missing.empty()) {
        fields.refuse("url", missing);
    }
    std::string url = someText(fields, "url");
    const std::size_t scheme = url.find("://");
    const std::string word = url.substr(0, scheme);
    if (scheme == std::string::npos || (word != "http" && word != "https" && word != "file")) {
        fields.refuse("url", "expected http://, https:// or file://");
    }
    const std::size_t host = scheme + 3;
    if (word != "file" &&
        url.substr(host, url.find_first_of("/?#", host) - host).find('@') != std::string::npos) {
        fields.refuse("url",
                      "names a user; user and password stand in a file, which \"credentials\" "
                      "names");
    }
    return url;
}

PictureSettings readPictures(const Fields& fields) {
    fields.allowOnly({"directory", "url", "credentials", "interval"});
    constexpr double shortestInterval = 0.1;
    constexpr double longestInterval = 3600.0;
    PictureSettings pictures;
    if (fields.has("directory") == fields.has("url")) {
        fields.refuse("url", "expected either \"url\" or \"directory\"");
    }
    if (fields.has("directory")) {
        pictures.directory = someText(fields, "directory");
    } else {
        pictures.url = urlOfPictures(fields);
    }
    if (fields.has("credentials")) {
        pictures.credentials = someText(fields, "credentials");
        if (pictures.url.empty()) {
            fields.refuse("credentials", "belong to a \"url\"");
        }
    }
    pictures.interval =
        fields.numberWithin("interval", shortestInterval, longestInterval, pictures.interval);
    return pictures;
}

ViewSettings readView(const Fields& fields) {
    if (const std::string missing = viewMissing(); !missing.empty()) {
        throw Host::InputError("view", missing);
    }
    fields.allowOnly({"address", "token", "names", "pictures"});
    ViewSettings view;
    if (fields.has("address")) {
        view.place = networkPlace<NetworkPlace>(fields, "address");
    }
    if (fields.has("token")) {
        view.token = someText(fields, "token");
    }
    view.names = inLowerCase(textsIn(fields, "names"));
    if (fields.has("pictures")) {
        view.pictures = readPictures(fields.object("pictures"));
    }
    refuseUnguarded(view);
    return view;
}

Host::Installation readPlace(const Fields& fields) {
    if (fields.at("installation").kind() == JsonKind::String) {
        try {
            return Host::Installation::parse(fields.text("installation"));
        } catch (const Host::InputError& error) {
            fields.refuse("installation", error.what());
        }
    }
    const Fields members = fields.object("installation");
    members.allowOnly(Host::Internal::installationKeys);
    return Host::Internal::readInstallation(members);
}

/// Gives a topic that names no broker the only one.
/// @throw InputError when there is not just one, or none of the name
void settle(BrokerTopic& topic, const std::vector<BrokerSettings>& brokers,
            const std::string& place) {
    if (topic.broker.empty() && brokers.size() == 1) {
        topic.broker = brokers.front().name;
        return;
    }
    std::string names;
    for (const BrokerSettings& broker : brokers) {
        if (broker.name == topic.broker) {
            return;
        }
        names += (names.empty() ? "" : ", ") + broker.name;
    }
    const std::string fault =
        topic.broker.empty() ? "missing" : "\"" + topic.broker + "\" is none of the brokers";
    throw Host::InputError(place + ".broker", names.empty() ? fault + "; there are no brokers"
                                                            : fault + "; say which of " + names);
}

std::string itemOf(const char* name, std::size_t index) {
    return std::string(name) + "[" + std::to_string(index) + "]";
}

void settleTopics(RunConfiguration& run) {
    for (std::size_t i = 0; i < run.sensors.size(); ++i) {
        if (auto* topic = std::get_if<BrokerTopic>(&run.sensors[i].input)) {
            settle(*topic, run.brokers, itemOf("sensors", i) + ".input");
        }
    }
    for (std::size_t i = 0; i < run.outputs.size(); ++i) {
        if (auto* topic = std::get_if<BrokerTopic>(&run.outputs[i].to)) {
            settle(*topic, run.brokers, itemOf("outputs", i) + ".to");
        }
    }
    if (run.status.topic) {
        settle(*run.status.topic, run.brokers, "status.mqtt");
    }
    if (run.watch && run.watch->topic) {
        settle(*run.watch->topic, run.brokers, "watch.mqtt");
    }
}

/// A topic that the program itself publishes to.
struct Published {
    std::string place;
    BrokerTopic topic;
};

std::vector<Published> publishedBy(const RunConfiguration& run) {
    std::vector<Published> published;
    for (std::size_t i = 0; i < run.brokers.size(); ++i) {
        if (const auto& availability = run.brokers[i].options.availability) {
            published.push_back({itemOf("brokers", i) + ".availability",
                                 {run.brokers[i].name, availability->topic}});
        }
    }
    for (std::size_t i = 0; i < run.outputs.size(); ++i) {
        if (const auto* topic = std::get_if<BrokerTopic>(&run.outputs[i].to)) {
            published.push_back({itemOf("outputs", i) + ".to", *topic});
        }
    }
    if (run.status.topic) {
        published.push_back({"status.mqtt", *run.status.topic});
    }
    if (run.watch && run.watch->topic) {
        published.push_back({"watch.mqtt", *run.watch->topic});
    }
    return published;
}

/// What the program says is no report of a sensor.
void refuseEchoes(const RunConfiguration& run) {
    const std::vector<Published> published = publishedBy(run);
    for (std::size_t i = 0; i < run.sensors.size(); ++i) {
        const auto* heard = std::get_if<BrokerTopic>(&run.sensors[i].input);
        for (const Published& own : published) {
            bool isHeard = false;
            if (heard != nullptr && heard->broker == own.topic.broker) {
                mosquitto_topic_matches_sub(heard->topic.c_str(), own.topic.topic.c_str(),
                                            &isHeard);
            }
            if (isHeard) {
                throw Host::InputError(itemOf("sensors", i) + ".input.topic",
                                       "\"" + heard->topic + "\" matches \"" + own.topic.topic +
                                           "\" of " + own.place + ", which is no sensor's");
            }
        }
    }
}

template <typename Item>
void refuseRepeatedNames(const std::vector<Item>& items, const char* list) {
    std::set<std::string> names;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (!names.insert(items[i].name).second) {
            throw Host::InputError(itemOf(list, i) + ".name",
                                   "\"" + items[i].name + "\" occurs twice");
        }
    }
}

/// Two writers of a file would rotate each other's away, and two listeners at a path take it from
/// each other.
class TakenPaths {
public:
    /// @throw InputError when the path is taken
    void take(const std::string& place, const std::string& path) {
        if (!paths_.insert(std::filesystem::path(path).lexically_normal()).second) {
            throw Host::InputError(place, "\"" + path + "\" is taken already");
        }
    }
    void take(const std::string& place, const InputPlace& input) {
        if (const auto* path = std::get_if<UnixPlace>(&input)) {
            take(place + ".input.path", path->path);
        }
    }
    void take(const std::string& place, const OutputPlace& output) {
        if (const auto* path = std::get_if<UnixPlace>(&output)) {
            take(place + ".to.path", path->path);
        } else if (const auto* file = std::get_if<FilePlace>(&output)) {
            take(place + ".to.path", file->path);
        }
    }

private:
    std::set<std::filesystem::path> paths_;
};

void refuseSharedPaths(const RunConfiguration& run) {
    TakenPaths taken;
    for (std::size_t i = 0; i < run.sensors.size(); ++i) {
        if (i == 0 || !run.sensors[i].sharesInput) {
            taken.take(itemOf("sensors", i), run.sensors[i].input);
        }
    }
    for (std::size_t i = 0; i < run.outputs.size(); ++i) {
        taken.take(itemOf("outputs", i), run.outputs[i].to);
    }
    if (run.status.socket) {
        taken.take("status.socket.path", run.status.socket->path);
    }
    if (run.record) {
        taken.take("record.path", run.record->path);
    }
}

bool areSame(const StandardStream& /*a*/, const StandardStream& /*b*/) {
    return true;
}
bool areSame(const UnixPlace& a, const UnixPlace& b) {
    return a.path == b.path;
}
bool areSame(const NetworkPlace& a, const NetworkPlace& b) {
    return a.host == b.host && a.port == b.port;
}
bool areSame(const BrokerTopic& a, const BrokerTopic& b) {
    return a.broker == b.broker && a.topic == b.topic;
}
bool areSame(const RtspPlace& /*a*/, const RtspPlace& /*b*/) {
    return false;  // a camera is no radar
}

bool areSame(const InputPlace& a, const InputPlace& b) {
    return a.index() == b.index() &&
           std::visit(
               [&](const auto& place) {
                   return areSame(place, std::get<std::decay_t<decltype(place)>>(b));
               },
               a);
}

/// A camera and a radar may come in one stream: a line names its sensor.
void shareInput(std::vector<SensorSettings>& sensors) {
    const auto writesLines = [](const SensorSettings& sensor) {
        return sensor.format == SensorFormat::JsonLines;
    };
    if (sensors.size() == 2 && std::all_of(sensors.begin(), sensors.end(), writesLines) &&
        areSame(sensors[0].input, sensors[1].input)) {
        sensors[0].sharesInput = true;
        sensors[1].sharesInput = true;
    }
}

/// What one thing can serve only once.
void refuseSharing(const RunConfiguration& run) {
    refuseRepeatedNames(run.brokers, "brokers");
    refuseRepeatedNames(run.sensors, "sensors");
    refuseRepeatedNames(run.outputs, "outputs");
    refuseSharedPaths(run);
    std::set<Source> sources;
    bool isInputTaken = false;
    for (std::size_t i = 0; i < run.sensors.size(); ++i) {
        if (!sources.insert(run.sensors[i].source).second) {
            throw Host::InputError(itemOf("sensors", i) + ".kind",
                                   "an installation has one camera and one radar");
        }
        const bool isStandard = std::holds_alternative<StandardStream>(run.sensors[i].input);
        if (isStandard && std::exchange(isInputTaken, true) && !run.sensors[i].sharesInput) {
            throw Host::InputError(itemOf("sensors", i) + ".input",
                                   "standard input has another reader already; only sensors that "
                                   "write json-lines can share it");
        }
    }
    bool isOutputTaken = false;
    for (std::size_t i = 0; i < run.outputs.size(); ++i) {
        const bool isStandard = std::holds_alternative<StandardStream>(run.outputs[i].to);
        if (isStandard && std::exchange(isOutputTaken, true)) {
            throw Host::InputError(itemOf("outputs", i) + ".to",
                                   "standard output has another writer already");
        }
    }
}

}  // namespace

RunConfiguration RunConfiguration::parse(std::string_view text) {
    const Host::Internal::JsonDocument document(text);
    const Fields fields(document.root());
    fields.allowOnly({"$schema", "installation", "fusion", "brokers", "sensors", "outputs",
                      "status", "record", "view", "watch"});
    RunConfiguration run;
    run.installation = readPlace(fields);
    if (fields.at("installation").kind() == JsonKind::String) {
        run.installationFile = fields.text("installation");
    }
    run.fusion = fields.text("fusion", "");
    if (fields.has("brokers")) {
        fields.forEach("brokers",
                       [&](const Fields& item) { run.brokers.push_back(readBroker(item)); });
    }
    fields.forEach("sensors", [&](const Fields& item) { run.sensors.push_back(readSensor(item)); });
    if (run.sensors.empty()) {
        fields.refuse("sensors", "names no sensor");
    }
    if (fields.has("outputs")) {
        fields.forEach("outputs",
                       [&](const Fields& item) { run.outputs.push_back(readOutput(item)); });
    }
    if (fields.has("status")) {
        run.status = readStatus(fields.object("status"));
    }
    if (fields.has("record")) {
        run.record = readRecord(fields.object("record"));
    }
    if (fields.has("view")) {
        run.view = readView(fields.object("view"));
    }
    if (fields.has("watch")) {
        run.watch = readWatch(fields.object("watch"));
    }
    settleTopics(run);
    shareInput(run.sensors);
    refuseSharing(run);
    refuseEchoes(run);
    return run;
}

void RunConfiguration::showAt(const std::string& address) {
    if (const std::string missing = viewMissing(); !missing.empty()) {
        throw Host::InputError("view", missing);
    }
    if (!view) {
        view.emplace();
    }
    if (!address.empty()) {
        try {
            view->place = NetworkPlace::parse(address);
        } catch (const Host::InputError& error) {
            throw Host::InputError("view.address", error.reason());
        }
    }
    refuseUnguarded(*view);
}

}  // namespace Veskar::Live
