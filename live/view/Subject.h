// SPDX-License-Identifier: Apache-2.0
// A track that a viewer has selected.
#pragma once

#include <veskar/Track.h>

#include <optional>
#include <string_view>
#include <tuple>

namespace Veskar::Live {

/// A system track, or the track of a sensor.
struct Subject {
    std::optional<Source> sensor;  ///< nothing: a system track
    int id = 0;

    /// @param text "system:12", "video:3" or "radar:4"
    /// @return the track; nothing for other texts
    static std::optional<Subject> parse(std::string_view text);

    /// @return whether a decision about these tracks is about this one
    bool isAmong(int systemTrackId, Source source, int sensorTrackId) const {
        return sensor ? *sensor == source && id == sensorTrackId : id == systemTrackId;
    }

    friend bool operator<(const Subject& a, const Subject& b) {
        return std::tie(a.sensor, a.id) < std::tie(b.sensor, b.id);
    }
    friend bool operator==(const Subject& a, const Subject& b) {
        return std::tie(a.sensor, a.id) == std::tie(b.sensor, b.id);
    }
};

}  // namespace Veskar::Live
