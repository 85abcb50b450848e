// SPDX-License-Identifier: Apache-2.0
// Objects seen by both sensors, for runs that are compared between architectures.
#pragma once

#include <veskar/Track.h>

#include "support/RandomEstimates.h"

#include <memory>
#include <vector>

namespace VeskarDevice {

/// How the sensors detect the objects.
struct SceneSettings {
    int objects = 32;
    double dropout = 0.0;      ///< fraction of missed reports
    double idChange = 0.0;     ///< fraction of reports that start a new sensor track
    double falseAlarms = 0.0;  ///< fraction of frames with a report without object
};

/// Objects that move through the image, and the reports of radar and video.
///
/// Computed with the four basic operations only, in a fixed order: the reports are bit-identical on
/// every architecture, so that differences of the results come from the fusion.
class Scene {
public:
    Scene(const SceneSettings& view, unsigned seed);

    /// Moves the objects, which turn round at the image border.
    /// @param time seconds; not before the last time
    void moveTo(double time);
    /// @param source VideoObject or Radar
    /// @return the sensor's reports at this time
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
