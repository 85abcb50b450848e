// SPDX-License-Identifier: Apache-2.0
#include "import/Mcap.h"

#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>
#include <veskar/Camera.h>

#include "HostLibrary.h"
#include "import/ImportedClasses.h"
#include "import/OwnTrackers.h"
#include "import/PixelBox.h"
#include "import/mcap/McapReader.h"
#include "import/mcap/RosSchema.h"
#include "io/Counted.h"
#include "io/Interruption.h"
#include "io/Printable.h"
#include "io/TextFile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace Workbench {
namespace {

using nlohmann::json;

constexpr const char* radarTracks = "radar_msgs/msg/RadarTracks";
constexpr const char* radarScan = "radar_msgs/msg/RadarScan";
constexpr const char* detections = "vision_msgs/msg/Detection2DArray";
constexpr std::int64_t second = 1'000'000'000;  // ns
/// What is farther away, or faster, is no object of a sensor, m and m/s; for boxes in image units.
constexpr double farthest = 1e6;

/// A message with its times, ns since 1970. As an object it is much larger than in the log, so that
/// it is read a second time when its turn comes.
struct Stamped {
    std::int64_t time;
    std::int64_t received;
    const RosSchema* schema;
    std::string data;

    json content() const { return schema->read(data); }
};

/// The messages of one topic.
struct Topic {
    std::string type;
    std::vector<Stamped> messages;
};

/// The words that Autoware has for RadarTrack::classification; below are those of the message's
/// own definition, which tell no class.
std::string wordOf(int classification) {
    constexpr int first = 32001;
    static const char* const words[] = {"car",        "truck",   "bus",       "trailer",
                                        "motorcycle", "bicycle", "pedestrian"};
    const int place = classification - first;
    return place >= 0 && place < static_cast<int>(std::size(words)) ? words[place] : "";
}

Eigen::Vector3d vectorIn(const json& vector) {
    return {vector.at("x").get<double>(), vector.at("y").get<double>(),
            vector.at("z").get<double>()};
}

/// @return clockwise from forward, degrees; ROS counts to the left
double clockwise(const Eigen::Vector3d& vector) {
    return -degrees(std::atan2(vector[1], vector[0]));
}

class McapImport {
public:
    explicit McapImport(const McapOptions& options) : options_(options) {
        static_cast<Installation&>(recording_.header) = Installation::parse(options.installation);
        recording_.header.name = "mcap";
        recording_.header.origin = "ROS 2 messages";
        recording_.header.licence = "unknown";
    }

    ImportedRecording run() {
        readTopics();
        const std::string radar = topicFor(options_.radar, {radarTracks, radarScan}, "radar");
        const std::string video = topicFor(options_.video, {detections}, "video");
        if (radar.empty() && video.empty()) {
            throw InputError(options_.log,
                             InputError(fmt::format("no topic with {}, {} or {}", radarTracks,
                                                    radarScan, detections)));
        }
        setEpoch(radar, video);
        convert(radar, [this](const Topic& topic) { addRadar(topic); });
        convert(video, [this](const Topic& topic) { addVideo(topic); });
        return std::move(recording_);
    }

private:
    /// @param name of a topic; empty: none
    template <typename Convert>
    void convert(const std::string& name, Convert how) {
        if (!name.empty()) {
            naming(name, [&] { how(topics_.at(name)); });
        }
    }

    /// Names file and topic in what is thrown. Definitions may lack fields or state other types.
    template <typename Step>
    void naming(const std::string& topic, Step step) const {
        const auto refuse = [&](const std::string& what) {
            throw InputError(options_.log, InputError(printable(topic), InputError(what)));
        };
        try {
            step();
        } catch (const json::exception& error) {
            refuse(reasonOf(error));
        } catch (const InputError& error) {
            refuse(error.what());
        }
    }

