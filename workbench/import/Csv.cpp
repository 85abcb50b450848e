// SPDX-License-Identifier: Apache-2.0
#include "import/Csv.h"

#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>

#include "HostLibrary.h"
#include "import/CsvRecipe.h"
#include "import/CsvRows.h"
#include "import/ImportedClasses.h"
#include "import/OwnTrackers.h"
#include "import/PixelBox.h"
#include "io/Interruption.h"
#include "io/Printable.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// The cells of a table in the units of recordings.
class SensorRows {
public:
    SensorRows(const std::string& path, const CsvTable& table)
        : rows_(path, table.separator), table_(table) {
        for (const auto& [quantity, column] : table.columns) {
            places_[quantity] = rows_.placeOf(column.name);
        }
    }

    bool next() { return rows_.next(); }
    std::string place() const { return rows_.place(); }
    bool has(const std::string& quantity) const { return table_.has(quantity); }
    std::optional<double> number(const std::string& quantity) const {
        if (!has(quantity)) {
            return std::nullopt;
        }
        const CsvColumn& column = table_.columns.at(quantity);
        const std::optional<double> value = rows_.number(places_.at(quantity));
        return value ? std::optional(*value * column.scale + column.offset) : std::nullopt;
    }
    double required(const std::string& quantity) const {
        const std::optional<double> value = number(quantity);
        if (!value) {
            refuse(fmt::format("no {}", quantity));
        }
        return *value;
    }
    std::string text(const std::string& quantity) const {
        return has(quantity) ? rows_.text(places_.at(quantity)) : "";
    }
    std::int32_t id() const {
        const double value = rows_.number(places_.at("id")).value_or(0.5);
        if (value != std::floor(value) ||
            std::abs(value) > std::numeric_limits<std::int32_t>::max()) {
            refuse(fmt::format("the id \"{}\" is no integer of 32 bits", printable(text("id"))));
        }
        return static_cast<std::int32_t>(value);
    }
    [[noreturn]] void refuse(const std::string& what) const {
        throw InputError(rows_.place(), InputError(what));
    }

private:
    CsvRows rows_;
    const CsvTable& table_;
    std::map<std::string, std::size_t> places_;
};

/// Collects the frames of one sensor.
/// @tparam Detection what its tracker takes
template <typename Detection>
class SensorFrames {
public:
    SensorFrames(Veskar::Source source, bool hasIds) : source_(source), hasIds_(hasIds) {}

    /// Begins the frame of a row, unless it is that of the row before.
    void begin(const SensorRows& rows) {
        throwIfInterrupted();
        const double time = rows.required("time");
        if (!frames_.empty() && time < frames_.back().time) {
            rows.refuse(fmt::format("the time {} is before that of the row above", time));
        }
        if (frames_.empty() || time > frames_.back().time) {
            const double received = rows.number("received").value_or(time);
            if (!frames_.empty() && received < frames_.back().received) {
                rows.refuse(fmt::format("it was received at {}, before the frame above", received));
            }
            frames_.push_back({source_, time, received, {}});
            detections_.emplace_back();
        }
    }
    void add(const SensorRows& rows, Report report) {
        for (const Report& other : frames_.back().tracks) {
            if (baseOf(other).id == baseOf(report).id) {
                rows.refuse(fmt::format("the id {} occurs twice at one time", baseOf(report).id));
            }
        }
        frames_.back().tracks.push_back(std::move(report));
    }
    void add(Detection detection) { detections_.back().push_back(std::move(detection)); }

    /// @return the frames, with the tracks of a tracker where they have no ids
    template <typename Tracker>
    std::vector<SensorFrame> take(Tracker tracker) {
        for (std::size_t i = 0; !hasIds_ && i < frames_.size(); ++i) {
            frames_[i].tracks = tracker.update(frames_[i].time, detections_[i]);
        }
        return std::move(frames_);
    }
    bool hasIds() const { return hasIds_; }

private:
    Veskar::Source source_;
    bool hasIds_;
    std::vector<SensorFrame> frames_;
    std::vector<std::vector<Detection>> detections_;
};

class CsvImporter {
public:
    explicit CsvImporter(CsvRecipe recipe)
        : recipe_(std::move(recipe)), camera_(recipe_.header.camera.build()) {
        recording_.header = recipe_.header;
    }

