// SPDX-License-Identifier: Apache-2.0
#include "support/TrackFactory.h"

#include <utility>

namespace VeskarTest {

using Veskar::Source;
using Veskar::SystemTrack;
using Veskar::Track;

std::shared_ptr<Track> makeTrack(const Report& report) {
    return std::make_shared<Track>(report.state, report.covariance, report.time, report.id,
                                   report.source, Veskar::CoordinateSystem::ImagePlaneRange,
                                   report.className, report.classProbability, "unknown", 0.0,
                                   "unknown", 0.0, "unknown", 0.0);
}

std::shared_ptr<Track> makeTrack(Source source, int id) {
    Report report;
    report.source = source;
    report.id = id;
    return makeTrack(report);
}

std::shared_ptr<Track> makeTrack(Source source, int id, const Estimate& estimate) {
    Report report;
    report.source = source;
    report.id = id;
    report.state = estimate.x;
    report.covariance = estimate.P;
    return makeTrack(report);
}

std::shared_ptr<SystemTrack> makeSystemTrack(std::shared_ptr<Track> track, int id) {
    return std::make_shared<SystemTrack>(std::move(track), id);
}

}  // namespace VeskarTest
