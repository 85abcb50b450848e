// SPDX-License-Identifier: Apache-2.0
#include "import/Kitti.h"

#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>
#include <veskar/ImagePlane.h>
#include <veskar/Vocabulary.h>

#include "HostLibrary.h"
#include "import/TimeSeries.h"
#include "io/Interruption.h"
#include "io/LineReader.h"
#include "recording/LabelWords.h"
#include "simulate/Motion.h"
#include "simulate/Random.h"
#include "simulate/tracker/PlanarFilter.h"
#include "simulate/tracker/SensorTrackers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <locale>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace Workbench {
namespace {

// Plausibility limits, far beyond the data of a car's camera.
constexpr int lastFrame = 99999;
constexpr double largestObject = 1e3;   // m
constexpr double farthestObject = 1e5;  // m
constexpr double largestImage = 1e6;    // pixels

// The third row of the projection is (0, 0, 1, tz); the values used are in the first two.
struct Calibration {
    double focal = 0.0;    // pixels
    double centreX = 0.0;  // pixels
    double centreY = 0.0;  // pixels
    double offset = 0.0;   // of the colour camera, m to the left of the frame of the labels
};

struct LabelledObject {
    std::int32_t id = 0;
    std::string type;
    int occluded = 0;
    Eigen::Vector4d box;       // left, top, right, bottom, pixels
    ObjectTraits shape;        // class and size
    Eigen::Vector3d location;  // centre of the bottom: right, down, ahead of the camera, m
    double rotation = 0.0;     // about the downward axis, radians
};

using LabelledFrames = std::map<int, std::vector<LabelledObject>>;

// frame id type truncated occluded alpha left top right bottom height width length x y z rotation
std::pair<int, LabelledObject> parseLabel(std::string_view line, const std::string& place) {
    std::istringstream words{std::string(line)};
    words.imbue(std::locale::classic());
    int frame = 0;
    double truncated = 0.0;
    double alpha = 0.0;
    double height = 0.0;
    double width = 0.0;
    double length = 0.0;
    LabelledObject object;
    words >> frame >> object.id >> object.type >> truncated >> object.occluded >> alpha;
    for (int i = 0; i < 4; ++i) {
        words >> object.box[i];
    }
    words >> height >> width >> length;
    for (int i = 0; i < 3; ++i) {
        words >> object.location[i];
    }
    if (!(words >> object.rotation)) {
        throw InputError(place, InputError("expected a frame, an id, a type and 14 numbers"));
    }
    object.shape.className =
        meantWord(WordKind::Class, object.type).value_or(Veskar::Vocabulary::unknown);
    object.shape.size = {length, width, height};
    // Objects of type DontCare have neither size nor position.
    const bool isPlaced =
        object.type == "DontCare" ||
        (object.shape.size.minCoeff() >= 0.0 && object.shape.size.maxCoeff() <= largestObject &&
         object.location.cwiseAbs().maxCoeff() <= farthestObject);
    if (frame < 0 || frame > lastFrame || !isPlaced ||
        !(object.box.cwiseAbs().maxCoeff() <= largestImage) || !std::isfinite(object.rotation)) {
        throw InputError(place, InputError("a number is out of range"));
    }
    return {frame, object};
}

/// Whether the first line of a file is a label.
bool hasLabels(const std::string& path) {
    LineReader lines(path);
    std::string_view line;
    try {
        return lines.next(line) && parseLabel(line, lines.place()).first >= 0;
    } catch (const InputError&) {
        return false;
    }
}

Calibration readCalibration(const std::string& path) {
    LineReader lines(path);
    std::string_view line;
    while (lines.next(line)) {
        std::istringstream words{std::string(line)};
        words.imbue(std::locale::classic());
        std::string name;
        words >> name;
        if (name != "P2:" && name != "P2") {
            continue;
        }
        std::array<double, 12> P{};
        for (double& value : P) {
            if (!(words >> value) || !std::isfinite(value)) {
                throw InputError(lines.place(), InputError("expected 12 numbers after P2"));
            }
        }
        if (!(P[0] > 0.0)) {
            throw InputError(lines.place(), InputError("the focal length is not positive"));
        }
        const Calibration calibration{P[0], P[2], P[6], P[3] / P[0]};
        if (calibration.focal > largestImage || std::abs(calibration.centreX) > largestImage ||
            std::abs(calibration.centreY) > largestImage ||
            !(std::abs(calibration.offset) <= largestObject)) {
            throw InputError(lines.place(), InputError("a number is out of range"));
        }
        return calibration;
    }
    throw InputError(lines.name(),
                     InputError(hasLabels(path) ? "these are labels, not a calibration: the two "
                                                  "files have changed places, the labels come first"
                                                : "no line P2"));
}

LabelledFrames readLabels(const std::string& path) {
    LineReader lines(path);
    LabelledFrames frames;
    std::string_view line;
    while (lines.next(line)) {
        if (frames.empty() && line.substr(0, 3) == "P0:") {
            throw InputError(lines.name(), InputError("this is a calibration, not labels"));
        }
        if (line.find_first_not_of(" \t\r") == std::string_view::npos) {
            continue;
        }
        auto [frame, object] = parseLabel(line, lines.place());
        std::vector<LabelledObject>& objects = frames[frame];
        for (const LabelledObject& other : objects) {
            if (object.id >= 0 && other.id == object.id) {
                throw InputError(
                    lines.place(),
                    InputError(fmt::format("id {} occurs twice in frame {}", object.id, frame)));
            }
        }
        if (object.type != "DontCare") {
            objects.push_back(std::move(object));
        }
    }
    if (frames.empty()) {
        throw InputError(lines.name(), InputError("no labels"));
    }
    return frames;
}

// Tuned for traffic seen from a moving car, with high relative speeds.
TrackerParameters roadRadarTuning() {
    TrackerParameters tuning = RadarTracker::usualParameters();
    tuning.accelerationStd = 3.0;
    tuning.initialVelocityStd = 6.0;
    return tuning;
}

// Converts the labels to a recording, frame by frame.
class Importer {
public:
    Importer(const KittiOptions& options, const Calibration& calibration)
        : options_(options),
          calibration_(calibration),
          random_(options.seed, "kitti radar"),
          radar_(roadRadarTuning(), options.rangeStd, options.azimuthStd) {}