    ImportedRecording run(const CsvOptions& options) {
        if (!options.radar.empty()) {
            readRadar(SensorRows(options.radar, tableOf(recipe_.radar, "radar")));
        }
        if (!options.video.empty()) {
            readVideo(SensorRows(options.video, tableOf(recipe_.video, "video")));
        }
        if (recording_.frames.empty()) {
            throw InputError("there is no row in the tables");
        }
        if (recipe_.isUnixTime) {
            countFromEpoch();
        }
        return std::move(recording_);
    }

private:
    static const CsvTable& tableOf(const std::optional<CsvTable>& table, const char* name) {
        if (!table) {
            throw InputError(fmt::format("the recipe does not describe the {}", name));
        }
        return *table;
    }

    void readRadar(SensorRows rows) {
        SensorFrames<RadarDetection> frames(Veskar::Radar, rows.has("id"));
        while (rows.next()) {
            frames.begin(rows);
            const auto first = rows.number(rows.has("range") ? "range" : "x");
            const auto second = rows.number(rows.has("azimuth") ? "azimuth" : "y");
            if (!first || !second) {
                continue;
            }
            // x is forward, y to the left; the azimuth counts clockwise.
            const bool isPolar = rows.has("range");
            const double range = isPolar ? *first : std::hypot(*first, *second);
            const double azimuth = isPolar ? *second : -degrees(std::atan2(*second, *first));
            if (!(range > 0.0)) {
                rows.refuse(fmt::format("the range {} m is not above 0", range));
            }
            if (!frames.hasIds()) {
                frames.add(RadarDetection{range, azimuth, rows.number("radialSpeed")});
                continue;
            }
            RadarReport report;
            report.id = rows.id();
            report.coasting = rows.number("coasting").value_or(0.0);
            report.range = range;
            report.azimuth = azimuth;
            report.speed = rows.number("speed");
            report.direction = rows.number("direction");
            report.radialSpeed = rows.number("radialSpeed");
            report.objectClass = classes_.of(rows.text("class"));
            frames.add(rows, report);
        }
        append(frames.take(ownTrackerFor(recipe_.header.radar)), frames.hasIds(), "radar");
    }

    void readVideo(SensorRows rows) {
        SensorFrames<VideoDetection> frames(Veskar::VideoObject, rows.has("id"));
        std::map<std::int32_t, double> born;
        while (rows.next()) {
            frames.begin(rows);
            const auto left = rows.number("left");
            const auto top = rows.number("top");
            if (!left || !top) {
                continue;
            }
            VideoDetection detection;
            detection.box = boxOf(rows, *left, *top);
            detection.labels.objectClass = classes_.of(rows.text("class"));
            if (!frames.hasIds()) {
                frames.add(std::move(detection));
                continue;
            }
            VideoReport report;
            report.id = rows.id();
            report.coasting = rows.number("coasting").value_or(0.0);
            report.box = detection.box;
            report.labels = detection.labels;
            const double time = rows.required("time");
            report.age = time - born.try_emplace(report.id, time).first->second;
            frames.add(rows, report);
        }
        append(frames.take(ownVideoTracker()), frames.hasIds(), "camera");
    }

    ImageBox boxOf(const SensorRows& rows, double left, double top) const {
        const double width =
            rows.has("width") ? rows.required("width") : rows.required("right") - left;
        const double height =
            rows.has("height") ? rows.required("height") : rows.required("bottom") - top;
        if (!(width > 0.0 && height > 0.0)) {
            rows.refuse("the box has no area");
        }
        Eigen::Vector4d pixels(left, top, left + width, top + height);
        if (recipe_.video->isFraction) {
            const auto& [columns, lines] = recipe_.header.camera.resolution;
            pixels = pixels.cwiseProduct(Eigen::Vector4d(columns, lines, columns, lines));
        }
        return boxOfPixels(pixels, camera_);
    }

    void append(std::vector<SensorFrame> frames, bool hasIds, const char* sensor) {
        std::move(frames.begin(), frames.end(), std::back_inserter(recording_.frames));
        if (!hasIds) {
            noteOwnTracker(recording_.header, sensor);
        }
    }

    /// Recordings count from a moment near their beginning: the whole second before it.
    void countFromEpoch() {
        double first = std::numeric_limits<double>::infinity();
        for (const SensorFrame& frame : recording_.frames) {
            first = std::min(first, frame.time);
        }
        const double epoch = std::floor(first);
        for (SensorFrame& frame : recording_.frames) {
            frame.time -= epoch;
            frame.received -= epoch;
        }
        recording_.header.epoch = epoch;
    }

    CsvRecipe recipe_;
    Veskar::Camera camera_;
    ImportedRecording recording_;
    ImportedClasses classes_{recording_.warnings};
};

}  // namespace

ImportedRecording importCsv(const CsvOptions& options) {
    return CsvImporter(readCsvRecipe(options.recipe)).run(options);
}

}  // namespace Workbench
