// SPDX-License-Identifier: Apache-2.0
#include "recording/Header.h"

#include "io/InputError.h"

#include <limits>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double tiny = 1e-6;

template <typename Vector>
Json listOf(const Vector& vector) {
    Json list = Json::array();
    for (Eigen::Index i = 0; i < vector.size(); ++i) {
        list.push_back(vector[i]);
    }
    return list;
}

void readPose(const Fields& fields, Mounting& mounting) {
    fields.numbers("position", 3, mounting.position.data());
    const Fields rotation = fields.object("rotation");
    rotation.allowOnly({"pitch", "yaw", "roll"});
    mounting.pitch = rotation.number("pitch");
    mounting.yaw = rotation.number("yaw");
    mounting.roll = rotation.number("roll");
    if (!(mounting.position[2] > 0.0)) {
        fields.refuse("position", "the height above ground, the third number, must be positive");
    }
}

Json rotationOf(const Mounting& mounting) {
    return Json{{"pitch", mounting.pitch}, {"yaw", mounting.yaw}, {"roll", mounting.roll}};
}

TruthKind readTruthKind(const Fields& fields) {
    const std::string kind = fields.text("truth", "none");
    if (kind == "none") {
        return TruthKind::None;
    }
    if (kind == "incomplete") {
        return TruthKind::Incomplete;
    }
    if (kind != "complete") {
        fields.refuse("truth", fmt::format("\"{}\" is not none, incomplete or complete", kind));
    }
    return TruthKind::Complete;
}

const char* nameOf(TruthKind kind) {
    switch (kind) {
        case TruthKind::Incomplete:
            return "incomplete";
        case TruthKind::Complete:
            return "complete";
        case TruthKind::None:
            break;
    }
    return "none";
}

}  // namespace

CameraSetup readCamera(const Fields& fields) {
    fields.allowOnly({"bdc", "rotation", "resolution", "sensorOffset", "imageToRadiansPolynomial",
                      "radiansToImagePolynomial", "fov", "position"});
    CameraSetup camera;
    fields.at("bdc");
    camera.bdc = fields.boolean("bdc", false);
    readPose(fields, camera.mounting);
    std::array<double, 2> resolution{};
    fields.numbers("resolution", 2, resolution.data());
    if (!(resolution[0] >= 1.0 && resolution[1] >= 1.0 && resolution[0] <= 65536.0 &&
          resolution[1] <= 65536.0)) {
        fields.refuse("resolution", "width and height must be between 1 and 65536 pixels");
    }
    camera.resolution = {static_cast<int>(resolution[0]), static_cast<int>(resolution[1])};
    fields.numbers("sensorOffset", 2, camera.sensorOffset.data());
    fields.numbers("imageToRadiansPolynomial", 4, camera.imageToRadians.data());
    fields.numbers("radiansToImagePolynomial", 4, camera.radiansToImage.data());
    fields.numbers("fov", 2, camera.fieldOfView.data());
    return camera;
}

RadarSetup readRadar(const Fields& fields) {
    fields.allowOnly({"position", "rotation", "rangeStd", "azimuthStd", "velocityStd",
                      "fieldOfView", "maximumRange"});
    RadarSetup radar;
    readPose(fields, radar.mounting);
    radar.rangeStd = fields.numberWithin("rangeStd", tiny, infinite);
    radar.azimuthStd = fields.numberWithin("azimuthStd", tiny, 90.0);
    radar.velocityStd = fields.numberWithin("velocityStd", tiny, infinite);
    radar.fieldOfView = fields.numberWithin("fieldOfView", tiny, 360.0, radar.fieldOfView);
    radar.maximumRange = fields.numberWithin("maximumRange", tiny, infinite, radar.maximumRange);
    return radar;
}

Site readSite(const Fields& fields) {
    fields.allowOnly({"latitude", "longitude", "heading"});
    Site site;
    site.latitude = fields.numberWithin("latitude", -90.0, 90.0);
    site.longitude = fields.numberWithin("longitude", -180.0, 180.0);
    site.heading = fields.numberWithin("heading", -360.0, 360.0);
    return site;
}

RecordingHeader readHeader(const Fields& fields) {
    if (fields.text("format") != "veskar-recording") {
        fields.refuse("format",
                      "expected \"veskar-recording\", found \"" + fields.text("format") + "\"");
    }
    if (const int version = fields.integer("version"); version != recordingVersion) {
        fields.refuse("version", fmt::format("version {} is not supported, this program reads "
                                             "version {}",
                                             version, recordingVersion));
    }
    fields.allowOnly({"format", "version", "name", "origin", "licence", "camera", "radar", "site",
                      "epoch", "seed", "truth"});
    RecordingHeader header;
    header.name = fields.text("name", "");
    header.origin = fields.text("origin", "");
    header.licence = fields.text("licence", "");
    header.camera = readCamera(fields.object("camera"));
    header.radar = readRadar(fields.object("radar"));
    if (fields.has("site")) {
        header.site = readSite(fields.object("site"));
    }
    header.epoch = fields.optionalNumber("epoch");
    if (fields.has("seed")) {
        const nlohmann::json& seed = fields.at("seed").json();
        if (!seed.is_number_unsigned()) {
            fields.refuse("seed", "expected an integer from 0");
        }
        header.seed = seed.get<std::uint64_t>();
    }
    header.truth = readTruthKind(fields);
    return header;
}

Json toJson(const CameraSetup& camera) {
    return Json{{"bdc", camera.bdc},
                {"rotation", rotationOf(camera.mounting)},
                {"resolution", {camera.resolution[0], camera.resolution[1]}},
                {"sensorOffset", listOf(camera.sensorOffset)},
                {"imageToRadiansPolynomial", listOf(camera.imageToRadians)},
                {"radiansToImagePolynomial", listOf(camera.radiansToImage)},
                {"fov", listOf(camera.fieldOfView)},
                {"position", listOf(camera.mounting.position)}};
}

Json toJson(const RadarSetup& radar) {
    return Json{{"position", listOf(radar.mounting.position)},
                {"rotation", rotationOf(radar.mounting)},
                {"rangeStd", radar.rangeStd},
                {"azimuthStd", radar.azimuthStd},
                {"velocityStd", radar.velocityStd},
                {"fieldOfView", radar.fieldOfView},
                {"maximumRange", radar.maximumRange}};
}

Json toJson(const Site& site) {
    return Json{
        {"latitude", site.latitude}, {"longitude", site.longitude}, {"heading", site.heading}};
}

Json toJson(const RecordingHeader& header) {
    Json json{{"format", "veskar-recording"}, {"version", recordingVersion},
              {"name", header.name},          {"origin", header.origin},
              {"licence", header.licence},    {"camera", toJson(header.camera)},
              {"radar", toJson(header.radar)}};
    if (header.site) {
        json["site"] = toJson(*header.site);
    }
    if (header.epoch) {
        json["epoch"] = *header.epoch;
    }
    if (header.seed) {
        json["seed"] = *header.seed;
    }
    json["truth"] = nameOf(header.truth);
    return json;
}

}  // namespace Workbench
