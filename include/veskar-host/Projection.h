// SPDX-License-Identifier: Apache-2.0
// Projection from the ground into the image and back.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar/Camera.h>

#include <optional>

#include <Eigen/Core>

namespace Veskar::Host {

/// An angle in radians.
/// @param degrees the angle in degrees
/// @return the angle in radians
constexpr double radians(double degrees) {
    return degrees * 3.14159265358979323846 / 180.0;
}

/// An angle in degrees.
/// @param radians the angle in radians
/// @return the angle in degrees
constexpr double degrees(double radians) {
    return radians * 180.0 / 3.14159265358979323846;
}

/// Image position and rate of a moving point of the device frame, with their derivatives with
/// respect to the point: what the first-order propagation of a position with velocity needs.
struct ImageMotion {
    Eigen::Vector2d uv;                    ///< normalised image plane; not limited to the image
    Eigen::Vector2d rate;                  ///< u', v', 1/s
    Eigen::Matrix<double, 2, 3> jacobian;  ///< d(u, v) / d(x, y, z), 1/m; d(u', v') / d velocity
    Eigen::Matrix<double, 2, 3> rateJacobian;  ///< d(u', v') / d(x, y, z), 1/(m s)
};

/// Image column of a point of the device frame.
struct ImageColumn {
    double u;                     ///< normalised image plane; not limited to the image
    Eigen::RowVector3d gradient;  ///< du / d(x, y, z), 1/m
};

/// The inverse of the camera's viewing rays: the lens's angle-to-radius polynomial (or the
/// pinhole) applied to points of the device's frame (x forward, y left, z up, metres). Never
/// changes once it is made: several threads may use one.
class VESKAR_HOST_EXPORT Projection {
public:
    /// @param camera copied
    explicit Projection(const Camera& camera);

    /// @param point device frame, m
    /// @param velocity of the point, m/s
    /// @return its image position and rate with derivatives
    ImageMotion project(const Eigen::Vector3d& point, const Eigen::Vector3d& velocity) const;
    /// @param point device frame, m
    /// @return its image column with first derivatives
    ImageColumn column(const Eigen::Vector3d& point) const;
    /// @param point device frame, m
    /// @return its image position without derivatives
    Eigen::Vector2d position(const Eigen::Vector3d& point) const;
    /// @param point device frame, m
    /// @return whether it lies in front of the camera and inside the image
    bool sees(const Eigen::Vector3d& point) const;

    /// A ground point with the derivatives of image column and slant range.
    struct GroundPoint {
        Eigen::Vector2d position;  ///< device frame, m
        Eigen::Matrix2d jacobian;  ///< d(u, slant range) / d(x, y)
    };

    /// The ground point at a given distance from the camera that appears in a given image column.
    ///
    /// @param u image column
    /// @param v image row, start of the search
    /// @param range slant distance from the camera, m; raised to the camera's height if less
    /// @return the point; nothing when no such point is found
    std::optional<GroundPoint> groundPoint(double u, double v, double range) const;

    /// @param u image column
    /// @param v image row
    /// @return unit viewing ray in the device's frame
    Eigen::Vector3d ray(double u, double v) const;

    /// @return the camera
    const Camera& camera() const { return lens_; }
    /// @return the camera's position, device frame, m
    const Eigen::Vector3d& origin() const { return cameraPosition_; }

private:
    struct Radius {
        double value;   ///< image radius
        double first;   ///< first derivative with respect to the angle
        double second;  ///< second derivative with respect to the angle
    };
    // A point in the camera's frame and its scale factor g from lateral offset (m) to image
    // position.
    struct LensPoint {
        Eigen::Vector3d place;     ///< position, camera frame, m
        double s;                  ///< distance from the optical axis, m
        Radius rho;                ///< image radius
        double aS, aX;             ///< derivatives of the angle with respect to s and x
        double g;                  ///< image radius over s
        double gS, gX;             ///< derivatives of g with respect to s and x
        Eigen::Vector3d gradient;  ///< of g, camera frame
    };
    LensPoint look(const Eigen::Vector3d& point) const;
    Radius radiusAt(double angle) const;
    double imageRadius(double angle) const;

    Camera lens_;
    // Properties of the camera, read once instead of per point.
    bool isPinhole_;
    double aspect_;                   ///< width over height
    Eigen::Vector2d centre_;          ///< optical centre in the image
    Eigen::Vector4d radiansToImage_;  ///< c0..c3
    Eigen::Vector4d imageToRadians_;  ///< c0..c3
    double pinholeScale_;             ///< image radius divided by the tangent of the angle
    Eigen::Vector3d cameraPosition_;
    Eigen::Matrix3d toCamera_;
};

}  // namespace Veskar::Host
