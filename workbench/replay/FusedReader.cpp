// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedReader.h"

#include <veskar-host/InputError.h>

#include "host/installation/HeaderFields.h"
#include "host/recording/RepeatedIds.h"
#include "host/reports/LabelFields.h"
#include "io/DocumentValue.h"
#include "io/LineParser.h"
#include "io/TextFile.h"
#include "replay/FusedJson.h"

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// A number that is required but may be null.
double numberOf(const LineFields& fields, std::string_view name) {
    fields.at(name);
    return fields.number(name, std::numeric_limits<double>::quiet_NaN());
}

template <typename Vector>
Vector vectorOf(const LineFields& fields, std::string_view name) {
    const LineValue list = fields.array(name);
    Vector vector;
    if (list.size() != static_cast<std::size_t>(vector.size())) {
        fields.refuse(name,
                      fmt::format("expected {} numbers, found {}", vector.size(), list.size()));
    }
    list.forEachItem([&, i = Eigen::Index{0}](const LineValue& value) mutable {
        const bool isNull = value.kind() == JsonKind::Null;
        if (!isNull && !isNumber(value.kind())) {
            fields.refuse(name, "expected numbers");
        }
        vector[i++] = isNull ? std::numeric_limits<double>::quiet_NaN() : value.number();
    });
    return vector;
}

Eigen::Matrix2d symmetricOf(const LineFields& fields, std::string_view name) {
    const auto values = vectorOf<Eigen::Vector3d>(fields, name);
    Eigen::Matrix2d matrix;
    matrix << values[0], values[1], values[1], values[2];
    return matrix;
}

std::optional<GroundPosition> readGround(const LineFields& fields) {
    if (!fields.has("position")) {
        return std::nullopt;
    }
    return GroundPosition{
        vectorOf<Eigen::Vector2d>(fields, "position"), symmetricOf(fields, "positionCovariance"),
        vectorOf<Eigen::Vector2d>(fields, "velocity"), symmetricOf(fields, "velocityCovariance")};
}

ImageBox readBox(const LineFields& fields) {
    return {numberOf(fields, "left"), numberOf(fields, "bottom"), numberOf(fields, "right"),
            numberOf(fields, "top")};
}

Veskar::Source readSource(const LineFields& fields) {
    const std::string name = fields.text("source");
    if (name != "video" && name != "radar") {
        fields.refuse("source", fmt::format("\"{}\" is not video or radar", name));
    }
    return name == "radar" ? Veskar::Radar : Veskar::VideoObject;
}

std::vector<Support> readSensors(const LineFields& fields) {
    std::vector<Support> sensors;
    fields.forEach("sensors", [&](const LineFields& sensor) {
        sensors.push_back({readSource(sensor), sensor.integer("id"), numberOf(sensor, "coasting")});
    });
    return sensors;
}

std::optional<std::set<std::string>> readTags(const LineFields& fields) {
    if (!fields.has("tags")) {
        return std::nullopt;
    }
    std::set<std::string> tags;
    fields.array("tags").forEachItem([&](const LineValue& tag) {
        if (tag.kind() != JsonKind::String) {
            fields.refuse("tags", "expected strings");
        }
        tags.insert(std::string(tag.text()));
    });
    return tags;
}

FusedTrack trackOf(const LineFields& fields) {
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
        const LineFields geo = fields.object("geo");
        track.geo = ::Dbus::GeoLocation::Position{};
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
    const Fields fields(json);
    requireFormat(fields, "veskar-fused", fusedVersion);
    fields.object("configuration");
    const nlohmann::json& configuration = fields.at("configuration").json();
    return {fields.text("name", ""),
            readCamera(fields.object("camera")),
            readRadar(fields.object("radar")),
            configuration.dump(),
            digestOf(fields.at("camera").json()),
            digestOf(configuration),
            fields.has("veskarHost") ? digestOf(fields.at("veskarHost").json()) : "",
            fields.has("veskarHost") ? fields.at("veskarHost").json().dump() : ""};
}

bool isRefused(const Veskar::ConfigFault& fault) {
    return fault.effect == Veskar::ConfigFault::Effect::Refused;
}

FusedFrame readFrame(const LineFields& fields) {
    FusedFrame frame;
    frame.source = readSource(fields);
    frame.time = fields.number("time");
    frame.received = fields.number("received");
    frame.tracks.reserve(fields.array("tracks").size());
    fields.forEach("tracks",
                   [&](const LineFields& track) { frame.tracks.push_back(trackOf(track)); });
    refuseRepeatedIds<FusedTrack>(frame.tracks, "tracks",
                                  [](const FusedTrack& track) { return track.id; });
    return frame;
}

}  // namespace

FusedReader::FusedReader(const std::string& path)
    : lines_(path), parser_(std::make_unique<LineParser>()) {
    std::string_view text;
    if (!lines_.next(text)) {
        throw InputError(lines_.name() + ":1",
                         InputError("the file is empty, expected the header of fused tracks"));
    }
    try {
        head_ = readHeader(parseJsonLine(text));
    } catch (const nlohmann::json::exception& error) {
        throw InputError(lines_.place(),
                         InputError("no header of fused tracks: " + reasonOf(error)));
    } catch (const InputError& error) {
        throw InputError(lines_.place(), error);
    }
}

FusedReader::~FusedReader() = default;

Veskar::Config FusedReader::config() const {
    try {
        return Veskar::Config::parse_json_string(head_.configuration);
    } catch (const std::exception&) {
        const auto faults = Veskar::Config::findFaults(head_.configuration);
        const auto first = std::find_if(faults.begin(), faults.end(), isRefused);
        throw InputError(lines_.name() + ":1",
                         InputError("configuration", fmt::format("the fusion refuses it: {}: {}",
                                                                 first->key, first->reason)));
    }
}

std::optional<FusedFrame> FusedReader::next() {
    std::optional<FusedFrame> frame;
    std::string_view text;
    while (!frame && lines_.next(text)) {
        parser_->read(lines_, text, [&](const LineFields& fields) {
            if (!readClosingLine(fields, closing_)) {
                frame = readFrame(fields);
                checkOrder(*frame);
            }
        });
    }
    return frame;
}

/// The times of the estimates need not increase: a late frame may follow one that the host has
/// added.
void FusedReader::checkOrder(const FusedFrame& frame) {
    if (lastReceived_ && frame.received < *lastReceived_) {
        throw InputError("received",
                         fmt::format("{} is before {}, when the frame before was received",
                                     frame.received, *lastReceived_));
    }
    lastReceived_ = frame.received;
}

}  // namespace Workbench
