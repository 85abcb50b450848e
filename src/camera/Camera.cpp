// SPDX-License-Identifier: Apache-2.0
#include <veskar/Camera.h>
#include <veskar/JsonNode.h>

#include "camera/Angle.h"
#include "config/ParseFailure.h"
#include "config/ReadValue.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <stdexcept>
#include <vector>

namespace Veskar {
namespace {

// std::pow rounds the cube once, t * t * t would twice.
double evaluate(const Eigen::Vector4d& c, double t) {
    return c[3] * std::pow(t, 3.0) + c[2] * (t * t) + c[1] * t + c[0];
}

double evaluateDerivative(const Eigen::Vector4d& c, double t) {
    return 2.0 * c[2] * t + 3.0 * c[3] * (t * t) + c[1];
}

/// Reads an array of exactly as many elements as the vector has.
template <typename Vector>
Vector readVector(const JsonNode& node, const std::string& key) {
    const std::vector<JsonNode> elements = node.get(key).asArray();
    Vector vector;
    const auto size = static_cast<std::size_t>(vector.size());
    if (elements.size() != size) {
        throw std::runtime_error("Array of the wrong length: " + key + " has " +
                                 std::to_string(elements.size()) + " elements instead of " +
                                 std::to_string(size));
    }
    for (std::size_t i = 0; i < size; ++i) {
        vector[static_cast<Eigen::Index>(i)] = readValue<typename Vector::Scalar>(elements[i]);
    }
    return vector;
}

Camera readCamera(const JsonNode& node) {
    const bool bdc = node.get("bdc").asBoolean();
    const JsonNode rotation = node.get("rotation");
    const double pitch = rotation.get("pitch").asReal();
    const double yaw = rotation.get("yaw").asReal();
    const double roll = rotation.get("roll").asReal();
    const auto resolution = readVector<Eigen::Vector2i>(node, "resolution");
    const auto sensorOffset = readVector<Eigen::Vector2d>(node, "sensorOffset");
    const auto imageToRadians = readVector<Eigen::Vector4d>(node, "imageToRadiansPolynomial");
    const auto radiansToImage = readVector<Eigen::Vector4d>(node, "radiansToImagePolynomial");
    const auto fieldOfView = readVector<Eigen::Vector2d>(node, "fov");
    const auto position = readVector<Eigen::Vector3d>(node, "position");

    Camera camera(resolution, sensorOffset, imageToRadians, radiansToImage, fieldOfView, bdc);
    camera.setRotation(yaw, pitch, roll);
    camera.setPosition(position[0], position[1], position[2]);
    return camera;
}

}  // namespace

Camera::Camera(const Eigen::Vector2i& imageSize, const Eigen::Vector2d& opticalCentre,
               const Eigen::Vector4d& imageToRadians, const Eigen::Vector4d& radiansToImage,
               const Eigen::Vector2d& halfAngles, bool isPinhole)
    : sensorOffset_(opticalCentre),
      lensPolynomRadiansToImage_(radiansToImage),
      lensPolynomImageToRadians_(imageToRadians),
      fieldOfView_(halfAngles),
      bdc_(isPinhole) {
    setResolution(imageSize[0], imageSize[1]);
    if (!bdc_) {
        const double atRightEdge =
            imageToRadians[0] + imageToRadians[1] + imageToRadians[2] + imageToRadians[3];
        fieldOfView_ = {atRightEdge, evaluatePolynomImageToRadians(1.0 / aspectRatio_)};
    }
}

Camera::~Camera() = default;

Camera Camera::parse(const JsonNode& node) {
    try {
        return readCamera(node);
    } catch (const std::exception& error) {
        logParseFailure(error);
        throw;
    }
}

Camera Camera::parse(const std::string& json) {
    return parse(JsonNode::fromString(json));
}

Eigen::Vector2i Camera::getResolution() const {
    return resolution_;
}

void Camera::setResolution(int width, int height) {
    resolution_ = {width, height};
    aspectRatio_ = static_cast<double>(width) / static_cast<double>(height);
}

Eigen::Vector2d Camera::getSensorOffset() const {
    return sensorOffset_;
}

void Camera::setSensorOffset(double x, double y) {
    sensorOffset_ = {x, y};
}

Eigen::Vector4d Camera::getLensPolynomImageToRadians() const {
    return lensPolynomImageToRadians_;
}

void Camera::setLensPolynomImageToRadians(double c0, double c1, double c2, double c3) {
    lensPolynomImageToRadians_ = {c0, c1, c2, c3};
}

Eigen::Vector2d Camera::getFieldOfView() const {
    return fieldOfView_;
}

double Camera::getAspectRatio() const {
    return aspectRatio_;
}

bool Camera::hasBDCEnabled() const {
    return bdc_;
}

double Camera::evaluatePolynomImageToRadians(double r) const {
    return evaluate(lensPolynomImageToRadians_, r);
}

double Camera::evaluatePolynomDerivativeImageToRadians(double r) const {
    return evaluateDerivative(lensPolynomImageToRadians_, r);
}

double Camera::evaluatePolynomRadiansToImage(double a) const {
    return evaluate(lensPolynomRadiansToImage_, a);
}

double Camera::evaluatePolynomDerivativeRadiansToImage(double a) const {
    return evaluateDerivative(lensPolynomRadiansToImage_, a);
}

Camera::RangeToTarget Camera::getRangeToTarget(double x, double y, double minimumAngle) const {
    const double dx = x - sensorOffset_[0];
    const double dy = (y - sensorOffset_[1]) / aspectRatio_;
    // Not zero, so that the optical centre has a direction too.
    const double r = std::max(std::sqrt(dx * dx + dy * dy), std::numeric_limits<double>::epsilon());
    const double theta =
        bdc_ ? std::atan2(r, 1.0 / std::tan(fieldOfView_[0])) : evaluatePolynomImageToRadians(r);

    // The viewing ray forward, left and up, and its climb in the world.
    const double forward = std::cos(theta);
    const double left = -dx / r * std::sin(theta);
    const double up = dy / r * std::sin(theta);
    const double climb = rotation(2, 0) * forward + rotation(2, 1) * left + rotation(2, 2) * up;

    const double limit = -std::sin(toRadians(minimumAngle));
    const bool clamped = limit < climb;
    return {clamped, -position[2] / (clamped ? limit : climb)};
}

Camera::RangeToTarget Camera::getRangeToTargetUncertainty(double y, double minimumAngle,
                                                          double yStd) const {
    const RangeToTarget moved = getRangeToTarget(0.0, y + yStd * aspectRatio_, minimumAngle);
    const RangeToTarget here = getRangeToTarget(0.0, y, minimumAngle);
    return {moved.clamped, moved.range - here.range};
}

}  // namespace Veskar
