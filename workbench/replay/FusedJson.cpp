// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedJson.h"

#include "io/NumberText.h"
#include "io/TextFile.h"
#include "recording/Header.h"
#include "recording/JsonLine.h"

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

void appendSymmetric(std::string& text, std::string_view name, const Eigen::Matrix2d& matrix) {
    appendMember(text, name, {matrix(0, 0), matrix(0, 1), matrix(1, 1)}, estimateDecimals);
}

void append(std::string& text, const GroundPosition& ground) {
    appendMember(text, "position", ground.position, metreDecimals);
    appendSymmetric(text, "positionCovariance", ground.covariance);
    appendMember(text, "velocity", ground.velocity, metreDecimals);
    appendSymmetric(text, "velocityCovariance", ground.velocityCovariance);
}

void append(std::string& text, const std::vector<Support>& sensors) {
    text += ",\"sensors\":[";
    for (std::size_t i = 0; i < sensors.size(); ++i) {
        text += i == 0 ? "{\"source\":\"" : ",{\"source\":\"";
        text += sourceName(sensors[i].source);
        text += "\",\"id\":";
        appendInteger(text, sensors[i].id);
        appendMember(text, "coasting", sensors[i].coasting, timeDecimals);
        text += '}';
    }
    text += ']';
}

void append(std::string& text, const std::set<std::string>& tags) {
    text += ",\"tags\":[";
    for (const std::string& tag : tags) {
        text += text.back() == '[' ? "" : ",";
        appendQuoted(text, tag);
    }
    text += ']';
}

void append(std::string& text, const FusedTrack& track) {
    text += "{\"id\":";
    appendInteger(text, track.id);
    text += track.confirmed ? ",\"confirmed\":true" : ",\"confirmed\":false";
    appendMember(text, "probability", track.probability, imageDecimals);
    appendMember(text, "image", track.image, imageDecimals);
    appendMember(text, "imageRate", track.imageRate, imageDecimals);
    appendMember(text, "range", track.range, metreDecimals);
    appendMember(text, "rangeRate", track.rangeRate, metreDecimals);
    if (track.ground) {
        append(text, *track.ground);
    }
    if (track.speed) {
        appendMember(text, "speed", *track.speed, metreDecimals);
    }
    if (track.direction) {
        appendMember(text, "direction", *track.direction, angleDecimals);
    }
    appendLabels(text, track.labels);
    appendBox(text, track.box);
    if (track.geo) {
        text += ",\"geo\":{\"latitude\":";
        appendNumber(text, track.geo->latitude, geoDecimals);
        appendMember(text, "longitude", track.geo->longitude, geoDecimals);
        text += '}';
    }
    appendMember(text, "age", track.age, timeDecimals);
    append(text, track.sensors);
    if (track.tags) {
        append(text, *track.tags);
    }
    text += '}';
}

}  // namespace

std::string fusedHeaderLine(const RecordingHeader& header, const std::string& configuration) {
    Json json{{"format", "veskar-fused"},     {"version", fusedVersion},
              {"name", header.name},          {"origin", header.origin},
              {"licence", header.licence},    {"camera", toJson(header.camera)},
              {"radar", toJson(header.radar)}};
    json["configuration"] = Json::parse(configuration);
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string fusedLine(const FusedFrame& frame) {
    std::string text;
    text.reserve(200 + 700 * frame.tracks.size());
    text += "{\"source\":\"";
    text += sourceName(frame.source);
    text += '"';
    appendMember(text, "time", frame.time, timeDecimals);
    appendMember(text, "received", frame.received, timeDecimals);
    text += ",\"tracks\":[";
    for (std::size_t i = 0; i < frame.tracks.size(); ++i) {
        text += i == 0 ? "" : ",";
        append(text, frame.tracks[i]);
    }
    text += "]}\n";
    return text;
}

}  // namespace Workbench
