// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedReader.h"

#include "io/Fields.h"
#include "io/InputError.h"
#include "io/TextFile.h"
#include "recording/Header.h"
#include "recording/LabelFields.h"
#include "replay/FusedJson.h"

#include <limits>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// A number that must be there but may be null.
double numberOf(const Fields& fields, const char* name) {
    fields.at(name);
    return fields.number(name, std::numeric_limits<double>::quiet_NaN());
}

template <typename Vector>
Vector vectorOf(const Fields& fields, const char* name) {
    const nlohmann::json& list = fields.array(name);
    Vector vector;
    if (list.size() != static_cast<std::size_t>(vector.size())) {
        fields.refuse(name,
                      fmt::format("expected {} numbers, found {}", vector.size(), list.size()));
    }
    for (Eigen::Index i = 0; i < vector.size(); ++i) {
        const nlohmann::json& value = list[static_cast<std::size_t>(i)];
        if (!value.is_number() && !value.is_null()) {
            fields.refuse(name, "expected numbers");
        }
        vector[i] =
            value.is_null() ? std::numeric_limits<double>::quiet_NaN() : value.get<double>();
    }
    return vector;
}

Eigen::Matrix2d symmetricOf(const Fields& fields, const char* name) {
    const auto values = vectorOf<Eigen::Vector3d>(fields, name);
    Eigen::Matrix2d matrix;
    matrix << values[0], values[1], values[1], values[2];
    return matrix;
}

std::optional<GroundPosition> readGround(const Fields& fields) {
    if (!fields.has("position")) {
        return std::nullopt;
    }
    return GroundPosition{
        vectorOf<Eigen::Vector2d>(fields, "position"), symmetricOf(fields, "positionCovariance"),
        vectorOf<Eigen::Vector2d>(fields, "velocity"), symmetricOf(fields, "velocityCovariance")};
}

ImageBox readBox(const Fields& fields) {
    return {numberOf(fields, "left"), numberOf(fields, "bottom"), numberOf(fields, "right"),
            numberOf(fields, "top")};
}

Veskar::Source readSource(const Fields& fields) {
    const std::string name = fields.text("source");
    if (name != "video" && name != "radar") {
        fields.refuse("source", fmt::format("\"{}\" is not video or radar", name));
    }
    return name == "radar" ? Veskar::Radar : Veskar::VideoObject;
}

std::vector<Support> readSensors(const Fields& fields) {
    std::vector<Support> sensors;
    const nlohmann::json& list = fields.array("sensors");
    for (std::size_t i = 0; i < list.size(); ++i) {
        const Fields sensor(list[i], fields.pathOf(fmt::format("sensors[{}]", i)));
        sensors.push_back({readSource(sensor), sensor.integer("id"), numberOf(sensor, "coasting")});
    }
    return sensors;
}

std::optional<std::set<std::string>> readTags(const Fields& fields) {
    if (!fields.has("tags")) {
        return std::nullopt;
    }
    std::set<std::string> tags;
    for (const nlohmann::json& tag : fields.array("tags")) {
        if (!tag.is_string()) {
            fields.refuse("tags", "expected strings");
        }
        tags.insert(tag.get<std::string>());
    }
    return tags;
}

FusedTrack readTrack(const Fields& fields) {
    FusedTrack track;
    track.id = fields.integer("id");
    track.confirmed = fields.boolean("confirmed", false);
    track.probability = numberOf(fields, "probability");
    track.image = vectorOf<Eigen::Vector2d>(fields, "image");
    track.imageRate = vectorOf<Eigen::Vector2d>(fields, "imageRate");
    track.range = numberOf(fields, "range");
    track.rangeRate = numberOf(fields, "rangeRate");
    track.ground = readGround(fields);
    track.speed = fields.optionalNumber("speed");
    track.direction = fields.optionalNumber("direction");
    track.labels = readLabels(fields);
    track.box = readBox(fields.object("box"));
    if (fields.has("geo")) {
        const Fields geo = fields.object("geo");
        track.geo = Dbus::GeoLocation::Position{};
        track.geo->latitude = numberOf(geo, "latitude");
        track.geo->longitude = numberOf(geo, "longitude");
        track.geo->valid = true;
    }
    track.age = numberOf(fields, "age");
    track.sensors = readSensors(fields);
    track.tags = readTags(fields);
    return track;
}

FusedHeader readHeader(const nlohmann::json& json) {
    const Fields fields(json, "");
    if (fields.text("format") != "veskar-fused") {
        fields.refuse("format",
                      "expected \"veskar-fused\", found \"" + fields.text("format") + "\"");
    }
    if (const int version = fields.integer("version"); version != fusedVersion) {
        fields.refuse("version", fmt::format("version {} is not supported, this program reads "
                                             "version {}",
                                             version, fusedVersion));
    }
    fields.object("configuration");
    return {fields.text("name", ""), readCamera(fields.object("camera")),
            readRadar(fields.object("radar")), fields.at("configuration").dump()};
}

}  // namespace

FusedReader::FusedReader(const std::string& path) : lines(path) {
    std::string_view text;
    if (!lines.next(text)) {
        throw InputError(lines.name() +
                         ":1: the file is empty, expected the header of fused tracks");
    }
    try {
        head = readHeader(nlohmann::json::parse(text));
    } catch (const nlohmann::json::exception& error) {
        throw InputError(
            fmt::format("{}: no header of fused tracks: {}", lines.place(), reasonOf(error)));
    } catch (const InputError& error) {
        throw InputError(fmt::format("{}: {}", lines.place(), error.what()));
    }
}

std::optional<FusedFrame> FusedReader::next() {
    std::string_view text;
    if (!lines.next(text)) {
        return std::nullopt;
    }
    try {
        return parse(text);
    } catch (const nlohmann::json::exception& error) {
        throw InputError(fmt::format("{}: {}{}", lines.place(),
                                     lines.lastLineIsOpen() ? "the line is cut off: " : "",
                                     reasonOf(error)));
    } catch (const InputError& error) {
        throw InputError(fmt::format("{}: {}", lines.place(), error.what()));
    }
}

FusedFrame FusedReader::parse(std::string_view text) const {
    const nlohmann::json json = nlohmann::json::parse(text);
    const Fields fields(json, "");
    FusedFrame frame;
    frame.source = readSource(fields);
    frame.time = fields.number("time");
    frame.received = fields.number("received");
    const nlohmann::json& tracks = fields.array("tracks");
    frame.tracks.reserve(tracks.size());
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        frame.tracks.push_back(readTrack(Fields(tracks[i], fmt::format("tracks[{}]", i))));
    }
    return frame;
}

}  // namespace Workbench
