// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/RadarModel.h>

#include <algorithm>
#include <cmath>

namespace Veskar::Host {

RadarModel::RadarModel(const RadarSetup& setup, const HostParameters& parameters)
    : setup_(setup),
      unknownTangentialSpeedStd_(parameters.unknownTangentialSpeedStd),
      rotation_(setup.mounting.rotation()) {}

RadarModel::GroundPoint RadarModel::groundPoint(double reportedRange, double azimuth) const {
    // The viewing direction d(azimuth, elevation) in the radar's frame. The elevation is not
    // measured; it follows from the object being on the ground: height + range (R d)_z = 0, or a c
    // + b s = fall, where c and s are its cosine and sine. Of both solutions the one below the
    // horizon is taken.
    const double height = setup_.mounting.position[2];
    const double range = std::max(reportedRange, 1.02 * height);
    const double angle = radians(azimuth);
    const Eigen::Vector3d level(std::cos(angle), -std::sin(angle), 0.0);
    const double a = rotation_.row(2).dot(level);
    const double b = rotation_(2, 2);
    const double square = a * a + b * b;
    const double steepest = std::sqrt(square);
    const double fall = std::clamp(-height / range, -steepest, steepest);
    const double rest = std::sqrt(std::max(square - fall * fall, 0.0));
    const double c = (a * fall + b * rest) / square;
    const double s = (b * fall - a * rest) / square;

    const Eigen::Vector3d up = Eigen::Vector3d::UnitZ();
    const Eigen::Vector3d d = rotation_ * (c * level + s * up);
    const Eigen::Vector3d byElevation = rotation_ * (c * up - s * level);
    const Eigen::Vector3d byAzimuth =
        rotation_ * (c * Eigen::Vector3d(-std::sin(angle), -std::cos(angle), 0.0));
    const double elevationByRange = -d[2] / (range * byElevation[2]);
    const double elevationByAzimuth = -byAzimuth[2] / byElevation[2];

    GroundPoint result;
    result.position = (setup_.mounting.position + range * d).head<2>();
    result.jacobian.col(0) = (d + range * byElevation * elevationByRange).head<2>();
    result.jacobian.col(1) = (range * (byAzimuth + byElevation * elevationByAzimuth)).head<2>();
    return result;
}

Eigen::Vector2d RadarModel::groundDirection(double direction) const {
    const double angle = radians(setup_.mounting.yaw - direction);
    return {std::cos(angle), std::sin(angle)};
}

GroundEstimate RadarModel::estimate(const RadarReport& report) const {
    const GroundPoint place = groundPoint(report.range, report.azimuth);
    const Eigen::Vector2d noise(setup_.rangeStd, radians(setup_.azimuthStd));
    GroundEstimate result;
    result.covariance.setZero();
    result.covariance.topLeftCorner<2, 2>() = place.jacobian *
                                              noise.cwiseAbs2().asDiagonal().toDenseMatrix() *
                                              place.jacobian.transpose();
    result.state.head<2>() = place.position;
    const double variance = setup_.velocityStd * setup_.velocityStd;
    if (report.speed && report.direction) {
        result.state.tail<2>() = *report.speed * groundDirection(*report.direction);
        result.covariance.bottomRightCorner<2, 2>() = variance * Eigen::Matrix2d::Identity();
        return result;
    }
    const Eigen::Vector2d radial =
        (place.position - setup_.mounting.position.head<2>()).normalized();
    const Eigen::Vector2d tangential(-radial[1], radial[0]);
    // The first column is the ground displacement per metre of slant range.
    result.state.tail<2>() = report.radialSpeed.value_or(0.0) * place.jacobian.col(0);
    result.covariance.bottomRightCorner<2, 2>() =
        variance * radial * radial.transpose() + unknownTangentialSpeedStd_ *
                                                     unknownTangentialSpeedStd_ * tangential *
                                                     tangential.transpose();
    return result;
}

}  // namespace Veskar::Host