    void readTopics() {
        McapReader reader(options_.log);
        std::map<const McapReader::Schema*, const RosSchema*> known;
        while (const auto message = reader.next()) {
            throwIfInterrupted();
            const McapReader::Schema* schema = message->channel->schema;
            if (schema == nullptr || types_.count(schema->name) == 0) {
                continue;
            }
            naming(message->channel->topic, [&] {
                if (schema->encoding != "ros2msg" || message->channel->encoding != "cdr") {
                    throw InputError(fmt::format("encoding {}, {}: only ros2msg, cdr is read",
                                                 printable(schema->encoding),
                                                 printable(message->channel->encoding)));
                }
                const RosSchema*& definition = known[schema];
                if (definition == nullptr) {
                    definition = &schemas_.emplace_back(schema->name, schema->text);
                }
                take(*message, *definition);
            });
        }
        for (auto& [name, topic] : topics_) {
            sortByTime(topic);
        }
    }

    void take(const McapReader::Message& message, const RosSchema& schema) {
        Topic& topic = topics_[message.channel->topic];
        topic.type = message.channel->schema->name;
        const std::int64_t time = timeOf(schema.read(message.data).at("header").at("stamp"));
        // A clock that runs behind that of the sensor must not turn cause and effect around.
        const auto logged = static_cast<std::int64_t>(
            std::min<std::uint64_t>(message.logTime, std::numeric_limits<std::int64_t>::max()));
        topic.messages.push_back(
            {time, std::max(time, logged), &schema, std::string(message.data)});
    }

    /// @return ns since 1970
    static std::int64_t timeOf(const json& stamp) {
        constexpr std::int64_t largest = std::numeric_limits<std::uint32_t>::max();
        const auto whole = stamp.at("sec").get<std::int64_t>();
        const auto fraction = stamp.at("nanosec").get<std::int64_t>();
        if (std::min(whole, fraction) < 0 || std::max(whole, fraction) > largest) {
            throw InputError(fmt::format("a stamp of {} s and {} ns", whole, fraction));
        }
        return whole * second + fraction;
    }

    /// Frames of a sensor ascend in time.
    void sortByTime(Topic& topic) {
        std::vector<Stamped>& messages = topic.messages;
        std::stable_sort(messages.begin(), messages.end(),
                         [](const auto& a, const auto& b) { return a.time < b.time; });
        const auto end = std::unique(messages.begin(), messages.end(),
                                     [](const auto& a, const auto& b) { return a.time == b.time; });
        if (const auto repeated = messages.end() - end; repeated > 0) {
            recording_.warnings.push_back(
                fmt::format("{} left out: the sensor had one at that time",
                            counted(static_cast<std::uint64_t>(repeated), "message")));
        }
        messages.erase(end, messages.end());
    }

    /// @return the topic that is meant; empty when there is none and none was asked for
    std::string topicFor(const std::string& wanted, const std::set<std::string>& types,
                         const char* option) const {
        std::vector<std::string> found;
        for (const auto& [name, topic] : topics_) {
            if (types.count(topic.type) > 0 && (wanted.empty() || wanted == name)) {
                found.push_back(name);
            }
        }
        if (found.empty() && !wanted.empty()) {
            throw InputError(options_.log, InputError(fmt::format("no topic {} of a {}",
                                                                  printable(wanted), option)));
        }
        if (found.size() > 1) {
            throw InputError(options_.log, InputError(fmt::format(
                                               "{} and {}: say with --{} which is meant",
                                               printable(found[0]), printable(found[1]), option)));
        }
        return found.empty() ? std::string() : found.front();
    }

    /// Recordings count from a moment near their beginning: the whole second before it.
    void setEpoch(const std::string& radar, const std::string& video) {
        std::int64_t first = std::numeric_limits<std::int64_t>::max();
        for (const std::string& name : {radar, video}) {
            if (!name.empty()) {
                first = std::min(first, topics_.at(name).messages.front().time);
            }
        }
        const std::int64_t begin = first / second;
        epoch_ = begin * second;
        recording_.header.epoch = static_cast<double>(begin);
    }

