// SPDX-License-Identifier: Apache-2.0
// Exports tracks as lines on Earth (GeoJSON, RFC 7946).
#pragma once

#include "export/Exporter.h"
#include "host/installation/RecordingHeader.h"
#include "io/OutputFile.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Workbench {

/// A feature collection: the device as a point, and each track as a line with its times and speeds.
/// A track that is missing for longer than `longestGap` begins a further line, because sensors use
/// their ids again. A line is written when it ends; memory grows with the lines that have not.
class GeoJsonExport : public Exporter {
public:
    /// @param output receives the text; must outlive this
    /// @param header of the recording; must outlive this
    GeoJsonExport(OutputFile& output, const RecordingHeader& header);

    /// @throw InputError also for a track on the ground without a geographic position
    void add(const std::string& layer, const FusedFrame& frame) override;
    void finish() override;

    static constexpr double longestGap = 2.0;  ///< s

private:
    struct Waypoint {
        double longitude;  ///< degrees
        double latitude;   ///< degrees
        double time;       ///< s
        std::optional<double> speed;
    };
    struct Line {
        std::vector<Waypoint> points;
        Label objectClass;                  ///< the last that was known
        std::optional<double> confirmedAt;  ///< s
    };
    using Key = std::pair<std::string, std::int32_t>;  ///< layer and id

    void addDevice();
    void extend(Line& line, const FusedTrack& track, double time) const;
    void writeLine(const Key& key, const Line& line);
    void writeFeature();

    OutputFile& output_;
    const RecordingHeader& header_;
    LineText text_;
    bool isFirst_ = true;
    std::map<Key, Line> open_;
};

}  // namespace Workbench
