// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Projection.h>
#include <veskar/ImagePlane.h>

#include <algorithm>
#include <cmath>

namespace Veskar::Host {
namespace {

// At smaller angles from the optical axis the derivatives of g = rho / s lose all significant
// digits. They are evaluated at this angle instead, which changes them by less than the angle.
constexpr double leastAngle = 1e-4;

// A pinhole does not see points behind the image plane; limiting the angle keeps the radius finite.
constexpr double largestPinholeAngle = 1.55;

// The camera evaluates this polynomial but does not expose its coefficients. They are recovered
// from its derivative, which is a parabola.
Eigen::Vector4d radiansToImageOf(const Camera& camera) {
    const auto slope = [&](double angle) {
        return camera.evaluatePolynomDerivativeRadiansToImage(angle);
    };
    return {camera.evaluatePolynomRadiansToImage(0.0), slope(0.0), (slope(1.0) - slope(-1.0)) / 4.0,
            (slope(1.0) + slope(-1.0) - 2.0 * slope(0.0)) / 6.0};
}

double evaluate(const Eigen::Vector4d& c, double t) {
    return c[0] + t * (c[1] + t * (c[2] + t * c[3]));
}

// The angle between the optical axis and a point with these offsets from the camera; atan takes
// half as long as atan2.
double angleFromAxis(double beside, double ahead) {
    return ahead > 0.0 ? std::atan(beside / ahead) : std::atan2(beside, ahead);
}

}  // namespace

Projection::Projection(const Camera& camera)
    : lens_(camera),
      isPinhole_(camera.hasBDCEnabled()),
      aspect_(camera.getAspectRatio()),
      centre_(camera.getSensorOffset()),
      radiansToImage_(radiansToImageOf(camera)),
      imageToRadians_(camera.getLensPolynomImageToRadians()),
      pinholeScale_(1.0 / std::tan(camera.getFieldOfView()[0])),
      cameraPosition_(camera.getPosition()),
      toCamera_(camera.getRotation().transpose()) {}

double Projection::imageRadius(double angle) const {
    if (isPinhole_) {
        return pinholeScale_ * std::tan(std::min(angle, largestPinholeAngle));
    }
    return evaluate(radiansToImage_, angle);
}

Projection::Radius Projection::radiusAt(double angle) const {
    const double radius = imageRadius(angle);
    if (isPinhole_) {
        const double tangent = radius / pinholeScale_;
        const double slope = pinholeScale_ * (1.0 + tangent * tangent);
        return {radius, slope, 2.0 * tangent * slope};
    }
    const Eigen::Vector4d& c = radiansToImage_;
    return {radius, c[1] + angle * (2.0 * c[2] + angle * 3.0 * c[3]),
            2.0 * c[2] + 6.0 * angle * c[3]};
}

Projection::LensPoint Projection::look(const Eigen::Vector3d& point) const {
    LensPoint seen;
    Eigen::Vector3d& c = seen.place;
    double& s = seen.s;
    c = toCamera_ * (point - cameraPosition_);
    s = c.tail<2>().norm();
    if (s < leastAngle * std::abs(c[0])) {
        c[2] = std::copysign(leastAngle * std::abs(c[0]), c[2]);
        s = c.tail<2>().norm();
    }
    // The radius rho is a function of the angle a from the optical axis; with g = rho / s the
    // image position is u = -y g and v = z g (times the aspect ratio).
    const double perQ = 1.0 / (c[0] * c[0] + s * s);
    const double perS = 1.0 / s;
    seen.rho = radiusAt(angleFromAxis(s, c[0]));
    seen.aS = c[0] * perQ;
    seen.aX = -s * perQ;
    seen.g = seen.rho.value * perS;
    seen.gS = (seen.rho.first * seen.aS - seen.g) * perS;
    seen.gX = seen.rho.first * seen.aX * perS;
    seen.gradient << seen.gX, seen.gS * c[1] * perS, seen.gS * c[2] * perS;
    return seen;
}

ImageColumn Projection::column(const Eigen::Vector3d& point) const {
    const LensPoint seen = look(point);
    return {-seen.place[1] * seen.g + centre_[0],
            -(seen.g * Eigen::Vector3d::UnitY() + seen.place[1] * seen.gradient).transpose() *
                toCamera_};
}

ImageMotion Projection::project(const Eigen::Vector3d& point,
                                const Eigen::Vector3d& velocity) const {
    const LensPoint seen = look(point);
    const Eigen::Vector3d& c = seen.place;
    const Radius& rho = seen.rho;
    const double g = seen.g;
    const double perS = 1.0 / seen.s;
    // Second derivatives of the angle; that by x twice is the negative of that by s twice.
    const double perQ = 1.0 / (c[0] * c[0] + seen.s * seen.s);
    const double aSS = -2.0 * seen.s * c[0] * perQ * perQ;
    const double aSX = (seen.s * seen.s - c[0] * c[0]) * perQ * perQ;
    const double gSS = (rho.second * seen.aS * seen.aS + rho.first * aSS - 2.0 * seen.gS) * perS;
    const double gSX = (rho.second * seen.aS * seen.aX + rho.first * aSX - seen.gX) * perS;
    const double gXX = (rho.second * seen.aX * seen.aX - rho.first * aSS) * perS;

    const double sY = c[1] * perS;
    const double sZ = c[2] * perS;
    const double gAcross = seen.gS * perS;
    const double gYZ = (gSS - gAcross) * sY * sZ;
    Eigen::Matrix3d hessian;
    hessian << gXX, gSX * sY, gSX * sZ,                    //
        gSX * sY, gSS * sY * sY + gAcross * sZ * sZ, gYZ,  //
        gSX * sZ, gYZ, gSS * sZ * sZ + gAcross * sY * sY;

    // The product of a coordinate with g: its gradient, and the time derivative of that gradient.
    const Eigen::Vector3d motion = toCamera_ * velocity;
    const double gRate = seen.gradient.dot(motion);
    const Eigen::Vector3d gradientRate = hessian * motion;
    const auto gradientOf = [&](int axis) -> Eigen::Vector3d {
        return g * Eigen::Vector3d::Unit(axis) + c[axis] * seen.gradient;
    };
    const auto gradientRateOf = [&](int axis) -> Eigen::Vector3d {
        return gRate * Eigen::Vector3d::Unit(axis) + motion[axis] * seen.gradient +
               c[axis] * gradientRate;
    };
    ImageMotion result;
    result.uv = Eigen::Vector2d(-c[1] * g, c[2] * g * aspect_) + centre_;
    result.jacobian.row(0) = -gradientOf(1).transpose() * toCamera_;
    result.jacobian.row(1) = aspect_ * gradientOf(2).transpose() * toCamera_;
    result.rate = result.jacobian * velocity;
    result.rateJacobian.row(0) = -gradientRateOf(1).transpose() * toCamera_;
    result.rateJacobian.row(1) = aspect_ * gradientRateOf(2).transpose() * toCamera_;
    return result;
}

Eigen::Vector2d Projection::position(const Eigen::Vector3d& point) const {
    const Eigen::Vector3d c = toCamera_ * (point - cameraPosition_);
    const double s = std::max(c.tail<2>().norm(), 1e-12);
    const double g = imageRadius(angleFromAxis(s, c[0])) / s;
    return Eigen::Vector2d(-c[1] * g, c[2] * g * aspect_) + centre_;
}

bool Projection::sees(const Eigen::Vector3d& point) const {
    const bool isAhead = (toCamera_ * (point - cameraPosition_))[0] > 0.0;
    const Eigen::Vector2d uv = position(point);
    // A lens with a field of view above 180 degrees sees points behind it, a pinhole does not.
    return (isAhead || !isPinhole_) && isInsideImage(uv[0], uv[1]);
}

Eigen::Vector3d Projection::ray(double u, double v) const {
    const double dx = u - centre_[0];
    const double dy = (v - centre_[1]) / aspect_;
    const double r = std::max(std::sqrt(dx * dx + dy * dy), 1e-12);
    const double angle = isPinhole_ ? std::atan(r / pinholeScale_) : evaluate(imageToRadians_, r);
    const Eigen::Vector3d inCamera(std::cos(angle), -dx / r * std::sin(angle),
                                   dy / r * std::sin(angle));
    return toCamera_.transpose() * inCamera;
}

std::optional<Projection::GroundPoint> Projection::groundPoint(double u, double v,
                                                               double range) const {
    const double height = cameraPosition_[2];
    const double distance = std::sqrt(std::max(range * range - height * height, 0.01));
    // Newton's method for the bearing on the circle of that range. The bearing of the viewing ray
    // is exact for a ground point in row v, so few steps are needed.
    Eigen::Vector2d bearing = ray(u, v).head<2>().normalized();
    for (int step = 0; step < 30; ++step) {
        const Eigen::Vector2d across(-bearing[1], bearing[0]);
        const Eigen::Vector2d point = cameraPosition_.head<2>() + distance * bearing;
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

}  // namespace Veskar::Host
