// SPDX-License-Identifier: Apache-2.0
// What a recording holds: the installation and, frame by frame, what each sensor reported.
// docs/recording-format.md describes the text form.
#pragma once

#include <veskar/Camera.h>
#include <veskar/Estimation.h>
#include <veskar/Track.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// Where a sensor is mounted. The device's frame: x forward, y to the left, z up, metres, origin on
/// the ground below the device.
struct Mounting {
    Eigen::Vector3d position = Eigen::Vector3d::Zero();  ///< metres; the third is the height
    double yaw = 0.0;                                    ///< degrees to the left
    double pitch = 0.0;                                  ///< degrees downward
    double roll = 0.0;                                   ///< degrees, right side down

    /// @return rotation from the sensor's frame to the device's
    Eigen::Matrix3d rotation() const;
};

/// The camera of an installation, as its JSON object states it (see Veskar::Camera::parse).
struct CameraSetup {
    Mounting mounting;                                         ///< pose
    bool bdc = false;                                          ///< pinhole instead of lens
    std::array<int, 2> resolution{1920, 1080};                 ///< pixels
    Eigen::Vector2d sensorOffset = Eigen::Vector2d::Zero();    ///< optical centre
    Eigen::Vector4d imageToRadians = Eigen::Vector4d::Zero();  ///< lens polynomial
    Eigen::Vector4d radiansToImage = Eigen::Vector4d::Zero();  ///< its inverse
    Eigen::Vector2d fieldOfView = Eigen::Vector2d::Zero();     ///< half-angles, radians

    /// @return the library's camera
    Veskar::Camera build() const;
};

/// The radar of an installation: pose and the noise of its tracks.
struct RadarSetup {
    Mounting mounting;            ///< pose
    double rangeStd = 0.3;        ///< standard deviation of the range, m
    double azimuthStd = 1.0;      ///< standard deviation of the azimuth, degrees
    double velocityStd = 0.5;     ///< standard deviation of each velocity component, m/s
    double fieldOfView = 120.0;   ///< full horizontal angle, degrees
    double maximumRange = 150.0;  ///< m
};

/// Where on Earth the device stands.
struct Site {
    double latitude = 0.0;   ///< degrees, north positive
    double longitude = 0.0;  ///< degrees, east positive
    double heading = 0.0;    ///< degrees clockwise from north, of the device's x axis
};

/// What the truth lines of a recording cover.
enum class TruthKind {
    None,        ///< there are none
    Incomplete,  ///< some of the objects that the sensors see: nothing follows from extra tracks
    Complete     ///< every object
};

/// The first line of a recording.
struct RecordingHeader {
    std::string name;                   ///< short name
    std::string origin;                 ///< where the data comes from
    std::string licence;                ///< under which terms
    CameraSetup camera;                 ///< the video sensor
    RadarSetup radar;                   ///< the radar
    std::optional<Site> site;           ///< where the device stands, when known
    std::optional<double> epoch;        ///< UNIX time of time 0, when known
    std::optional<std::uint64_t> seed;  ///< of a simulation
    TruthKind truth = TruthKind::None;  ///< what the truth lines cover
};

/// A box on the normalised image plane (-1..1, right and up).
struct ImageBox {
    double left = 0.0;
    double bottom = 0.0;
    double right = 0.0;
    double top = 0.0;
};

/// A word and how probable it is (0..1).
struct Label {
    std::string name = "unknown";
    double probability = 0.0;
};

/// What an analytics may say about an object beside where it is.
struct Labels {
    Label objectClass;
    Label color;
    Label upperClothingColor;
    Label lowerClothingColor;
};

/// What all forms of a report share.
struct ReportBase {
    std::int32_t id = 0;    ///< the sensor's track id, unique within a frame
    double coasting = 0.0;  ///< seconds since the sensor last saw the object
    bool confirmed = true;  ///< whether the sensor's tracker has confirmed the track
};

/// A track of the video analytics in its own terms.
struct VideoReport : ReportBase {
    ImageBox box;                             ///< the object stands on the middle of its lower edge
    std::optional<Eigen::Vector2d> velocity;  ///< of that point, 1/s
    double age = 0.0;                         ///< seconds since the track's first report
    Labels labels;                            ///< class and colours
};

/// A track of the radar in its own terms. Without `speed` and `direction` the radial speed counts.
struct RadarReport : ReportBase {
    double range = 0.0;                 ///< slant distance from the radar, m
    double azimuth = 0.0;               ///< degrees clockwise from the radar's forward direction
    std::optional<double> speed;        ///< over ground, m/s
    std::optional<double> direction;    ///< of motion, degrees clockwise from forward
    std::optional<double> radialSpeed;  ///< m/s, positive away from the radar
    Label objectClass;                  ///< "unknown" when the radar does not classify
};

/// A track that its producer has already expressed in the fusion frame.
struct ReadyEstimate : ReportBase {
    Veskar::StateVector state = Veskar::StateVector::Zero();       ///< u, u', v, v', range, range'
    Veskar::StateMatrix covariance = Veskar::StateMatrix::Zero();  ///< of `state`
    std::optional<ImageBox> box;                                   ///< image box
    Labels labels;                                                 ///< class and colours
};

/// A track as it was reported, in one of its forms.
using Report = std::variant<VideoReport, RadarReport, ReadyEstimate>;

/// @param report a report in any form
/// @return what all forms share
const ReportBase& baseOf(const Report& report);

/// One frame of one sensor.
struct SensorFrame {
    Veskar::Source source = Veskar::VideoObject;  ///< VideoObject or Radar
    double time = 0.0;                            ///< of the measurement, seconds
    double received = 0.0;                        ///< when the host got it, seconds; not before
                                                  ///< lines further up
    std::vector<Report> tracks;                   ///< may be empty
};

/// One object as it really was. Its place is the point of its footprint nearest to the device.
struct TruthObject {
    std::int32_t id = 0;                    ///< of the object
    std::string className = "unknown";      ///< see Vocabulary.h
    Eigen::Vector2d position{0.0, 0.0};     ///< the reference point, device frame, m
    Eigen::Vector2d velocity{0.0, 0.0};     ///< device frame, m/s
    std::optional<Eigen::Vector3d> size;    ///< length, width, height, m
    std::optional<Eigen::Vector2d> centre;  ///< centre of the footprint, device frame, m
    bool inVideo = true;                    ///< inside the camera's field of view
    bool inRadar = true;                    ///< inside the radar's field of view
};

/// All objects at one time.
struct TruthFrame {
    double time = 0.0;                 ///< seconds
    std::vector<TruthObject> objects;  ///< may be empty
};

/// A line of a recording after the first.
using RecordingLine = std::variant<SensorFrame, TruthFrame>;

/// The name that recordings give a source.
/// @param source a source
/// @return "video", "radar" or "other"
const char* sourceName(Veskar::Source source);

/// Version of the recording format that this program reads and writes.
constexpr int recordingVersion = 1;

}  // namespace Workbench
