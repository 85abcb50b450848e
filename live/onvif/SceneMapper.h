// SPDX-License-Identifier: Apache-2.0
// From scene descriptions to the frames of camera and radar.
#pragma once

#include <veskar-host/Installation.h>
#include <veskar-host/SensorFrame.h>

#include "live/onvif/FadingRate.h"
#include "live/onvif/LeftOut.h"
#include "live/onvif/ObjectIds.h"
#include "live/onvif/SceneDescription.h"
#include "live/onvif/SensorReports.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Veskar::Live {

/// A frame of a sensor with the sensor's own time. The frame's own times are 0: they are of the
/// host's clock, which this part does not know.
struct StampedFrame {
    UtcTime time{};
    Host::SensorFrame frame;
};

/// What the frames of an analytics module are used as.
enum class ModuleUse {
    ByContents,  ///< video when its first object has a shape, radar when it has only a place in
                 ///< space
    Video,       ///< the camera of the installation
    Radar,       ///< the radar of the installation
    Ignored      ///< counted, and used for nothing
};

/// @param object of a module that is used by its contents
/// @return what it tells: Video, Radar, or still ByContents
ModuleUse useByContents(const SceneObject& object);

/// Makes sensor frames of scene descriptions, with ids of 32 bits, and follows the objects from
/// frame to frame: their age, those that are hidden, idle, renamed, merged, split or deleted.
/// docs/live.md has the table of what becomes what.
///
/// Several modules may describe what one sensor sees. The fusion takes a frame for all that its
/// sensor sees, so that each frame also carries the latest reports of the other modules. An object
/// that several of them report under one UUID is reported once.
///
/// Times are those of the sensor. One thread at a time may use a mapper.
class SceneMapper {
public:
    /// What modules are used for, and limits.
    struct Options {
        /// By the name in the attribute Source; a module that states none has the empty name.
        std::map<std::string, ModuleUse> modules;
        ModuleUse otherModules = ModuleUse::ByContents;  ///< those not among them
        /// Time after which an object that is not reported is forgotten, and an idle one is no
        /// longer taken to be where it was.
        UtcTime forgetAfter = std::chrono::seconds(60);
        /// Time for which the reports of a module are carried into frames of another one.
        UtcTime carryFor = std::chrono::milliseconds(500);
        std::size_t mostObjects = 4096;  ///< of a frame, and known at a time, for each sensor
        std::size_t mostModules = 64;    ///< known at a time
    };

    /// How many frames went where.
    struct Counts {
        std::uint64_t mapped = 0;     ///< became a sensor frame
        std::uint64_t joined = 0;     ///< of a further module of a sensor, at a time that had a
                                      ///< frame: their objects come with the next one
        std::uint64_t ignored = 0;    ///< of modules that are not used
        std::uint64_t undecided = 0;  ///< without an object that tells camera from radar
    };

    /// @param installation the sensors and where they are
    explicit SceneMapper(const Host::Installation& installation);
    /// @param installation as above
    /// @param options what modules are used for, and limits
    SceneMapper(const Host::Installation& installation, const Options& options);

    /// @param scene a message
    /// @param publisher where it came from, as its topic: the modules of two publishers are
    ///                  different ones, whatever their names
    /// @return sensor frames, in the order of the message
    std::vector<StampedFrame> map(const Scene& scene, const std::string& publisher);
    /// Forgets the modules of a publisher: what they reported last is carried no further.
    /// @param publisher one that has gone for good, as a connection that was closed
    void forget(const std::string& publisher);

    /// @return how many frames went where
    const Counts& counts() const { return counts_; }
    /// @return what the fusion has no place for; readers may count here, too
    LeftOut& leftOut() { return leftOut_; }

private:
    /// The latest report of an object by a module.
    struct Held {
        Host::Report report;
        UtcTime seen{};  ///< when the module saw it
        UtcTime since{};
        bool isIdle = false;
        FadingRate rangeRate;                ///< of a radar's report
        std::array<FadingRate, 2> footRate;  ///< of the place at which the box stands, u and v
    };
    using HeldReports = std::map<std::int32_t, Held>;

    struct Module {
        ModuleUse use = ModuleUse::ByContents;
        std::string key;  ///< its publisher and name
        HeldReports held;
        std::optional<UtcTime> last;
        std::uint64_t lastHeard = 0;
    };

    struct Sensor {
        explicit Sensor(const Options& options) : ids(options.forgetAfter, options.mostObjects) {}

        ObjectIds ids;
        std::optional<UtcTime> last;
    };

    Module& moduleOf(const SceneFrame& frame, const std::string& publisher);
    void decide(Module& module, const SceneFrame& frame);
    std::optional<StampedFrame> map(const SceneFrame& frame, Module& module);
    static void addMotion(Held& held);
    void applyTree(const SceneFrame& frame, Module& module, Sensor& sensor);
    void pass(const ObjectName& from, const std::vector<ObjectName>& to, Module& module,
              Sensor& sensor);
    HeldReports reportsOf(const SceneFrame& frame, Module& module, Sensor& sensor);
    std::optional<Held> heldFor(const SceneObject& object, const SceneFrame& frame,
                                const Module& module, const ObjectIds::Known& known);
    std::optional<Host::Report> reportFor(const SceneObject& object, const SceneFrame& frame,
                                          ModuleUse use);
    void lendLabels(const SceneObject& object, std::int32_t id, const Module& module);
    StampedFrame emit(const SceneFrame& frame, const Module& module, HeldReports reports);
    Sensor& sensorOf(const Module& module) {
        return module.use == ModuleUse::Video ? video_ : radar_;
    }

    SensorReports maker_;
    Options options_;
    Sensor video_;
    Sensor radar_;
    std::map<std::string, Module> modules_;  ///< by publisher and name
    std::uint64_t heard_ = 0;
    Counts counts_;
    LeftOut leftOut_;
};

}  // namespace Veskar::Live
