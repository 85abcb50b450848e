// SPDX-License-Identifier: Apache-2.0
#include "export/GeoJsonExport.h"

#include <veskar-host/InputError.h>

#include "host/reports/JsonLine.h"
#include "io/UtcText.h"

#include <cmath>
#include <limits>

namespace Workbench {
namespace {

/// RFC 7946, 3.1.1: longitude comes first.
void appendPlace(LineText& text, double longitude, double latitude) {
    text += '[';
    text.addNumber(longitude, geoDecimals);
    text += ',';
    text.addNumber(latitude, geoDecimals);
    text += ']';
}

/// Appends an array as a further member.
template <typename Item, typename Append>
void appendList(LineText& text, std::string_view name, const std::vector<Item>& items,
                Append append) {
    text.addName(name);
    text += '[';
    for (std::size_t i = 0; i < items.size(); ++i) {
        text += i == 0 ? "" : ",";
        append(items[i]);
    }
    text += ']';
}

}  // namespace

GeoJsonExport::GeoJsonExport(OutputFile& output, const RecordingHeader& header)
    : output_(output), header_(header) {
    output_.write("{\"type\":\"FeatureCollection\",\"features\":[");
    if (header_.site) {
        addDevice();
    }
}

void GeoJsonExport::addDevice() {
    text_ += R"({"type":"Feature","geometry":{"type":"Point","coordinates":)";
    appendPlace(text_, header_.site->longitude, header_.site->latitude);
    text_ += R"(},"properties":{"layer":"device","name":)";
    text_.addQuoted(header_.name);
    text_.addMember("heading", header_.site->heading, angleDecimals);
    text_ += "}}";
    writeFeature();
}

void GeoJsonExport::add(const std::string& layer, const FusedFrame& frame) {
    for (const FusedTrack& track : frame.tracks) {
        const Key key{layer, track.id};
        const auto found = open_.find(key);
        if (found != open_.end() && frame.time - found->second.points.back().time > longestGap) {
            writeLine(key, found->second);
            open_.erase(found);
        }
        if (track.ground && track.ground->position.allFinite()) {
            extend(open_[key], track, frame.time);
        }
    }
    for (auto line = open_.begin(); line != open_.end();) {
        const bool isOver =
            line->first.first == layer && frame.time - line->second.points.back().time > longestGap;
        if (isOver) {
            writeLine(line->first, line->second);
        }
        line = isOver ? open_.erase(line) : std::next(line);
    }
}

void GeoJsonExport::extend(Line& line, const FusedTrack& track, double time) const {
    if (!track.geo || !std::isfinite(track.geo->latitude) || !std::isfinite(track.geo->longitude)) {
        throw InputError("site", InputError("GeoJSON needs geographic positions, but the recording "
                                            "does not say where the device is: give --site"));
    }
    line.points.push_back({track.geo->longitude, track.geo->latitude, time, track.speed});
    if (track.labels.objectClass.name != "unknown") {
        line.objectClass = track.labels.objectClass;
    }
    if (track.confirmed && !line.confirmedAt) {
        line.confirmedAt = time;
    }
}

void GeoJsonExport::writeLine(const Key& key, const Line& line) {
    const std::vector<Waypoint>& points = line.points;
    text_ += R"({"type":"Feature","geometry":{"type":)";
    const bool isPoint = points.size() == 1;  // a LineString has two or more (RFC 7946, 3.1.4)
    text_ += isPoint ? "\"Point\"" : "\"LineString\"";
    if (isPoint) {
        text_.addName("coordinates");
        appendPlace(text_, points.front().longitude, points.front().latitude);
    } else {
        appendList(text_, "coordinates", points, [&](const Waypoint& point) {
            appendPlace(text_, point.longitude, point.latitude);
        });
    }
    text_ += R"(},"properties":{"layer":)";
    text_.addQuoted(key.first);
    text_.addName("id");
    text_.addInteger(key.second);
    appendLabel(text_, "class", line.objectClass);
    if (line.confirmedAt) {
        text_.addMember("confirmedAt", *line.confirmedAt, timeDecimals);
    }
    appendList(text_, "times", points,
               [&](const Waypoint& point) { text_.addNumber(point.time, timeDecimals); });
    if (header_.epoch) {
        appendList(text_, "coordTimes", points, [&](const Waypoint& point) {
            text_.addQuoted(utcText(*header_.epoch + point.time));
        });
    }
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    appendList(text_, "speeds", points, [&](const Waypoint& point) {
        text_.addNumber(point.speed.value_or(unknown), metreDecimals);
    });
    text_ += "}}";
    writeFeature();
}

/// Writes the text of a feature and begins a new one.
void GeoJsonExport::writeFeature() {
    output_.write(isFirst_ ? "\n" : ",\n");
    isFirst_ = false;
    output_.write(text_.view());
    text_.clear();
}

void GeoJsonExport::finish() {
    for (const auto& [key, line] : open_) {
        writeLine(key, line);
    }
    open_.clear();
    output_.write("\n]}\n");
}

}  // namespace Workbench
