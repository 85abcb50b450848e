// SPDX-License-Identifier: Apache-2.0
#include "geometry/Projection.h"

#include <veskar/ImagePlane.h>

#include <algorithm>
#include <cmath>

namespace Workbench {
namespace {

// Closer to the optical axis than this angle the derivatives of radius over distance from the axis
// lose all digits; they are taken there instead, where they differ by less than it.
constexpr double leastAngle = 1e-4;

// Behind the image plane a pinhole sees nothing; the radius is kept large and finite.
constexpr double largestPinholeAngle = 1.55;

// The camera evaluates its polynomial but does not tell the coefficients. They follow from it: the
// derivative is a parabola.
Eigen::Vector4d coefficientsOf(const Veskar::Camera& camera) {
    const auto slope = [&](double angle) {
        return camera.evaluatePolynomDerivativeRadiansToImage(angle);
    };
    return {camera.evaluatePolynomRadiansToImage(0.0), slope(0.0), (slope(1.0) - slope(-1.0)) / 4.0,
            (slope(1.0) + slope(-1.0) - 2.0 * slope(0.0)) / 6.0};
}

}  // namespace

Projection::Projection(const Veskar::Camera& camera)
    : lens(camera),
      radiansToImage(coefficientsOf(camera)),
      pinholeScale(1.0 / std::tan(camera.getFieldOfView()[0])),
      cameraPosition(camera.getPosition()),
      toCamera(camera.getRotation().transpose()) {}

double Projection::imageRadius(double angle) const {
    if (lens.hasBDCEnabled()) {
        return pinholeScale * std::tan(std::min(angle, largestPinholeAngle));
    }
    const Eigen::Vector4d& c = radiansToImage;
    return c[0] + angle * (c[1] + angle * (c[2] + angle * c[3]));
}

Projection::Radius Projection::radiusAt(double angle) const {
    const double radius = imageRadius(angle);
    if (lens.hasBDCEnabled()) {
        const double tangent = radius / pinholeScale;
        const double slope = pinholeScale * (1.0 + tangent * tangent);
        return {radius, slope, 2.0 * tangent * slope};
    }
    const Eigen::Vector4d& c = radiansToImage;
    return {radius, c[1] + angle * (2.0 * c[2] + angle * 3.0 * c[3]),
            2.0 * c[2] + 6.0 * angle * c[3]};
}

ImagePoint Projection::project(const Eigen::Vector3d& point) const {
    Eigen::Vector3d c = toCamera * (point - cameraPosition);
    double s = std::hypot(c[1], c[2]);
    if (s < leastAngle * std::abs(c[0])) {
        c[2] = std::copysign(leastAngle * std::abs(c[0]), c[2]);
        s = std::hypot(c[1], c[2]);
    }
    // The radius rho is a function of the angle a from the optical axis; with g = rho / s the
    // image position is u = -y g and v = z g (times the aspect ratio).
    const double x = c[0];
    const double q = x * x + s * s;
    const Radius rho = radiusAt(std::atan2(s, x));
    const double aS = x / q;
    const double aX = -s / q;
    const double aSS = -2.0 * s * x / (q * q);
    const double aSX = (s * s - x * x) / (q * q);
    const double aXX = -aSS;

    const double g = rho.value / s;
    const double gS = (rho.first * aS - g) / s;
    const double gX = rho.first * aX / s;
    const double gSS = (rho.second * aS * aS + rho.first * aSS - 2.0 * gS) / s;
    const double gSX = (rho.second * aS * aX + rho.first * aSX - gX) / s;
    const double gXX = (rho.second * aX * aX + rho.first * aXX) / s;

    const double sY = c[1] / s;
    const double sZ = c[2] / s;
    const Eigen::Vector3d gradient(gX, gS * sY, gS * sZ);
    Eigen::Matrix3d hessian;
    hessian << gXX, gSX * sY, gSX * sZ,                                        //
        gSX * sY, gSS * sY * sY + gS * sZ * sZ / s, (gSS - gS / s) * sY * sZ,  //
        gSX * sZ, (gSS - gS / s) * sY * sZ, gSS * sZ * sZ + gS * sY * sY / s;

    const double aspect = lens.getAspectRatio();
    const Eigen::Vector3d unitY = Eigen::Vector3d::UnitY();
    const Eigen::Vector3d unitZ = Eigen::Vector3d::UnitZ();
    const auto product = [&](const Eigen::Vector3d& unit, double factor) -> Eigen::Matrix3d {
        return unit * gradient.transpose() + gradient * unit.transpose() + factor * hessian;
    };
    ImagePoint result;
    result.uv = Eigen::Vector2d(-c[1] * g, c[2] * g * aspect) + lens.getSensorOffset();
    result.jacobian.row(0) = -(g * unitY + c[1] * gradient).transpose() * toCamera;
    result.jacobian.row(1) = aspect * (g * unitZ + c[2] * gradient).transpose() * toCamera;
    result.uHessian = -toCamera.transpose() * product(unitY, c[1]) * toCamera;
    result.vHessian = aspect * toCamera.transpose() * product(unitZ, c[2]) * toCamera;
    return result;
}

Eigen::Vector2d Projection::position(const Eigen::Vector3d& point) const {
    const Eigen::Vector3d c = toCamera * (point - cameraPosition);
    const double s = std::max(c.tail<2>().norm(), 1e-12);
    const double g = imageRadius(std::atan2(s, c[0])) / s;
    return Eigen::Vector2d(-c[1] * g, c[2] * g * lens.getAspectRatio()) + lens.getSensorOffset();
}

bool Projection::sees(const Eigen::Vector3d& point) const {
    const bool isAhead = (toCamera * (point - cameraPosition))[0] > 0.0;
    const Eigen::Vector2d uv = position(point);
    // A lens of more than half a turn sees what lies behind it, a pinhole does not.
    return (isAhead || !lens.hasBDCEnabled()) && Veskar::isInsideImage(uv[0], uv[1]);
}

Eigen::Vector3d Projection::ray(double u, double v) const {
    const double dx = u - lens.getSensorOffset()[0];
    const double dy = (v - lens.getSensorOffset()[1]) / lens.getAspectRatio();
    const double r = std::max(std::hypot(dx, dy), 1e-12);
    const double angle = lens.hasBDCEnabled() ? std::atan(r * std::tan(lens.getFieldOfView()[0]))
                                              : lens.evaluatePolynomImageToRadians(r);
    const Eigen::Vector3d inCamera(std::cos(angle), -dx / r * std::sin(angle),
                                   dy / r * std::sin(angle));
    return toCamera.transpose() * inCamera;
}

std::optional<Eigen::Vector2d> Projection::groundPoint(double u, double v, double range) const {
    const double height = cameraPosition[2];
    const double distance = std::sqrt(std::max(range * range - height * height, 0.01));
    const Eigen::Vector3d direction = ray(u, v);
    const auto pointAt = [&](double bearing) -> Eigen::Vector2d {
        return cameraPosition.head<2>() +
               distance * Eigen::Vector2d(std::cos(bearing), std::sin(bearing));
    };
    const auto errorAt = [&](double bearing) {
        const Eigen::Vector2d point = pointAt(bearing);
        return position({point[0], point[1], 0.0})[0] - u;
    };
    // The secant method on u(bearing) along the circle of that range. The ray's own bearing is
    // exact for a point on the ground in row v, so few steps are needed.
    double before = std::atan2(direction[1], direction[0]);
    double errorBefore = errorAt(before);
    double bearing = before + 1e-3;
    for (int step = 0; step < 30; ++step) {
        if (std::abs(errorBefore) < 1e-9) {
            return pointAt(before);
        }
        const double error = errorAt(bearing);
        const double slope = (error - errorBefore) / (bearing - before);
        if (!(std::abs(slope) > 1e-9)) {
            return std::nullopt;
        }
        before = bearing;
        errorBefore = error;
        bearing -= std::clamp(error / slope, -0.3, 0.3);
    }
    return std::nullopt;
}

Eigen::Matrix2d Projection::columnAndRangeJacobian(const Eigen::Vector2d& ground) const {
    const Eigen::Vector3d point(ground[0], ground[1], 0.0);
    const Eigen::Vector3d offset = point - cameraPosition;
    Eigen::Matrix2d jacobian;
    jacobian.row(0) = project(point).jacobian.row(0).head<2>();
    jacobian.row(1) = offset.head<2>().transpose() / offset.norm();
    return jacobian;
}

}  // namespace Workbench
