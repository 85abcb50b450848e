// SPDX-License-Identifier: Apache-2.0
#include "import/Results.h"

#include <veskar-host/FusedFrame.h>
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/HostParameters.h>
#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>
#include <veskar/Config.h>

#include "HostLibrary.h"
#include "import/PixelBox.h"
#include "io/Interruption.h"
#include "recording/LabelWords.h"
#include "recording/RecordingReader.h"
#include "replay/FusedJson.h"
#include "replay/RunDigests.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <set>
#include <utility>
#include <variant>

#include <fmt/format.h>

namespace Workbench {
namespace {

constexpr double notStated = std::numeric_limits<double>::quiet_NaN();

/// Reads a recording to its end.
/// @return the times of its truth, or of its video frames when it has none, s
std::vector<double> readMoments(RecordingReader& recording) {
    const bool hasTruth = recording.header().truth != TruthKind::None;
    std::vector<double> moments;
    while (const auto line = recording.next()) {
        throwIfInterrupted();
        const auto* truth = std::get_if<TruthFrame>(&*line);
        if (hasTruth && truth != nullptr) {
            moments.push_back(truth->time);
        }
        const auto* frame = std::get_if<SensorFrame>(&*line);
        if (!hasTruth && frame != nullptr && frame->source == Veskar::VideoObject) {
            moments.push_back(frame->time);
        }
    }
    return moments;
}

/// Makes fused frames of rows.
class TracksOfRows {
public:
    TracksOfRows(const RecordingHeader& header, bool isAtCamera)
        : header_(header), projection_(header.camera.build()), isAtCamera_(isAtCamera) {}

    FusedTrack trackOf(const ResultRow& row, double time) {
        FusedTrack track;
        track.id = row.id;
        track.confirmed = true;
        track.probability = row.confidence >= 0.0 ? std::min(row.confidence, 1.0) : notStated;
        track.image = track.imageRate = {notStated, notStated};
        track.range = track.rangeRate = notStated;
        track.box = {notStated, notStated, notStated, notStated};
        if (row.box.allFinite()) {
            track.box = boxOfPixels(row.box, projection_.camera());
        }
        track.labels.objectClass = classOf(row.className);
        const auto born = born_.try_emplace(row.id, time).first->second;
        track.age = time - born;
        if (const auto position = positionOf(row, track.box)) {
            place(track, *position, time);
        }
        return track;
    }

    const std::set<std::string>& unknownWords() const { return unknownWords_; }

private:
    std::optional<Eigen::Vector2d> positionOf(const ResultRow& row, const ImageBox& box) const {
        if (row.position.allFinite()) {
            return isAtCamera_ ? row.position + projection_.origin().head<2>() : row.position;
        }
        if (!row.box.allFinite()) {
            return std::nullopt;
        }
        // Lenses say nothing about what is outside of the image.
        const Eigen::Vector3d ray = projection_.ray(
            std::clamp(0.5 * (box.left + box.right), -1.0, 1.0), std::clamp(box.bottom, -1.0, 1.0));
        if (!(ray[2] < 0.0)) {
            return std::nullopt;  // not below the horizon
        }
        const Eigen::Vector3d foot = projection_.origin() - projection_.origin()[2] / ray[2] * ray;
        return Eigen::Vector2d(foot.head<2>());
    }

    Label classOf(const std::string& word) {
        const auto meant = meantWord(WordKind::Class, word);
        if (!meant && word != "unknown") {
            unknownWords_.insert(word);
        }
        return meant && *meant != "unknown" ? Label{*meant, 1.0} : Label{};
    }

    void place(FusedTrack& track, const Eigen::Vector2d& position, double time) {
        const auto before = last_.find(track.id);
        const Eigen::Vector2d velocity = before == last_.end()
                                             ? Eigen::Vector2d::Zero()
                                             : Eigen::Vector2d((position - before->second.second) /
                                                               (time - before->second.first));
        last_.insert_or_assign(track.id, std::make_pair(time, position));
        const Eigen::Vector3d point(position[0], position[1], 0.0);
        const Eigen::Vector3d sight = point - projection_.origin();
        const Eigen::Matrix2d unstatedCovariance = Eigen::Matrix2d::Constant(notStated);
        track.ground = GroundPosition{position, unstatedCovariance, velocity, unstatedCovariance};
        track.speed = velocity.norm();
        if (*track.speed > 0.0) {
            track.direction = -degrees(std::atan2(velocity[1], velocity[0]));
        }
        track.range = sight.norm();
        track.rangeRate = sight.head<2>().dot(velocity) / track.range;
        if (projection_.sees(point)) {
            const ImageMotion motion = projection_.project(point, {velocity[0], velocity[1], 0.0});
            track.image = motion.uv;
            track.imageRate = motion.rate;
        }
        if (header_.site) {
            track.geo = geographicPosition(*header_.site, position);
        }
    }

    const RecordingHeader& header_;
    Projection projection_;
    bool isAtCamera_;
    std::map<std::int32_t, double> born_;
    std::map<std::int32_t, std::pair<double, Eigen::Vector2d>> last_;  ///< time and position
    std::set<std::string> unknownWords_;
};

}  // namespace

std::vector<std::string> importResults(const ResultsOptions& options, const ResultsFormat& format,
                                       OutputFile& output) {
    const std::vector<ResultRow> rows = format.read(options.results);
    RecordingReader recording(options.recording);
    const std::vector<double> moments = readMoments(recording);
    const auto last = static_cast<std::size_t>(rows.back().frame);
    if (!options.frameRate && last >= moments.size()) {
        throw InputError(
            options.results,
            InputError(fmt::format("it has {} frames, but {} has {} moments: state the frame rate "
                                   "of the results with --rate",
                                   last + 1, recording.input().name(), moments.size())));
    }

    const Veskar::Config config = Veskar::Config::defaults();
    const std::string constants = HostParameters().toJson();
    output.write(fusedHeaderLine(recording.header(), config.toJson(), constants));
    TracksOfRows tracks(recording.header(), format.isAtCamera);
    auto row = rows.begin();
    const std::size_t frames = options.frameRate ? last + 1 : moments.size();
    for (std::size_t number = 0; number < frames; ++number) {
        throwIfInterrupted();
        const double time =
            options.frameRate ? static_cast<double>(number) / *options.frameRate : moments[number];
        constexpr double instant = 1e-6;  // the least difference between times of a recording, s
        FusedFrame frame{time, time - instant, Veskar::VideoObject, {}};
        for (; row != rows.end() && row->frame == static_cast<int>(number); ++row) {
            frame.tracks.push_back(tracks.trackOf(*row, time));
        }
        output.write(toJsonLine(frame));
    }
    output.write(closingLine(
        digestsOfRun(recording.digest(), recording.header(), config.toJson(), constants)));
    return {tracks.unknownWords().begin(), tracks.unknownWords().end()};
}

}  // namespace Workbench
