// SPDX-License-Identifier: Apache-2.0
// One track as a sensor reports it, and the base of the fused system track.
#pragma once

#include <veskar/Estimation.h>
#include <veskar/Export.h>
#include <veskar/GeoLocation.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <Eigen/Core>

namespace Veskar {

/// Where a track comes from. The numeric order is the order in which a system track walks its
/// sources.
enum Source : std::int32_t {
    VideoObject = 0,  ///< video object detections; the only source that reports ages and labels
    VideoVura = 1,    ///< the second, motion-based video tracker
    Radar = 2,        ///< radar
    System = 3        ///< a fused system track
};

/// The frame that a track's state is expressed in. The producer of a track chooses it; the library
/// carries it unchanged and never converts. All tracks of one fusion share one frame.
enum CoordinateSystem : std::int32_t {
    Unspecified = 0,     ///< the producer does not say
    GroundPlane = 1,     ///< metres on the ground around the device
    ImagePlaneRange = 2  ///< (u, u rate, v, v rate, range, range rate); the frame of system tracks
};

}  // namespace Veskar

/// A position as seen from the device.
struct SphericalCoordinate {
    double range = 0.0;  ///< metres, along the ground
    /// Degrees, counter-clockwise from the device's right-hand side: 90 lies straight ahead, 180 to
    /// the left. See Dbus::GeoLocation::getPosition.
    double azimuth = 0.0;
    double elevation = 0.0;  ///< degrees; only stored
};

namespace Veskar {

/// A track: a Gaussian estimate with identity, times, labels and image box.
///
/// The host makes one for every report of a sensor, fills the public members that have no setter
/// (`boundingBox`, `probability`, `speed`, `direction`, `coastingTime`) and hands it to
/// FusionModule::cycle by shared pointer. Whoever holds a track that may be a system track asks the
/// virtual getters, never the members: a system track answers from the sensor tracks behind it.
///
/// Times are seconds on the time base of the caller of FusionModule::cycle. No member function
/// reports errors; none is thread-safe.
class VESKAR_EXPORT Track {
public:
    /// An empty track, the base of a system track: zero estimate and times, labels "unknown",
    /// source System, frame ImagePlaneRange, confident.
    ///
    /// @param id the track's id
    explicit Track(int id);

    /// A sensor's report. `time` and `startTime` both become @p time, `startPosition` becomes
    /// (state[0], state[2]); box, coasting time and probability are zero, speed, direction and
    /// location empty, and the track is confident.
    ///
    /// @param state the estimate, see StateVector
    /// @param covariance covariance of @p state
    /// @param time time of the estimate, seconds
    /// @param id the producer's track id, unique within one source
    /// @param source the sensor
    /// @param coordinateSystem the frame of @p state
    /// @param className object class, see Vocabulary.h
    /// @param classProbability probability of @p className
    /// @param colorName colour label
    /// @param colorProbability probability of @p colorName
    /// @param upperClothingColorName colour of upper clothing
    /// @param upperClothingColorProbability probability of @p upperClothingColorName
    /// @param lowerClothingColorName colour of lower clothing
    /// @param lowerClothingColorProbability probability of @p lowerClothingColorName
    Track(const StateVector& state, const StateMatrix& covariance, double time, int id,
          Source source, CoordinateSystem coordinateSystem, const std::string& className,
          double classProbability, const std::string& colorName, double colorProbability,
          const std::string& upperClothingColorName, double upperClothingColorProbability,
          const std::string& lowerClothingColorName, double lowerClothingColorProbability);

    /// Copies every member.
    Track(const Track&) = default;
    /// Copies every member.
    /// @return this track
    Track& operator=(const Track&) = default;

    virtual ~Track();

    /// Moves the estimate to a time with the constant-velocity model: x = F x, P = F P F'. The box
    /// moves with the first two positions and keeps its size.
    ///
    /// @param t the new time, seconds; may lie before `time`
    virtual void predict(double t);

