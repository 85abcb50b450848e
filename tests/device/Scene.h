// SPDX-License-Identifier: Apache-2.0
// Objects in front of both sensors, for runs that are compared between architectures.
#pragma once

#include <veskar/Track.h>

#include "support/RandomEstimates.h"

#include <memory>
#include <vector>

namespace VeskarDevice {

/// How the sensors see the objects.
struct SceneSettings {
    int objects = 32;
    double dropout = 0.0;      ///< share of reports that a sensor misses
    double idChange = 0.0;     ///< share of reports with which a sensor starts a new track
    double falseAlarms = 0.0;  ///< share of frames with a report of no object
};

/// Objects that wander over the image, and what radar and video report of them.
///
/// Made with the four basic operations only, in one order: the reports are the same to the last bit
/// on every architecture, and what differs behind the fusion is the fusion's.
class Scene {
public:
    Scene(const SceneSettings& view, unsigned seed);

    /// Moves the objects; they turn round at the image border.
    /// @param time seconds; not before the last time
    void moveTo(double time);
    /// @param source VideoObject or Radar
    /// @return what the sensor reports now
    std::vector<std::shared_ptr<Veskar::Track>> report(Veskar::Source source);

private:
    struct Object {
        Veskar::StateVector state;
        const char* className;
        int videoId;
        int radarId;
    };

    std::shared_ptr<Veskar::Track> measure(const Object& object, Veskar::Source source, int id);
    Object newObject();

    SceneSettings settings_;
    VeskarTest::RandomEstimates random_;
    std::vector<Object> objects_;
    double now_ = 0.0;
    int nextId_ = 1;
};

}  // namespace VeskarDevice
