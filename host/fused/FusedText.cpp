// SPDX-License-Identifier: Apache-2.0
#include "host/fused/FusedText.h"

#include <veskar-host/SensorFrame.h>

#include "host/reports/JsonLine.h"

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Veskar::Host {
namespace Internal {
namespace {

void appendSymmetric(LineText& text, std::string_view name, const Eigen::Matrix2d& matrix) {
    text.addMember(name, {matrix(0, 0), matrix(0, 1), matrix(1, 1)}, estimateDecimals);
}

void append(LineText& text, const GroundPosition& ground) {
    appendVector(text, "position", ground.position, metreDecimals);
    appendSymmetric(text, "positionCovariance", ground.covariance);
    appendVector(text, "velocity", ground.velocity, metreDecimals);
    appendSymmetric(text, "velocityCovariance", ground.velocityCovariance);
}

void append(LineText& text, const std::vector<Support>& sensors) {
    text += ",\"sensors\":[";
    for (std::size_t i = 0; i < sensors.size(); ++i) {
        text += i == 0 ? "{\"source\":\"" : ",{\"source\":\"";
        text += sourceName(sensors[i].source);
        text += "\",\"id\":";
        text.addInteger(sensors[i].id);
        text.addMember("coasting", sensors[i].coasting, timeDecimals);
        text += '}';
    }
    text += ']';
}

void append(LineText& text, const std::set<std::string>& tags) {
    text += ",\"tags\":[";
    std::string_view separator;
    for (const std::string& tag : tags) {
        text += std::exchange(separator, ",");
        text.addQuoted(tag);
    }
    text += ']';
}

void append(LineText& text, const FusedTrack& track) {
    text += "{\"id\":";
    text.addInteger(track.id);
    text += track.confirmed ? ",\"confirmed\":true" : ",\"confirmed\":false";
    text.addMember("probability", track.probability, imageDecimals);
    appendVector(text, "image", track.image, imageDecimals);
    appendVector(text, "imageRate", track.imageRate, imageDecimals);
    text.addMember("range", track.range, metreDecimals);
    text.addMember("rangeRate", track.rangeRate, metreDecimals);
    if (track.ground) {
        append(text, *track.ground);
    }
    if (track.speed) {
        text.addMember("speed", *track.speed, metreDecimals);
    }
    if (track.direction) {
        text.addMember("direction", *track.direction, angleDecimals);
    }
    appendLabels(text, track.labels);
    appendBox(text, track.box);
    if (track.geo) {
        text += ",\"geo\":{\"latitude\":";
        text.addNumber(track.geo->latitude, geoDecimals);
        text.addMember("longitude", track.geo->longitude, geoDecimals);
        text += '}';
    }
    text.addMember("age", track.age, timeDecimals);
    append(text, track.sensors);
    if (track.tags) {
        append(text, *track.tags);
    }
    text += '}';
}

}  // namespace

void append(LineText& text, const FusedFrame& frame) {
    text += "{\"source\":\"";
    text += sourceName(frame.source);
    text += '"';
    text.addMember("time", frame.time, timeDecimals);
    text.addMember("received", frame.received, timeDecimals);
    text += ",\"tracks\":[";
    for (std::size_t i = 0; i < frame.tracks.size(); ++i) {
        text += i == 0 ? "" : ",";
        append(text, frame.tracks[i]);
    }
    text += "]}\n";
}

}  // namespace Internal

std::string toJsonLine(const FusedFrame& frame) {
    Internal::LineText text;
    append(text, frame);
    return text.string();
}

}  // namespace Veskar::Host
