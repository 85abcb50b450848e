// SPDX-License-Identifier: Apache-2.0
#include <veskar/ImagePlane.h>
#include <veskar/Track.h>
#include <veskar/Vocabulary.h>

#include "arithmetic/Unroll.h"
#include "track/OrderedSum.h"

#include <cmath>
#include <limits>

#include <Eigen/Geometry>

namespace Veskar {
namespace {

/// The velocity in the plane of the first two positions.
Eigen::Vector2d planarVelocity(const StateVector& x) {
    return {x[1], x[3]};
}

/// The first two positions: (u, v) in the image-plane frame.
Eigen::Vector2d imagePosition(const StateVector& x) {
    return {x[0], x[2]};
}

/// The three positions, every other component of a state.
auto positions(const StateVector& x) {
    return Eigen::Map<const Eigen::Vector3d, Eigen::Unaligned, Eigen::InnerStride<2>>(x.data());
}

/// Their covariance, every other row and column.
auto positions(const StateMatrix& P) {
    return Eigen::Map<const Eigen::Matrix3d, Eigen::Unaligned, Eigen::Stride<12, 2>>(P.data());
}

/// x = F x and P = F P F' with F = constantVelocity(dt), which adds dt times the rates' rows to the
/// rows of the first two positions, and does the same to the columns. The sums are written such
/// that a symmetric P stays symmetric to the last bit.
void predictFinite(StateVector& x, StateMatrix& P, double dt) {
    unroll<2>([&](auto column) {
        constexpr Eigen::Index j = 2 * column;
        x[j] += dt * x[j + 1];
        unroll<2>([&](auto row) {
            constexpr Eigen::Index i = 2 * row;
            const double rates = dt * P(i + 1, j + 1);
            P(i, j) += dt * (P(i + 1, j) + P(i, j + 1) + rates);
            P(i + 1, j) += rates;
            P(i, j + 1) += rates;
        });
        P.col(j).tail<2>() += dt * P.col(j + 1).tail<2>();
        P(j, 4) += dt * P(j + 1, 4);
        P(j, 5) += dt * P(j + 1, 5);
    });
}

/// Cofactors divided by the determinant; a singular S gives values that are not finite.
Eigen::Matrix3d inverse(const Eigen::Matrix3d& S) {
    Eigen::Matrix3d cofactors;
    cofactors.col(0) = S.col(1).cross(S.col(2));
    cofactors.col(1) = S.col(2).cross(S.col(0));
    cofactors.col(2) = S.col(0).cross(S.col(1));
    const double determinant = orderedDot<3>(S.col(0), cofactors.col(0));
    return (cofactors * (1.0 / determinant)).transpose();
}

}  // namespace

// The parameters of the constructors are named for the members that they fill.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"

Track::Track(int id)
    : Track(StateVector::Zero(), StateMatrix::Zero(), 0.0, id, Source::System,
            CoordinateSystem::ImagePlaneRange, Vocabulary::unknown, 0.0, Vocabulary::unknown, 0.0,
            Vocabulary::unknown, 0.0, Vocabulary::unknown, 0.0) {}

Track::Track(const StateVector& state, const StateMatrix& covariance, double time, int id,
             Source source, CoordinateSystem coordinateSystem, const std::string& className,
             double classProbability, const std::string& colorName, double colorProbability,
             const std::string& upperClothingColorName, double upperClothingColorProbability,
             const std::string& lowerClothingColorName, double lowerClothingColorProbability)
    : state(state),
      covariance(covariance),
      time(time),
      startTime(time),
      id(id),
      source(source),
      coordinateSystem(coordinateSystem),
      className(className),
      classProbability(classProbability),
      colorName(colorName),
      colorProbability(colorProbability),
      upperClothingColorName(upperClothingColorName),
      upperClothingColorProbability(upperClothingColorProbability),
      lowerClothingColorName(lowerClothingColorName),
      lowerClothingColorProbability(lowerClothingColorProbability),
      boundingBox(Eigen::Vector4d::Zero()),
      coastingTime(0.0),
      probability(0.0),
      startPosition(imagePosition(state)),
      isConfident(true) {}

#pragma GCC diagnostic pop

Track::~Track() = default;

void Track::predict(double t) {
    const double dt = t - time;
    const Eigen::Vector2d before = imagePosition(state);

    if (std::isfinite(state.sum() + covariance.sum())) {
        predictFinite(state, covariance, dt);
    } else {
        // Zero times NaN or infinity is NaN: here the zeros of F count.
        const StateMatrix F = constantVelocity(dt);
        state = F * state;
        covariance = F * covariance * F.transpose();
    }

    const Eigen::Vector2d motion = imagePosition(state) - before;
    boundingBox[0] += motion[0];
    boundingBox[2] += motion[1];
    time = t;
}

double Track::getAge() const {
    return source == Source::VideoObject ? time - startTime : -1.0;
}

double Track::getClassProbability() const {
    return classProbability;
}

std::optional<double> Track::getSpeed() const {
    return speed;
}

std::optional<Eigen::Vector2d> Track::getDirection() const {
    return direction;
}

std::optional<SphericalCoordinate> Track::getLocation() const {
    return location;
}

std::optional<::Dbus::GeoLocation::Position> Track::getGeoLocation() const {
    return geoLocation;
}

std::string Track::getClassName() const {
    return className;
}

std::string Track::getColorName() const {
    return colorName;
}

double Track::getColorProbability() const {
    return colorProbability;
}

std::string Track::getUpperClothingColorName() const {
    return upperClothingColorName;
}

double Track::getUpperClothingColorProbability() const {
    return upperClothingColorProbability;
}

std::string Track::getLowerClothingColorName() const {
    return lowerClothingColorName;
}

double Track::getLowerClothingColorProbability() const {
    return lowerClothingColorProbability;
}

std::pair<bool, double> Track::velocitySimilarity(const Track& other,
                                                  double minimumSpeedSum) const {
    const Eigen::Vector2d a = planarVelocity(state);
    const Eigen::Vector2d b = planarVelocity(other.state);
    const double speedA = a.norm();
    const double speedB = b.norm();
    // Keeps a velocity of zero from dividing by zero.
    constexpr double epsilon = std::numeric_limits<double>::epsilon();
    return {speedA + speedB > minimumSpeedSum, a.dot(b) / (speedA * speedB + epsilon)};
}

double Track::getTravelledDistanceInImagePlane() const {
    return isInsideImage(startPosition[0], startPosition[1])
               ? (imagePosition(state) - startPosition).norm()
               : 0.0;
}

double Track::positionStatisticalDistance(const Track& other) const {
    const Eigen::Vector3d d = positions(state) - positions(other.state);
    const Eigen::Matrix3d S = positions(covariance) + positions(other.covariance);
    // In closed form: every pair of every cost matrix asks for this.
    return std::sqrt(orderedDot(d, orderedProduct(inverse(S), d)));
}

double Track::statisticalDistance(const Track& other) const {
    return Veskar::statisticalDistance(state, covariance, other.state, other.covariance);
}

double Track::logPdf(const Track& other) const {
    return logPDF(state, covariance, other.state, other.covariance);
}

}  // namespace Veskar
