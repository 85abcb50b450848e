// SPDX-License-Identifier: Apache-2.0
#include "calibrate/DeviceSamples.h"

#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>
#include <veskar-host/UsualSize.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include <nlohmann/json.hpp>

namespace Workbench {
namespace {

/// The only class whose tracks give samples.
const char* const sampledClass = "human";

double secondsOf(const Veskar::CalibrationPayload& payload) {
    return static_cast<double>(payload.timestamp) * 1e-9;
}

bool isUsable(const Veskar::CalibrationSample& sample) {
    return std::isfinite(sample.u_video) && std::isfinite(sample.v_video) &&
           std::isfinite(sample.r_radar) && sample.r_radar > 0.0;
}

class SampleScene {
public:
    SampleScene(const Installation& stated, const Placement& placement)
        : statedOrigin_(stated.camera.mounting.position),
          projection_(placed(stated, placement).camera.build()) {}

    void add(const Veskar::CalibrationPayload& payload) {
        SensorFrame radar;
        SensorFrame video;
        radar.source = Veskar::Radar;
        video.source = Veskar::VideoObject;
        radar.time = video.time = secondsOf(payload);
        for (const Veskar::CalibrationSample& sample : payload.data) {
            const auto place = isUsable(sample) ? groundPoint(sample) : std::nullopt;
            if (place) {
                radar.tracks.emplace_back(heard(sample, *place));
                video.tracks.emplace_back(seen(sample, *place));
            }
        }
        scene_.sightings.add(radar);
        scene_.sightings.add(video);
    }

    CalibrationScene take() {
        scene_.moments = momentsOf(scene_.sightings);
        scene_.hasBearings = false;
        return std::move(scene_);
    }

private:
    /// In the sample's column, as far away over the ground as it is from the stated camera.
    std::optional<Eigen::Vector2d> groundPoint(const Veskar::CalibrationSample& sample) const {
        const double statedHeight = statedOrigin_[2];
        const double square = sample.r_radar * sample.r_radar - statedHeight * statedHeight;
        if (!(square > 0.0)) {
            return std::nullopt;
        }
        const double range = std::hypot(std::sqrt(square), projection_.origin()[2]);
        const auto point = projection_.groundPoint(sample.u_video, sample.v_video, range);
        return point ? std::optional(point->position) : std::nullopt;
    }

    RadarReport heard(const Veskar::CalibrationSample& sample, const Eigen::Vector2d& place) const {
        const Eigen::Vector2d offset = place - statedOrigin_.head<2>();
        RadarReport report;
        report.id = sample.id_radar;
        report.range = sample.r_radar;
        report.azimuth = -degrees(std::atan2(offset[1], offset[0]));
        return report;
    }

    /// The box of a person that stands there: samples do not state the size.
    VideoReport seen(const Veskar::CalibrationSample& sample, const Eigen::Vector2d& place) const {
        const double height = usualSize(sampledClass)[2];
        const double foot = projection_.position({place[0], place[1], 0.0})[1];
        const double head = projection_.position({place[0], place[1], height})[1];
        VideoReport report;
        report.id = sample.id_radar;
        report.box.left = report.box.right = sample.u_video;
        report.box.bottom = sample.v_video;
        report.box.top = std::min(sample.v_video + head - foot, 0.9);
        report.labels.objectClass = {sampledClass, 1.0};
        return report;
    }

    Eigen::Vector3d statedOrigin_;
    Projection projection_;
    CalibrationScene scene_;
};

}  // namespace

Veskar::CalibrationPayload parseSamples(const std::string& datagram) {
    try {
        const auto json = nlohmann::json::parse(datagram);
        Veskar::CalibrationPayload payload;
        payload.timestamp = json.at("radarTimestamp_ns").get<std::int64_t>();
        for (const auto& sample : json.at("data")) {
            payload.data.push_back(
                {sample.at("u_video").get<double>(), sample.at("v_video").get<double>(),
                 sample.at("id_radar").get<int>(), sample.at("r_radar").get<double>()});
        }
        return payload;
    } catch (const nlohmann::json::exception& error) {
        throw InputError(std::string("no calibration samples: ") + error.what());
    }
}

CalibrationScene sceneOf(const std::vector<Veskar::CalibrationPayload>& payloads,
                         const Installation& stated, const Placement& placement) {
    SampleScene scene(stated, placement);
    for (const Veskar::CalibrationPayload& payload : payloads) {
        scene.add(payload);
    }
    return scene.take();
}

FreeParameters toldBySamples() {
    FreeParameters told{};
    for (const MountingParameter parameter :
         {MountingParameter::CameraPitch, MountingParameter::CameraRoll,
          MountingParameter::CameraHeight}) {
        told[static_cast<std::size_t>(parameter)] = true;
    }
    return told;
}

CalibrationResult calibrate(const std::vector<Veskar::CalibrationPayload>& payloads,
                            const Installation& stated, const FreeParameters& asked) {
    constexpr int passes = 3;
    Installation atCamera = stated;
    atCamera.radar.mounting = {};
    atCamera.radar.mounting.position = stated.camera.mounting.position;
    Placement placement = Placement::Zero();
    CalibrationResult result;
    for (int pass = 0; pass < passes; ++pass) {
        result = calibrate(atCamera, {sceneOf(payloads, stated, placement)}, asked);
        for (const MountingParameter parameter : allParameters()) {
            placement[indexOf(parameter)] = result.of(parameter).value;
        }
    }
    return result;
}

}  // namespace Workbench