    ImportedRecording run(const LabelledFrames& frames) {
        ImportedRecording recording;
        recording.header = header();
        camera_ = std::make_unique<Veskar::Camera>(recording.header.camera.build());
        for (const auto& [number, objects] : frames) {
            for (const LabelledObject& object : objects) {
                look(object.type, recording);
                ways_[object.id].add(number / options_.frameRate, stateOf(object).centre);
            }
        }
        static const std::vector<LabelledObject> nothing;
        for (int number = frames.begin()->first; number <= frames.rbegin()->first; ++number) {
            throwIfInterrupted();
            const auto found = frames.find(number);
            add(number / options_.frameRate, found == frames.end() ? nothing : found->second,
                recording);
        }
        return recording;
    }

private:
    struct VideoTrack {
        PlanarFilter filter;
        double born;
        double seen;
    };

    /// Warns once for every type without a class.
    void look(const std::string& type, ImportedRecording& recording) {
        if (!types_.insert(type).second || meantWord(WordKind::Class, type)) {
            return;
        }
        recording.warnings.push_back(fmt::format("class \"{}\" is {}; imported as \"unknown\"",
                                                 type,
                                                 adviceOn(WordKind::Class, type).value_or("")));
    }

    RecordingHeader header() const {
        const double halfWidth = 0.5 * options_.width;
        const double halfHeight = 0.5 * options_.height;
        RecordingHeader header;
        header.name = "kitti";
        header.origin =
            "KITTI tracking labels; boxes, ids and positions as labelled, the radar is made from "
            "the positions with noise and dropout";
        header.licence = "CC BY-NC-SA 3.0 (the data set's own licence)";
        header.camera.bdc = true;
        header.camera.mounting.position = {0.0, 0.0, options_.cameraHeight};
        header.camera.resolution = {options_.width, options_.height};
        header.camera.sensorOffset = {calibration_.centreX / halfWidth - 1.0,
                                      1.0 - calibration_.centreY / halfHeight};
        header.camera.fieldOfView = {std::atan(halfWidth / calibration_.focal),
                                     std::atan(halfHeight / calibration_.focal)};
        header.radar.mounting.position = {0.0, 0.0, options_.cameraHeight};
        header.radar.rangeStd = options_.rangeStd;
        header.radar.azimuthStd = options_.azimuthStd;
        header.radar.fieldOfView = 120.0;
        header.radar.maximumRange = 120.0;
        header.seed = options_.seed;
        header.truth = options_.isTruthComplete ? TruthKind::Complete : TruthKind::Incomplete;
        return header;
    }

