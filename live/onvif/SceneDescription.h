// SPDX-License-Identifier: Apache-2.0
// What the fusion can use of an ONVIF scene description, and can say with one.
//
// Positions in the image stand in the coordinates of the document; together, the transformations of
// frame and object lead to the normalised image plane (-1..1, x to the right, y upward). Positions
// and directions in space are those of the device that sent the description: x to the right, y away
// from it, z upward. Angles are in degrees, lengths in metres, speeds in m/s.
#pragma once

#include <veskar-host/ImageBox.h>

#include "live/onvif/Transformation.h"
#include "live/onvif/UtcTime.h"

#include <array>
#include <optional>
#include <string>
#include <vector>

#include <Eigen/Core>

namespace Veskar::Live {

/// Identifies an object in a stream. At least one of both is there.
struct ObjectName {
    std::string id;    ///< ObjectId: an integer of any length in its shortest spelling, or text
    std::string uuid;  ///< UUID: the same in the streams of several modules
};

/// @param a a name
/// @param b another one
/// @return whether both are equal in all parts
inline bool operator==(const ObjectName& a, const ObjectName& b) {
    return a.id == b.id && a.uuid == b.uuid;
}

/// A word with its likelihood, 0 to 1.
struct Candidate {
    std::string word;
    double likelihood = 1.0;
};

/// The colour spaces that have a defined meaning.
enum class ColorSpace {
    YCbCr,   ///< of JPEG: Y 0..255, Cb and Cr around 128
    Rgb,     ///< sRGB, 0..255
    CieLab,  ///< L* 0..100, a*, b*; deprecated
    Other    ///< any other one
};

/// A representative colour of an object.
struct ColorCluster {
    ColorSpace space = ColorSpace::YCbCr;
    std::array<double, 3> value{};     ///< X, Y, Z of the document
    std::optional<double> weight;      ///< fraction of the object's pixels, 0 to 1
    std::optional<double> likelihood;  ///< instead: that this is the object's colour, 0 to 1
};

/// Where an object is in the image, in the coordinates of the document.
struct Shape {
    std::optional<Host::ImageBox> box;                   ///< BoundingBox; bottom may be above top
    std::optional<Eigen::Vector2d> centre;               ///< CenterOfGravity
    std::vector<std::vector<Eigen::Vector2d>> polygons;  ///< outlines; the shape is their union
};

/// @param box of an object, in the coordinates of the document
/// @return its shape
inline Shape shapeOf(const Host::ImageBox& box) {
    return {box, Eigen::Vector2d(0.5 * (box.left + box.right), 0.5 * (box.bottom + box.top)), {}};
}

/// A place in space, as seen from the device.
struct SphericalPlace {
    std::optional<double> distance;   ///< m
    std::optional<double> elevation;  ///< degrees above the x-y plane
    std::optional<double> azimuth;    ///< degrees counter-clockwise from x: 90 is straight ahead
};

/// The direction of a motion, as seen from the device.
struct MotionDirection {
    double yaw = 0.0;    ///< degrees counter-clockwise from x: 90 leads away from the device
    double pitch = 0.0;  ///< degrees upward
};

/// A place on Earth (WGS84).
struct GeoPlace {
    double latitude = 0.0;   ///< degrees, north positive
    double longitude = 0.0;  ///< degrees, east positive
};

/// An object in a frame.
struct SceneObject {
    ObjectName name;
    Transformation transformation;
    std::optional<Shape> shape;
    std::vector<ColorCluster> colors;
    std::vector<Candidate> classes;
    std::vector<Candidate> vehicleTypes;      ///< of VehicleInfo
    std::vector<ColorCluster> vehicleColors;  ///< of VehicleInfo
    std::vector<ColorCluster> tops;           ///< of the clothes of the upper body
    std::vector<ColorCluster> bottoms;        ///< of the clothes of the lower body
    bool isDressed = false;                   ///< the tops are a dress, that covers both
    std::optional<GeoPlace> geo;
    std::optional<SphericalPlace> spherical;
    bool isRemoved = false;  ///< marks a place from where something was taken
    bool isIdle = false;     ///< stopped; not listed further on while it stays as it is
    std::optional<double> speed;
    std::optional<MotionDirection> direction;
};

/// One object becomes several ones, or several become one.
struct Regrouping {
    std::vector<ObjectName> from;
    std::vector<ObjectName> to;
};

/// Another name for an object.
struct Renaming {
    ObjectName from;
    ObjectName to;
};

/// The objects at one time.
struct SceneFrame {
    UtcTime time{};                    ///< of the image or the scan
    std::string source;                ///< name of the module that made it; empty: not stated
    Transformation transformation;     ///< to the normalised image plane
    std::vector<SceneObject> objects;  ///< may be empty
    std::vector<Renaming> renames;     ///< one name each
    std::vector<Regrouping> splits;    ///< one `from` each
    std::vector<Regrouping> merges;    ///< one `to` each
    std::vector<ObjectName> deletes;   ///< that will never appear again
};

/// A scene description: any number of frames, in the order of the document.
using Scene = std::vector<SceneFrame>;

}  // namespace Veskar::Live