    /// @return `time` - `startTime` in seconds for source VideoObject, otherwise -1
    virtual double getAge() const;
    /// @return probability of the class label
    virtual double getClassProbability() const;
    /// @return ground speed as the sensor reported it, m/s
    virtual std::optional<double> getSpeed() const;
    /// @return direction of motion as the sensor reported it
    virtual std::optional<Eigen::Vector2d> getDirection() const;
    /// @return position as seen from the device
    virtual std::optional<SphericalCoordinate> getLocation() const;
    /// @return geographic position
    virtual std::optional<::Dbus::GeoLocation::Position> getGeoLocation() const;
    /// @return class label
    virtual std::string getClassName() const;
    /// @return colour label
    virtual std::string getColorName() const;
    /// @return probability of the colour label
    virtual double getColorProbability() const;
    /// @return colour label of upper clothing
    virtual std::string getUpperClothingColorName() const;
    /// @return probability of the upper clothing's colour label
    virtual double getUpperClothingColorProbability() const;
    /// @return colour label of lower clothing
    virtual std::string getLowerClothingColorName() const;
    /// @return probability of the lower clothing's colour label
    virtual double getLowerClothingColorProbability() const;

    /// Stores the position as seen from the device and asks the geolocation client for the
    /// geographic one. Without a fix `geoLocation` keeps its previous value.
    ///
    /// @param c range in metres, azimuth in degrees counter-clockwise from the device's right-hand
    ///          side; a sensor that counts clockwise from its forward direction has 90 minus that
    void setLocation(const SphericalCoordinate& c);

    /// Compares the velocities in the plane of the first two positions.
    ///
    /// @param other the track to compare with
    /// @param minimumSpeedSum sum of both speeds above which (strictly) the comparison counts
    /// @return {whether it counts, cosine of the angle between both velocities; 0 when one is zero}
    std::pair<bool, double> velocitySimilarity(const Track& other, double minimumSpeedSum) const;

    /// @return distance of the image position from `startPosition`; 0 when that lies outside the
    ///         image
    double getTravelledDistanceInImagePlane() const;

    /// The Mahalanobis distance of the three positions alone (state indices 0, 2 and 4).
    ///
    /// @param other the track to compare with, in the same frame
    /// @return sqrt(d' S^-1 d); infinite or NaN when S is singular
    double positionStatisticalDistance(const Track& other) const;

    /// The Mahalanobis distance of the whole states, see Veskar::statisticalDistance.
    ///
    /// @param other the track to compare with, in the same frame
    /// @return sqrt(d' S^-1 d); infinite or NaN when S is singular
    double statisticalDistance(const Track& other) const;

    /// How likely both tracks describe one object, see Veskar::logPDF.
    ///
    /// @param other the track to compare with, in the same frame
    /// @return the score; larger is likelier
    double logPdf(const Track& other) const;

    StateVector state;                     ///< the estimate
    StateMatrix covariance;                ///< covariance of `state`
    double time;                           ///< time of the estimate, seconds
    double startTime;                      ///< time of the first report, seconds
    int id;                                ///< the producer's track id
    Source source;                         ///< where the track comes from
    CoordinateSystem coordinateSystem;     ///< frame of `state`
    std::string className;                 ///< object class, see Vocabulary.h
    double classProbability;               ///< probability of `className`
    std::string colorName;                 ///< colour label
    double colorProbability;               ///< probability of `colorName`
    std::string upperClothingColorName;    ///< colour of upper clothing
    double upperClothingColorProbability;  ///< probability of `upperClothingColorName`
    std::string lowerClothingColorName;    ///< colour of lower clothing
    double lowerClothingColorProbability;  ///< probability of `lowerClothingColorName`
    /// Image box [left, width, lower edge, height] on the normalised image plane.
    Eigen::Vector4d boundingBox;
    double coastingTime;  ///< seconds since the sensor last updated the track
    /// Gain of this report for the probability of the system track it supports (a likelihood
    /// ratio, above 0). The producer must set it: the initial 0 makes that probability NaN for
    /// good, and FusionModule::cycle warns of it in the system log.
    double probability;
    std::optional<double> speed;                               ///< ground speed, m/s
    std::optional<Eigen::Vector2d> direction;                  ///< direction of motion
    std::optional<SphericalCoordinate> location;               ///< position as seen from the device
    std::optional<::Dbus::GeoLocation::Position> geoLocation;  ///< geographic position
    Eigen::Vector2d startPosition;  ///< image position (state[0], state[2]) at the start
    bool isConfident;               ///< whether the producer has confirmed the track
};

static_assert(
    alignof(Track) == 16,
    "compile with EIGEN_MAX_ALIGN_BYTES=16: the layout of tracks is part of the interface");

}  // namespace Veskar
