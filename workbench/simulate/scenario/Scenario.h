// SPDX-License-Identifier: Apache-2.0
// A scene to simulate: objects, sensors and their faults. docs/scenarios.md describes the file.
#pragma once

#include "recording/Recording.h"

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <Eigen/Core>
#include <nlohmann/json_fwd.hpp>
namespace Workbench {

/// How an object follows its way points.
enum class PathMode {
    Once,          ///< appears at the first, disappears at the last
    Loop,          ///< continues from the last to the first
    BackAndForth,  ///< reverses at both ends
    Wander         ///< way points are drawn at random within an area
};

/// An object, or a crowd of similar objects that wander.
struct ObjectTraits {
    std::string className = "human";        ///< see Vocabulary.h
    Eigen::Vector3d size{0.5, 0.5, 1.75};   ///< length, width, height, m
    Labels labels;                          ///< colours that the camera reports
    PathMode mode = PathMode::Once;         ///< how the path is followed
    std::vector<Eigen::Vector2d> path;      ///< way points, device frame, m
    Eigen::Vector2d areaMinimum{0.0, 0.0};  ///< corner of the area of a crowd
    Eigen::Vector2d areaMaximum{0.0, 0.0};  ///< opposite corner
    double minimumSpeed = 1.4;              ///< m/s
    double maximumSpeed = 1.4;              ///< m/s
    double start = 0.0;                     ///< when it starts moving, s
    double pause = 0.0;                     ///< waiting time at each way point, s
    int count = 1;                          ///< of a crowd
};

/// An interval in which a sensor sends no frames.
struct Outage {
    double from = 0.0;  ///< s
    double to = 0.0;    ///< s
};

/// A straight wall that nothing is seen through or over.
struct Wall {
    Eigen::Vector2d from{0.0, 0.0};  ///< one end, device frame, m
    Eigen::Vector2d to{0.0, 0.0};    ///< the other end
};

/// A place where a sensor repeatedly detects a false object.
struct PersistentFalse {
    Eigen::Vector2d position{0.0, 0.0};                   ///< device frame, m
    double probability = 0.5;                             ///< of being detected in a frame
    double wander = 0.3;                                  ///< std of its slow movement, m
    std::string className = "human";                      ///< class that video reports
    double from = 0.0;                                    ///< s
    double to = std::numeric_limits<double>::infinity();  ///< s
};

/// The properties that both sensors have.
struct SensorTraits {
    double rate = 10.0;                  ///< frames per second
    double phase = 0.0;                  ///< time of the first frame, s
    double latency = 0.05;               ///< from measurement to arrival, s
    double jitter = 0.005;               ///< std of the latency, s
    double timestampError = 0.0;         ///< added to the time stamps, s
    double detectionProbability = 0.95;  ///< of an unobstructed object
    double maximumRange = 150.0;         ///< m
    double falseAlarms = 0.02;           ///< expected per frame
    double bursts = 0.0;                 ///< short-lived false objects, expected per minute
    double burstDuration = 0.8;          ///< lifetime of a burst, s
    double idChurn = 0.0;                ///< id changes per track and minute
    bool emptyFrames = true;             ///< whether frames without tracks are sent
    Mounting mountingError;              ///< true pose minus stated pose
    std::vector<Outage> outages;
    std::vector<PersistentFalse> persistent;
};

/// The camera with its analytics.
struct VideoTraits : SensorTraits {
    double minimumBoxHeight = 0.03;  ///< of a detectable object, image units
    double edgeStd = 0.006;          ///< noise of a box edge, image units
    double footStd = 0.05;           ///< slow error of the foot point, fraction of the box height
    double footTime = 1.5;           ///< its correlation time, s
    double classConfusion = 0.02;    ///< probability of a wrong class in a frame
    double occlusionLimit = 0.6;     ///< covered fraction from which an object is not detected
};

/// The radar.
struct RadarTraits : SensorTraits {
    double rangeStd = 0.3;           ///< m
    double azimuthStd = 1.0;         ///< degrees
    double reflectionStd = 0.4;      ///< of the reflection point, fraction of half the size
    double reflectionTime = 1.0;     ///< its correlation time, s
    double rangeResolution = 1.0;    ///< closer objects merge, m
    double azimuthResolution = 5.0;  ///< closer objects merge, degrees
    double hiddenFactor = 0.5;       ///< factor of the detection probability behind another object
    /// Objects with a lower radial speed, m/s, are filtered out, as still ones are by radars that
    /// tell moving objects from the background by their Doppler shift.
    double minimumRadialSpeed = 0.0;
};

/// A scene.
struct Scenario {
    std::string name;
    std::string description;
    double duration = 60.0;    ///< s
    CameraSetup camera;        ///< as stated to the fusion
    RadarSetup radar;          ///< as stated to the fusion
    std::optional<Site> site;  ///< geographic position of the scene
    VideoTraits video;
    RadarTraits radarSensor;
    std::vector<Wall> walls;
    std::vector<ObjectTraits> objects;
};

/// @param path a scenario file, or "-"
/// @return the scenario
/// @throw InputError the fault, starting with the file
Scenario readScenario(const std::string& path);

/// @param json the document
/// @return the scenario
/// @throw InputError the fault
Scenario scenarioOf(const nlohmann::json& json);

}  // namespace Workbench
