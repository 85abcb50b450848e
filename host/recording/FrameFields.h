// SPDX-License-Identifier: Apache-2.0
// Reads a sensor frame of a recording: its members, their types and their limits.
#pragma once

#include <veskar-host/InputError.h>
#include <veskar-host/SensorFrame.h>

#include "host/json/Fields.h"
#include "host/recording/RepeatedIds.h"
#include "host/reports/LabelFields.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace Veskar::Host::Internal {

/// @param fields what has a member "box"
/// @return the box
/// @throw InputError the fault
template <typename Value>
ImageBox readBox(const BasicFields<Value>& fields) {
    const BasicFields<Value> box = fields.object("box");
    box.allowOnly({"left", "bottom", "right", "top"});
    const ImageBox result{box.number("left"), box.number("bottom"), box.number("right"),
                          box.number("top")};
    if (!(result.left <= result.right)) {
        box.refuse("right", "is left of left");
    }
    return result;
}

/// @param fields members of a track
/// @param report receives the fields that all kinds of reports share
/// @throw InputError the fault
template <typename Value>
void readBase(const BasicFields<Value>& fields, ReportBase& report) {
    report.id = fields.integer("id");
    report.coasting = fields.numberWithin("coasting", 0.0, unlimited, 0.0);
    report.confirmed = fields.boolean("confirmed", true);
}

/// @param fields members of a track
/// @return the track
/// @throw InputError the fault
template <typename Value>
VideoReport readVideo(const BasicFields<Value>& fields) {
    fields.allowOnly({"id", "box", "velocity", "age", "coasting", "confirmed", "class",
                      "classProbability", "color", "colorProbability", "upperClothingColor",
                      "upperClothingColorProbability", "lowerClothingColor",
                      "lowerClothingColorProbability"});
    VideoReport report;
    readBase(fields, report);
    report.box = readBox(fields);
    if (fields.has("velocity")) {
        report.velocity.emplace();
        fields.numbers("velocity", 2, report.velocity->data());
    }
    report.age = fields.numberWithin("age", 0.0, unlimited, 0.0);
    report.labels = readLabels(fields);
    return report;
}

/// @copydoc readVideo
template <typename Value>
RadarReport readRadarReport(const BasicFields<Value>& fields) {
    fields.allowOnly({"id", "range", "azimuth", "speed", "direction", "radialSpeed", "coasting",
                      "confirmed", "class", "classProbability"});
    RadarReport report;
    readBase(fields, report);
    report.range = fields.numberWithin("range", 0.0, unlimited);
    report.azimuth = fields.numberWithin("azimuth", -360.0, 360.0);
    report.speed = fields.optionalNumber("speed");
    report.direction = fields.optionalNumber("direction");
    report.radialSpeed = fields.optionalNumber("radialSpeed");
    if (report.speed && *report.speed < 0.0) {
        fields.refuse("speed", "is negative");
    }
    if (report.speed.has_value() != report.direction.has_value()) {
        fields.refuse(report.speed ? "direction" : "speed",
                      "missing; speed and direction go together");
    }
    if (!report.speed && !report.radialSpeed) {
        fields.refuse("radialSpeed",
                      "missing; a radar track has a speed and direction or a radial "
                      "speed");
    }
    report.objectClass = readLabel(fields, "class", "classProbability");
    return report;
}

/// @copydoc readVideo
template <typename Value>
ReadyEstimate readEstimate(const BasicFields<Value>& fields) {
    fields.allowOnly({"id", "state", "covariance", "box", "coasting", "confirmed", "class",
                      "classProbability", "color", "colorProbability", "upperClothingColor",
                      "upperClothingColorProbability", "lowerClothingColor",
                      "lowerClothingColorProbability"});
    ReadyEstimate report;
    readBase(fields, report);
    fields.numbers("state", 6, report.state.data());
    std::array<double, 21> upper{};
    fields.numbers("covariance", upper.size(), upper.data());
    std::size_t next = 0;
    for (Eigen::Index row = 0; row < 6; ++row) {
        for (Eigen::Index column = row; column < 6; ++column) {
            report.covariance(row, column) = report.covariance(column, row) = upper[next++];
        }
        if (!(report.covariance(row, row) > 0.0)) {
            fields.refuse("covariance", "variance " + std::to_string(row) + " is not positive");
        }
    }
    if (fields.has("box")) {
        report.box = readBox(fields);
    }
    report.labels = readLabels(fields);
    return report;
}

/// @param tracks receives the track, as the kind of report that its members determine
/// @param fields members of a track
/// @param source sensor of the frame
/// @throw InputError the fault
template <typename Value>
void addReport(std::vector<Report>& tracks, const BasicFields<Value>& fields, Source source) {
    if (fields.has("state")) {
        tracks.emplace_back(readEstimate(fields));
    } else if (source == Radar) {
        tracks.emplace_back(readRadarReport(fields));
    } else {
        tracks.emplace_back(readVideo(fields));
    }
}

/// @param fields a line of a recording
/// @param source sensor of the frame
/// @return the frame; its consistency with itself and with other frames is not checked
/// @throw InputError the fault
template <typename Value>
SensorFrame readSensorFrame(const BasicFields<Value>& fields, Source source) {
    fields.allowOnly({"source", "time", "received", "tracks"});
    SensorFrame frame;
    frame.source = source;
    frame.time = fields.number("time");
    frame.received = fields.number("received", frame.time);
    frame.tracks.reserve(fields.array("tracks").size());
    fields.forEach(
        "tracks", [&](const BasicFields<Value>& track) { addReport(frame.tracks, track, source); });
    refuseRepeatedIds<Report>(frame.tracks, "tracks",
                              [](const Report& report) { return baseOf(report).id; });
    return frame;
}

}  // namespace Veskar::Host::Internal