    // State in the device frame: origin below the colour camera, x forward, y to the left.
    ObjectState stateOf(const LabelledObject& object) const {
        ObjectState state;
        state.id = object.id;
        state.traits = &object.shape;
        state.centre = {object.location[2], -(object.location[0] + calibration_.offset)};
        state.heading = std::atan2(-std::cos(object.rotation), -std::sin(object.rotation));
        return state;
    }

    static PlanarFilter startAt(const Eigen::Vector2d& foot, const Eigen::Matrix2d& noise) {
        constexpr double velocityStd = 0.3;  // image units per second
        return {foot, noise, Eigen::Vector2d::Zero(),
                velocityStd * velocityStd * Eigen::Matrix2d::Identity()};
    }

    Report videoReport(double time, const LabelledObject& object) {
        // From [left, top, right, bottom] to the order of the library.
        Eigen::Vector4d box(object.box[0], object.box[2] - object.box[0], object.box[3],
                            object.box[1] - object.box[3]);
        Veskar::transformScreenToCamera(box, *camera_);
        const Eigen::Vector2d foot(box[0] + 0.5 * box[1], box[2]);
        constexpr double pixelStd = 0.006;
        const Eigen::Matrix2d noise = pixelStd * pixelStd * Eigen::Matrix2d::Identity();
        auto found = tracks_.find(object.id);
        if (found == tracks_.end() || time - found->second.seen > 1.0) {
            found =
                tracks_.insert_or_assign(object.id, VideoTrack{startAt(foot, noise), time, time})
                    .first;
        } else {
            found->second.filter.predict(time - found->second.seen, 0.3);
            found->second.filter.update(foot, noise);
            found->second.seen = time;
        }
        VideoReport report;
        report.id = object.id;
        report.box = {box[0], box[2], box[0] + box[1], box[2] + box[3]};
        report.velocity = found->second.filter.velocity();
        report.age = time - found->second.born;
        if (object.shape.className != Veskar::Vocabulary::unknown) {
            report.labels.objectClass = {object.shape.className, 1.0};
        }
        return report;
    }

    void add(double time, const std::vector<LabelledObject>& objects,
             ImportedRecording& recording) {
        SensorFrame video{Veskar::VideoObject, time, time, {}};
        TruthFrame truth{time, {}};
        std::vector<RadarDetection> detections;
        for (const LabelledObject& object : objects) {
            const ObjectState state = stateOf(object);
            // Occlusion "unknown" marks objects that are not visible.
            if (object.occluded < 3) {
                video.tracks.push_back(videoReport(time, object));
            }
            if (random_.chance(options_.detectionProbability)) {
                detections.push_back(reflection(time, state));
            }
            truth.objects.push_back(truthOf(time, state));
        }
        SensorFrame radarFrame{Veskar::Radar, time, time, radar_.update(time, detections)};
        recording.truth.push_back(std::move(truth));
        recording.frames.push_back(std::move(video));
        recording.frames.push_back(std::move(radarFrame));
    }

    Eigen::Vector2d velocityOf(double time, std::int32_t id) const {
        return ways_.at(id).rate(time, 2.0 / options_.frameRate);
    }

    RadarDetection reflection(double time, const ObjectState& state) {
        constexpr double dopplerStd = 0.3;  // m/s
        const Eigen::Vector2d point = state.nearestPoint();
        const double range = std::hypot(point.norm(), options_.cameraHeight);
        const double radialSpeed = point.dot(velocityOf(time, state.id)) / range;
        return {std::max(0.5, range + options_.rangeStd * random_.normal()),
                -degrees(std::atan2(point[1], point[0])) + options_.azimuthStd * random_.normal(),
                radialSpeed + dopplerStd * random_.normal()};
    }

    TruthObject truthOf(double time, const ObjectState& state) const {
        TruthObject object;
        object.id = state.id;
        object.className = state.traits->className;
        object.position = state.nearestPoint();
        object.velocity = velocityOf(time, state.id);
        object.size = state.traits->size;
        object.centre = state.centre;
        return object;
    }

    KittiOptions options_;
    Calibration calibration_;
    Random random_;
    RadarTracker radar_;
    std::unique_ptr<Veskar::Camera> camera_;
    std::map<std::int32_t, VideoTrack> tracks_;
    std::map<std::int32_t, TimeSeries> ways_;
    std::set<std::string> types_;
};

}  // namespace

ImportedRecording importKitti(const KittiOptions& options) {
    const Calibration calibration = readCalibration(options.calibration);
    return Importer(options, calibration).run(readLabels(options.labels));
}

}  // namespace Workbench
