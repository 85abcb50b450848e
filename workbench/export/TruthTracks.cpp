// SPDX-License-Identifier: Apache-2.0
#include "export/TruthTracks.h"

#include <veskar-host/GeographicPosition.h>
#include <veskar-host/Projection.h>

#include "simulate/VideoSensor.h"

#include <cmath>
#include <limits>

namespace Workbench {
namespace {

constexpr double unstated = std::numeric_limits<double>::quiet_NaN();

/// The box around the object's image. The truth has no heading: that of the motion is taken, and
/// what stands is as long as wide.
ImageBox boxOf(const TruthObject& object, const Projection& camera) {
    if (!object.size || !object.centre ||
        !camera.sees({object.centre->x(), object.centre->y(), 0.5 * object.size->z()})) {
        return {unstated, unstated, unstated, unstated};
    }
    ObjectTraits traits;
    traits.size = *object.size;
    ObjectState state;
    state.traits = &traits;
    state.centre = *object.centre;
    constexpr double standing = 0.1;  // m/s
    if (object.velocity.norm() > standing) {
        state.heading = std::atan2(object.velocity[1], object.velocity[0]);
    } else {
        traits.size.head<2>().setConstant(traits.size.head<2>().mean());
    }
    return VideoSensor::boxOf(camera, state);
}

FusedTrack trackOfObject(const TruthObject& object, const HostAdapter& adapter) {
    const Projection& camera = adapter.projection();
    const Eigen::Vector3d point(object.position[0], object.position[1], 0.0);
    const Eigen::Vector3d sight = point - camera.origin();
    const Eigen::Matrix2d unstatedCovariance = Eigen::Matrix2d::Constant(unstated);
    FusedTrack track;
    track.id = object.id;
    track.confirmed = true;
    track.probability = 1.0;
    track.image = track.imageRate = {unstated, unstated};
    if (camera.sees(point)) {
        const ImageMotion motion =
            camera.project(point, {object.velocity[0], object.velocity[1], 0.0});
        track.image = motion.uv;
        track.imageRate = motion.rate;
    }
    track.range = sight.norm();
    track.rangeRate = sight.head<2>().dot(object.velocity) / track.range;
    track.ground =
        GroundPosition{object.position, unstatedCovariance, object.velocity, unstatedCovariance};
    track.speed = object.velocity.norm();
    if (*track.speed > 0.0) {
        track.direction = -degrees(std::atan2(object.velocity[1], object.velocity[0]));
    }
    track.labels.objectClass = {object.className, 1.0};
    track.box = boxOf(object, camera);
    if (adapter.site()) {
        track.geo = geographicPosition(*adapter.site(), object.position);
    }
    track.age = unstated;
    return track;
}

}  // namespace

FusedFrame readTruth(const TruthFrame& truth, const HostAdapter& adapter) {
    FusedFrame frame{truth.time, truth.time, Veskar::System, {}};
    frame.tracks.reserve(truth.objects.size());
    for (const TruthObject& object : truth.objects) {
        frame.tracks.push_back(trackOfObject(object, adapter));
    }
    return frame;
}

}  // namespace Workbench