    double sinceEpoch(std::int64_t time) const {
        return static_cast<double>(time - epoch_) / static_cast<double>(second);
    }

    /// @param tracks of the message
    void add(Veskar::Source source, const Stamped& message, std::vector<Report> tracks) {
        recording_.frames.push_back(
            {source, sinceEpoch(message.time), sinceEpoch(message.received), std::move(tracks)});
    }

    void addRadar(const Topic& topic) {
        if (topic.type == radarScan) {
            addScans(topic);
            return;
        }
        for (const Stamped& message : topic.messages) {
            std::vector<Report> tracks;
            const json content = message.content();
            for (const json& track : content.at("tracks")) {
                const std::string uuid = track.at("uuid").at("uuid").dump();
                if (std::optional<Report> report = radarReport(track, idOf(uuid))) {
                    tracks.push_back(std::move(*report));
                }
            }
            add(Veskar::Radar, message, std::move(tracks));
        }
    }

    std::optional<Report> radarReport(const json& track, std::int32_t id) {
        const Eigen::Vector3d position = vectorIn(track.at("position"));
        const Eigen::Vector3d velocity = vectorIn(track.at("velocity"));
        RadarReport report;
        report.id = id;
        report.range = position.norm();
        if (!(report.range > 0.0 && report.range < farthest)) {
            leaveOut("a radar's track without a place");
            return std::nullopt;
        }
        report.azimuth = clockwise(position);
        if (velocity.norm() < farthest) {
            report.speed = velocity.head<2>().norm();
            report.direction = clockwise(velocity);
            report.radialSpeed = position.dot(velocity) / report.range;
        }
        report.objectClass = classes_.of(wordOf(track.at("classification").get<int>()));
        return report;
    }

    void addScans(const Topic& topic) {
        RadarTracker tracker = ownTrackerFor(recording_.header.radar);
        for (const Stamped& message : topic.messages) {
            std::vector<RadarDetection> returns;
            const json content = message.content();
            for (const json& one : content.at("returns")) {
                RadarDetection detection{one.at("range").get<double>(),
                                         -degrees(one.at("azimuth").get<double>())};
                const auto doppler = one.at("doppler_velocity").get<double>();
                if (std::abs(doppler) < farthest) {
                    detection.radialSpeed = doppler;
                }
                if (detection.range > 0.0 && detection.range < farthest &&
                    std::isfinite(detection.azimuth)) {
                    returns.push_back(detection);
                } else {
                    leaveOut("a radar's return without a place");
                }
            }
            add(Veskar::Radar, message, tracker.update(sinceEpoch(message.time), returns));
        }
        noteOwnTracker(recording_.header, "radar");
    }

    void addVideo(const Topic& topic) {
        const Veskar::Camera camera = recording_.header.camera.build();
        bool hasIds = true;
        std::vector<std::vector<std::pair<std::string, VideoDetection>>> found;
        for (const Stamped& message : topic.messages) {
            found.emplace_back();
            const json content = message.content();
            for (const json& one : content.at("detections")) {
                const Eigen::Vector4d pixels = pixelsOf(one.at("bbox"));
                if (!(pixels[2] > pixels[0] && pixels[3] > pixels[1] &&
                      pixels.cwiseAbs().maxCoeff() < farthest)) {
                    leaveOut("a detection whose box has no area");
                    continue;
                }
                VideoDetection detection;
                detection.box = boxOfPixels(pixels, camera);
                detection.labels.objectClass = labelOf(one.at("results"));
                found.back().emplace_back(trackIdIn(one), std::move(detection));
                hasIds = hasIds && !found.back().back().first.empty();
            }
        }
        if (!hasIds) {
            noteOwnTracker(recording_.header, "camera");
        }
        VideoTracker tracker = ownVideoTracker();
        std::map<std::int32_t, double> born;
        for (std::size_t i = 0; i < found.size(); ++i) {
            const Stamped& message = topic.messages[i];
            const double time = sinceEpoch(message.time);
            add(Veskar::VideoObject, message,
                hasIds ? reportsOf(found[i], time, born) : tracked(tracker, found[i], time));
        }
    }

