// SPDX-License-Identifier: Apache-2.0
#include "report/SensorTable.h"

#include "host/fused/SensorTrackReading.h"
#include "report/Column.h"
#include "report/Resolution.h"

#include <nlohmann/json.hpp>

namespace Workbench {

SensorTable::SensorTable(const HostAdapter& hostAdapter, Words& vocabulary)
    : adapter_(hostAdapter),
      words_(vocabulary),
      table_({"id"}, {{"x", metres},
                      {"y", metres},
                      {"speed", metresPerSecond},
                      {"direction", wholeDegrees},
                      {"u", image},
                      {"v", image},
                      {"range", metres},
                      {"left", image},
                      {"bottom", image},
                      {"right", image},
                      {"top", image},
                      {"coasting", tenths},
                      {"confirmed", 1.0},
                      {"class", 1.0},
                      {"classProbability", percent}}) {}

void SensorTable::add(const SensorFrame& frame) {
    times_.push_back(frame.time);
    table_.beginFrame();
    const FusedFrame read = readTracks(frame, adapter_);
    for (std::size_t i = 0; i < read.tracks.size(); ++i) {
        const FusedTrack& track = read.tracks[i];
        const Eigen::Vector2d position =
            track.ground ? track.ground->position : Eigen::Vector2d(noValue, noValue);
        // Derivable values are left out: the image position of a video report is the middle of its
        // box's lower edge, and the range follows from the position.
        const bool standsOnItsBox = std::holds_alternative<VideoReport>(frame.tracks[i]);
        const Eigen::Vector2d place =
            standsOnItsBox ? Eigen::Vector2d(noValue, noValue) : track.image;
        // The ground velocity from a camera is too inaccurate; only the radar's is shown.
        const bool isRadar = frame.source == Veskar::Radar;
        const Label& label = track.labels.objectClass;
        table_.add({track.id},
                   {position[0], position[1], isRadar ? track.speed.value_or(noValue) : noValue,
                    isRadar ? track.direction.value_or(noValue) : noValue, place[0], place[1],
                    track.ground ? noValue : track.range, track.box.left, track.box.bottom,
                    track.box.right, track.box.top, wholeTenths(track.sensors.front().coasting),
                    track.confirmed ? 1.0 : 0.0, words_.numberOf(label.name), label.probability});
    }
}

Json SensorTable::json(double start) const {
    return {{"time", timeColumn(times_, start)}, {"table", table_.json()}};
}

}  // namespace Workbench
