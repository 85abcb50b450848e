// SPDX-License-Identifier: Apache-2.0
#include "replay/Summary.h"

#include <algorithm>

#include <fmt/format.h>

namespace Workbench {
namespace {

bool isFed(const FusedTrack& track, Veskar::Source source) {
    return std::any_of(track.sensors.begin(), track.sensors.end(),
                       [&](const Support& support) { return support.source == source; });
}

}  // namespace

void Summary::add(const FusedFrame& frame) {
    begin_ = outputFrames_ == 0 ? frame.time : begin_;
    end_ = frame.time;
    ++outputFrames_;
    for (const FusedTrack& track : frame.tracks) {
        if (track.id > lastId_) {
            lastId_ = track.id;
            ++systemTracks_;
        }
        // Unconfirmed tracks are only counted: a busy scene has thousands of them.
        if (!track.confirmed) {
            continue;
        }
        Life& life = lives_[track.id];
        if (life.frames++ == 0) {
            life.from = frame.time - track.age;
            life.confirmed = frame.time;
        }
        life.to = frame.time;
        life.className = track.labels.objectClass.name;
        life.speedSum += track.speed.value_or(0.0);
        life.distance = track.ground ? track.ground->position.norm() : track.range;
        life.radarFrames += isFed(track, Veskar::Radar) ? 1 : 0;
        life.videoFrames += isFed(track, Veskar::VideoObject) ? 1 : 0;
    }
}

std::string Summary::row(std::int32_t id, const Life& life) const {
    const auto percent = [&](std::uint64_t part) {
        return 100.0 * static_cast<double>(part) / static_cast<double>(life.frames);
    };
    return fmt::format(
        "{:>6} {:>7.1f} {:>10.1f} {:>7.1f} {:>7.1f}  {:<18} {:>6.1f} {:>8.1f} "
        "{:>6.0f}% {:>6.0f}%\n",
        id, life.from, life.confirmed.value_or(0.0), life.to, life.to - life.from, life.className,
        life.speedSum / static_cast<double>(life.frames), life.distance, percent(life.radarFrames),
        percent(life.videoFrames));
}

std::string Summary::text(const FusionPipeline::Counts& counts) const {
    std::string text = fmt::format(
        "{} video and {} radar frames, {} added by the host, {:.1f} s\n"
        "{} system tracks, {} confirmed\n",
        counts.videoFrames, counts.radarFrames, counts.addedFrames, end_ - begin_, systemTracks_,
        lives_.size());
    if (lives_.empty()) {
        return text;
    }
    text += fmt::format("\n{:>6} {:>7} {:>10} {:>7} {:>7}  {:<18} {:>6} {:>8} {:>7} {:>7}\n",
                        "track", "from", "confirmed", "to", "lived", "class", "speed", "distance",
                        "radar", "video");
    text += fmt::format("{:>6} {:>7} {:>10} {:>7} {:>7}  {:<18} {:>6} {:>8} {:>7} {:>7}\n", "", "s",
                        "s", "s", "s", "", "m/s", "m", "fed by", "fed by");
    for (const auto& [id, life] : lives_) {
        text += row(id, life);
    }
    return text;
}

}  // namespace Workbench