    /// The upright box around one that may be turned, in pixels. The centre of newer versions has a
    /// position.
    static Eigen::Vector4d pixelsOf(const json& box) {
        const json& centre = box.at("center");
        const json& position = centre.contains("position") ? centre.at("position") : centre;
        const Eigen::Vector2d middle(position.at("x").get<double>(),
                                     position.at("y").get<double>());
        const auto turn = centre.at("theta").get<double>();
        const Eigen::Vector2d size(box.at("size_x").get<double>(), box.at("size_y").get<double>());
        const Eigen::Vector2d part =
            0.5 * Eigen::Vector2d(std::cos(turn), std::sin(turn)).cwiseAbs();
        const Eigen::Vector2d half(part.dot(size), part.reverse().dot(size));
        return {middle[0] - half[0], middle[1] - half[1], middle[0] + half[0], middle[1] + half[1]};
    }

    /// The likeliest class. Older versions state it in the result itself.
    Label labelOf(const json& results) {
        Label best;
        double score = -std::numeric_limits<double>::infinity();
        for (const json& result : results) {
            const json& hypothesis =
                result.contains("hypothesis") ? result.at("hypothesis") : result;
            const json& word = hypothesis.at(hypothesis.contains("class_id") ? "class_id" : "id");
            const auto own = hypothesis.at("score").get<double>();
            if (word.is_string() && own > score) {
                score = own;
                best = classes_.of(word.get<std::string>());
                if (best.name != "unknown") {
                    best.probability = std::clamp(own, 0.0, 1.0);
                }
            }
        }
        return best;
    }

    static std::string trackIdIn(const json& detection) {
        for (const char* name : {"id", "tracking_id"}) {
            if (detection.contains(name) && detection.at(name).is_string()) {
                return detection.at(name).get<std::string>();
            }
        }
        return {};
    }

    std::vector<Report> reportsOf(
        const std::vector<std::pair<std::string, VideoDetection>>& detected, double time,
        std::map<std::int32_t, double>& born) {
        std::vector<Report> reports;
        std::set<std::int32_t> listed;
        for (const auto& [id, detection] : detected) {
            VideoReport report;
            report.id = idOf(id);
            if (!listed.insert(report.id).second) {
                leaveOut("a detection whose id its frame had before");
                continue;
            }
            report.box = detection.box;
            report.labels = detection.labels;
            report.age = time - born.try_emplace(report.id, time).first->second;
            reports.push_back(std::move(report));
        }
        return reports;
    }

    static std::vector<Report> tracked(
        VideoTracker& tracker, const std::vector<std::pair<std::string, VideoDetection>>& detected,
        double time) {
        std::vector<VideoDetection> boxes;
        boxes.reserve(detected.size());
        for (const auto& [id, detection] : detected) {
            boxes.push_back(detection);
        }
        return tracker.update(time, boxes);
    }

    /// Ids of ROS are texts or 16 bytes; the fusion's are numbers, given in turn.
    std::int32_t idOf(const std::string& name) {
        return ids_.try_emplace(name, static_cast<std::int32_t>(ids_.size() + 1)).first->second;
    }

    void leaveOut(const std::string& what) {
        if (leftOut_.insert(what).second) {
            recording_.warnings.push_back("left out: " + what);
        }
    }

    const McapOptions& options_;
    const std::set<std::string> types_{radarTracks, radarScan, detections};
    ImportedRecording recording_;
    ImportedClasses classes_{recording_.warnings};
    std::deque<RosSchema> schemas_;  ///< stay where they are
    std::map<std::string, Topic> topics_;
    std::map<std::string, std::int32_t> ids_;
    std::set<std::string> leftOut_;
    std::int64_t epoch_ = 0;  ///< ns
};

}  // namespace

ImportedRecording importMcap(const McapOptions& options) {
    return McapImport(options).run();
}

}  // namespace Workbench
