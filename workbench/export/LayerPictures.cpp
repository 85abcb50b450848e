// SPDX-License-Identifier: Apache-2.0
#include "export/LayerPictures.h"

#include "evaluate/EvaluationOptions.h"

#include <algorithm>
#include <utility>

namespace Workbench {
namespace {

ImageBox moved(const ImageBox& box, const Eigen::Vector2d& by) {
    return {box.left + by[0], box.bottom + by[1], box.right + by[0], box.top + by[1]};
}

}  // namespace

void LayerPictures::replace(const std::string& layer, const FusedFrame& frame) {
    Layer& shown =
        layers_
            .try_emplace(layer, Layer{Picture(EvaluationOptions().coastingLimit), frame.time, {}})
            .first->second;
    shown.time = frame.time;
    shown.tracks.clear();
    std::vector<Picture::Reported> reports;
    for (const FusedTrack& track : frame.tracks) {
        auto reported = Picture::reportedOf(track);
        if (track.confirmed && reported) {
            reports.push_back(std::move(*reported));
            shown.tracks.push_back(track);
        }
    }
    std::sort(shown.tracks.begin(), shown.tracks.end(),
              [](const FusedTrack& a, const FusedTrack& b) { return a.id < b.id; });
    shown.picture.replace(frame.time, std::move(reports));
}

std::vector<std::string> LayerPictures::layers() const {
    std::vector<std::string> names;
    names.reserve(layers_.size());
    for (const auto& layer : layers_) {
        names.push_back(layer.first);
    }
    return names;
}

std::vector<FusedTrack> LayerPictures::at(const std::string& layer, double time) const {
    const Layer& shown = layers_.at(layer);
    std::vector<FusedTrack> tracks;
    for (const JudgedTrack& judged : shown.picture.at(time)) {
        FusedTrack track =
            *std::lower_bound(shown.tracks.begin(), shown.tracks.end(), judged.id,
                              [](const FusedTrack& a, std::int32_t id) { return a.id < id; });
        track.ground->position = judged.position;
        if (track.imageRate.allFinite()) {
            track.box = moved(track.box, (time - shown.time) * track.imageRate);
        }
        tracks.push_back(std::move(track));
    }
    return tracks;
}

}  // namespace Workbench
