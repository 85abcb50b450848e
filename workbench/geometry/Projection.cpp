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

Projection::LensPoint Projection::look(const Eigen::Vector3d& point) const {
    LensPoint seen;
    Eigen::Vector3d& c = seen.place;
    double& s = seen.s;
    c = toCamera * (point - cameraPosition);
    s = c.tail<2>().norm();
    if (s < leastAngle * std::abs(c[0])) {
        c[2] = std::copysign(leastAngle * std::abs(c[0]), c[2]);
        s = c.tail<2>().norm();
    }
    // The radius rho is a function of the angle a from the optical axis; with g = rho / s the
    // image position is u = -y g and v = z g (times the aspect ratio).
    const double q = c[0] * c[0] + s * s;
    seen.rho = radiusAt(std::atan2(s, c[0]));
    seen.aS = c[0] / q;
    seen.aX = -s / q;
    seen.g = seen.rho.value / s;
    seen.gS = (seen.rho.first * seen.aS - seen.g) / s;
    seen.gX = seen.rho.first * seen.aX / s;
    seen.gradient << seen.gX, seen.gS * c[1] / s, seen.gS * c[2] / s;
    return seen;
}

ImageColumn Projection::column(const Eigen::Vector3d& point) const {
    const LensPoint seen = look(point);
    return {-seen.place[1] * seen.g + lens.getSensorOffset()[0],
            -(seen.g * Eigen::Vector3d::UnitY() + seen.place[1] * seen.gradient).transpose() *
                toCamera};
}

ImagePoint Projection::project(const Eigen::Vector3d& point) const {
    const LensPoint seen = look(point);
    const auto& [c, s, rho, aS, aX, g, gS, gX, gradient] = seen;
    const double x = c[0];
    const double q = x * x + s * s;
    const double aSS = -2.0 * s * x / (q * q);
    const double aSX = (s * s - x * x) / (q * q);
    const double aXX = -aSS;
    const double gSS = (rho.second * aS * aS + rho.first * aSS - 2.0 * gS) / s;
    const double gSX = (rho.second * aS * aX + rho.first * aSX - gX) / s;
    const double gXX = (rho.second * aX * aX + rho.first * aXX) / s;

    const double sY = c[1] / s;
    const double sZ = c[2] / s;
    Eigen::Matrix3d hessian;
    hessian << gXX, gSX * sY, gSX * sZ,                                        //
        gSX * sY, gSS * sY * sY + gS * sZ * sZ / s, (gSS - gS / s) * sY * sZ,  //
        gSX * sZ, (gSS - gS / s) * sY * sZ, gSS * sZ * sZ + gS * sY * sY / s;

    const double aspect = lens.getAspectRatio();
    const Eigen::Vector3d unitY = Eigen::Vector3d::UnitY();
    const Eigen::Vector3d unitZ = Eigen::Vector3d::UnitZ();
    const auto product = [&](const Eigen::Vector3d& unit, double factor) -> Eigen::Matrix3d {
        return unit * seen.gradient.transpose() + seen.gradient * unit.transpose() +
               factor * hessian;
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
    const double r = std::max(std::sqrt(dx * dx + dy * dy), 1e-12);
    const double angle = lens.hasBDCEnabled() ? std::atan(r * std::tan(lens.getFieldOfView()[0]))
                                              : lens.evaluatePolynomImageToRadians(r);
    const Eigen::Vector3d inCamera(std::cos(angle), -dx / r * std::sin(angle),
                                   dy / r * std::sin(angle));
    return toCamera.transpose() * inCamera;
}

std::optional<Projection::GroundPoint> Projection::groundPoint(double u, double v,
                                                               double range) const {
    const double height = cameraPosition[2];
    const double distance = std::sqrt(std::max(range * range - height * height, 0.01));
    // Newton's method on u(bearing) along the circle of that range. The ray's own bearing is exact
    // for a point on the ground in row v, so few steps are needed.
    Eigen::Vector2d bearing = ray(u, v).head<2>().normalized();
    for (int step = 0; step < 30; ++step) {
        const Eigen::Vector2d across(-bearing[1], bearing[0]);
        const Eigen::Vector2d point = cameraPosition.head<2>() + distance * bearing;
        const ImageColumn seen = column({point[0], point[1], 0.0});
        const double error = seen.u - u;
        if (std::abs(error) < 1e-9) {
            GroundPoint found{point, {}};
            const double slant = std::sqrt(distance * distance + height * height);
            found.jacobian << seen.gradient.head<2>(), distance / slant * bearing.transpose();
            return found;
        }
        const double slope = distance * seen.gradient.head<2>().dot(across);
        if (!(std::abs(slope) > 1e-9)) {
            return std::nullopt;
        }
        bearing = (bearing - std::clamp(error / slope, -0.3, 0.3) * across).normalized();
    }
    return std::nullopt;
}

}  // namespace Workbench
