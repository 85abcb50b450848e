// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/GeographicPosition.h>
#include <veskar-host/HostAdapter.h>
#include <veskar-host/UsualSize.h>
#include <veskar/Vocabulary.h>

#include <cmath>
#include <string>

namespace Veskar::Host {
namespace {

Eigen::Vector4d libraryBox(const ImageBox& box) {
    return {box.left, box.right - box.left, box.bottom, box.top - box.bottom};
}

std::shared_ptr<ReportedTrack> makeTrack(const FusionEstimate& estimate, double time,
                                         const ReportBase& report, Source source,
                                         const Labels& labels) {
    auto track = std::make_shared<ReportedTrack>(
        estimate.state, estimate.covariance, time, report.id, source, ImagePlaneRange,
        labels.objectClass.name, labels.objectClass.probability, labels.color.name,
        labels.color.probability, labels.upperClothingColor.name,
        labels.upperClothingColor.probability, labels.lowerClothingColor.name,
        labels.lowerClothingColor.probability);
    track->isConfident = report.confirmed;
    return track;
}

StateVector floorFor(const Camera& camera, const HostParameters& parameters) {
    constexpr double referenceHalfAngle = 3.14159265358979323846 / 4.0;
    constexpr double referenceAspect = 16.0 / 9.0;
    const double column = referenceHalfAngle / camera.getFieldOfView()[0];
    const double row = column * camera.getAspectRatio() / referenceAspect;
    StateVector scale;
    scale << column, column, row, row, 1.0, 1.0;
    return parameters.radarFloorStd.cwiseProduct(scale).cwiseAbs2();
}

}  // namespace

HostAdapter::HostAdapter(const Installation& installation, const Config& config,
                         const HostParameters& parameters)
    : parameters_(parameters),
      camera_(installation.camera.build()),
      video_(camera_.camera(), config.inputs.video, parameters),
      radar_(installation.radar, parameters),
      site_(installation.site),
      radarFloor_(floorFor(camera_.camera(), parameters)) {}

std::vector<std::shared_ptr<Track>> HostAdapter::convert(const SensorFrame& frame, double uptime,
                                                         double ahead, double slowInterval) const {
    const Moment when{frame.time + uptime + ahead, ahead, frame.source};
    std::vector<std::shared_ptr<Track>> tracks;
    tracks.reserve(frame.tracks.size());
    for (const Report& report : frame.tracks) {
        auto track = std::visit([&](const auto& form) { return convert(form, when); }, report);
        const ReportBase& base = baseOf(report);
        const bool isPredicted = ahead > 0.0;
        track->probability = isPredicted ? parameters_.predictedGain : gainOf(base, frame.source);
        track->coastingTime = coastingOf(base, isPredicted, slowInterval);
        tracks.push_back(std::move(track));
    }
    return tracks;
}

double HostAdapter::gainOf(const ReportBase& report, Source source) const {
    if (report.coasting > 0.0) {
        return parameters_.coastingGain;
    }
    if (!report.confirmed) {
        return parameters_.tentativeGain;
    }
    return source == Radar ? parameters_.radarGain : parameters_.videoGain;
}

double HostAdapter::coastingOf(const ReportBase& report, bool isPredicted,
                               double slowInterval) const {
    if (slowInterval > 0.0 && parameters_.nominalInterval > 0.0) {
        return report.coasting * parameters_.nominalInterval / slowInterval;
    }
    return isPredicted ? 0.0 : report.coasting;
}

std::shared_ptr<Track> HostAdapter::convert(const VideoReport& report, const Moment& when) const {
    ImageBox box = report.box;
    if (report.velocity && when.ahead > 0.0) {
        const Eigen::Vector2d shift = *report.velocity * when.ahead;
        box = {box.left + shift[0], box.bottom + shift[1], box.right + shift[0],
               box.top + shift[1]};
    }
    auto track = makeTrack(video_.estimate(box, report.velocity), when.time, report, when.source,
                           report.labels);
    track->boundingBox = libraryBox(box);
    return track;
}

std::shared_ptr<Track> HostAdapter::convert(const RadarReport& report, const Moment& when) const {
    GroundEstimate ground = radar_.estimate(report);
    if (when.ahead > 0.0) {
        ground = ground.predicted(when.ahead, parameters_.predictedAccelerationStd);
    }
    FusionEstimate estimate = toFusion(camera_, ground);
    const double lag = parameters_.rangeStdPerRate * estimate.state[5];
    estimate.covariance.diagonal() += radarFloor_;
    estimate.covariance(4, 4) += lag * lag;

    const Eigen::Vector2d velocity = ground.state.tail<2>();
    const double speed = velocity.norm();
    Labels labels;
    labels.objectClass = radarClass(report, speed);
    auto track = makeTrack(estimate, when.time, report, when.source, labels);
    track->speed = speed;
    if (speed > 0.0) {
        track->direction = velocity / speed;
    }
    track->boundingBox =
        libraryBox(expectedBox(ground.state.head<2>(), estimate, labels.objectClass.name));
    locate(*track, ground.state.head<2>());
    return track;
}

std::shared_ptr<Track> HostAdapter::convert(const ReadyEstimate& report, const Moment& when) const {
    FusionEstimate estimate{report.state, report.covariance};
    if (when.ahead > 0.0) {
        // Unlike the fusion's own prediction, this one moves the range, too.
        StateMatrix F = constantVelocity(when.ahead);
        F(4, 5) = when.ahead;
        estimate.state = F * report.state;
        estimate.covariance = F * report.covariance * F.transpose();
    }
    auto track = makeTrack(estimate, when.time, report, when.source, report.labels);
    if (report.box) {
        track->boundingBox = libraryBox(*report.box);
    }
    if (when.source == Radar) {
        const auto ground =
            camera_.groundPoint(estimate.state[0], estimate.state[2], estimate.state[4]);
        if (ground) {
            locate(*track, ground->position);
        }
    }
    return track;
}

Label HostAdapter::radarClass(const RadarReport& report, double speed) const {
    if (report.objectClass.name != Vocabulary::unknown) {
        return report.objectClass;
    }
    const bool isSlow = speed < parameters_.humanSpeedLimit;
    return {isSlow ? Vocabulary::human : Vocabulary::vehicle,
            parameters_.classFromSpeedProbability};
}

ImageBox HostAdapter::expectedBox(const Eigen::Vector2d& ground, const FusionEstimate& estimate,
                                  const std::string& className) const {
    // A radar reports no box; a box of the class's typical size replaces it.
    const Eigen::Vector3d size = usualSize(className);
    const Eigen::Vector2d side =
        ground + 0.5 * size[1] * Eigen::Vector2d(ground[1], -ground[0]).normalized();
    const double u = estimate.state[0];
    const double halfWidth = std::abs(camera_.position({side[0], side[1], 0.0})[0] - u);
    const double top = camera_.position({ground[0], ground[1], size[2]})[1];
    return {u - halfWidth, estimate.state[2], u + halfWidth, top};
}

void HostAdapter::locate(Track& track, const Eigen::Vector2d& ground) const {
    // Without a site the pipeline asks the device's geolocation service when it reads a track.
    track.location = SphericalCoordinate{ground.norm(), deviceAzimuth(ground), 0.0};
    if (site_) {
        track.geoLocation = geographicPosition(*site_, ground);
    }
}

}  // namespace Veskar::Host
