// SPDX-License-Identifier: Apache-2.0
// Tracks along a line, with distances that are easy to calculate.
#pragma once

#include "support/TrackFactory.h"

#include <memory>

namespace VeskarTest {

/// With unit covariances a difference of 1 in u is a distance of 1 / sqrt(2).
inline std::shared_ptr<Veskar::Track> trackAt(double u, Veskar::Source source, int id,
                                              const char* className = "human") {
    Report report;
    report.source = source;
    report.id = id;
    report.state[0] = u;
    report.className = className;
    return makeTrack(report);
}

/// A system track with such a track as its only sensor track; both have the same id.
inline std::shared_ptr<Veskar::SystemTrack> systemAt(double u, Veskar::Source source, int id,
                                                     const char* className = "human") {
    return makeSystemTrack(trackAt(u, source, id, className), id);
}

}  // namespace VeskarTest
