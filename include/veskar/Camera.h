// SPDX-License-Identifier: Apache-2.0
// The video sensor: lens, image size and mounting, and the range to what stands on the ground.
#pragma once

#include <veskar/Export.h>
#include <veskar/Sensor.h>

#include <string>

#include <Eigen/Core>

namespace Veskar {

class JsonNode;

/// A camera with a radial lens, given as two cubic polynomials between the image radius and the
/// angle from the optical centre line, or as a pinhole ("BDC") by its field of view.
///
/// Image positions are on the normalised image plane (-1..1, right and up). The radius is measured
/// in units of half the image width. In the camera's frame the first axis looks forward, the second
/// to the left, the third up. A value; const member functions may run concurrently.
class VESKAR_EXPORT Camera : public Sensor {
public:
    /// A distance along a viewing ray.
    struct RangeToTarget {
        bool clamped;  ///< the ray was less steep than the minimum angle, which was used instead
        double range;  ///< metres (or the unit of the mounting position)
    };

    /// A camera at the origin without rotation.
    ///
    /// @param imageSize width and height in pixels
    /// @param opticalCentre optical centre on the normalised image plane
    /// @param imageToRadians coefficients c0..c3 of the polynomial from radius to angle, radians
    /// @param radiansToImage coefficients c0..c3 of the polynomial from angle, radians, to radius
    /// @param halfAngles field of view: horizontal and vertical half-angles in radians; without
    ///                   @p isPinhole they are replaced by what the lens polynomial says
    /// @param isPinhole true: pinhole; false: lens polynomials
    Camera(const Eigen::Vector2i& imageSize, const Eigen::Vector2d& opticalCentre,
           const Eigen::Vector4d& imageToRadians, const Eigen::Vector4d& radiansToImage,
           const Eigen::Vector2d& halfAngles, bool isPinhole);
    ~Camera() override;
    /// Copies every property.
    Camera(const Camera&) = default;
    /// Copies every property.
    /// @return this camera
    Camera& operator=(const Camera&) = default;

    /// Builds a camera from its JSON object (see docs/configuration.md).
    ///
    /// @param node the object
    /// @return the camera
    /// @throw std::runtime_error what is missing or of the wrong type or length; also logged at
    ///        error priority
    static Camera parse(const JsonNode& node);
    /// Builds a camera from JSON text.
    ///
    /// @param json the text
    /// @return the camera
    /// @throw std::runtime_error as parse(const JsonNode&), or "Failed to load json from string: "
    ///        with text and reason, which is not logged
    static Camera parse(const std::string& json);

    /// @return width and height in pixels
    Eigen::Vector2i getResolution() const;
    /// Also updates the aspect ratio, but not a field of view derived from the lens.
    /// @param width pixels
    /// @param height pixels
    void setResolution(int width, int height);
    /// @return optical centre on the normalised image plane
    Eigen::Vector2d getSensorOffset() const;
    /// @param x first coordinate of the optical centre
    /// @param y second coordinate of the optical centre
    void setSensorOffset(double x, double y);
    /// @return coefficients c0..c3 of the polynomial from radius to angle
    Eigen::Vector4d getLensPolynomImageToRadians() const;
    /// @param c0 constant coefficient, radians
    /// @param c1 linear coefficient
    /// @param c2 quadratic coefficient
    /// @param c3 cubic coefficient
    void setLensPolynomImageToRadians(double c0, double c1, double c2, double c3);
    /// @return horizontal and vertical half-angles in radians
    Eigen::Vector2d getFieldOfView() const;
    /// @return width divided by height
    double getAspectRatio() const;
    /// @return whether the pinhole model is in use
    bool hasBDCEnabled() const;

    /// @param r image radius
    /// @return angle from the optical centre line, radians
    double evaluatePolynomImageToRadians(double r) const;
    /// @param r image radius
    /// @return derivative of the angle by the radius
    double evaluatePolynomDerivativeImageToRadians(double r) const;
    /// @param a angle from the optical centre line, radians
    /// @return image radius
    double evaluatePolynomRadiansToImage(double a) const;
    /// @param a angle from the optical centre line, radians
    /// @return derivative of the radius by the angle
    double evaluatePolynomDerivativeRadiansToImage(double a) const;

    /// The distance along the viewing ray from the camera to the ground plane.
    ///
    /// Never fails: a ray that is less steep than the minimum angle, or that points upward, is
    /// treated as one at that angle.
    ///
    /// @param x first image coordinate
    /// @param y second image coordinate
    /// @param minimumAngle degrees below the horizon
    /// @return the range; 0 when the camera has no height
    RangeToTarget getRangeToTarget(double x, double y, double minimumAngle) const;

    /// How much the range changes when the image position moves up, in the image's centre column.
    ///
    /// @param y second image coordinate
    /// @param minimumAngle degrees below the horizon
    /// @param yStd move, multiplied by the aspect ratio before it is added to @p y
    /// @return the signed difference of the moved range and the range at @p y, and whether the
    ///         moved one was clamped
    RangeToTarget getRangeToTargetUncertainty(double y, double minimumAngle, double yStd) const;

private:
    Eigen::Vector2i resolution_;
    Eigen::Vector2d sensorOffset_;
    Eigen::Vector4d lensPolynomRadiansToImage_;
    Eigen::Vector4d lensPolynomImageToRadians_;
    Eigen::Vector2d fieldOfView_;
    bool bdc_;
    double aspectRatio_;
};

}  // namespace Veskar
