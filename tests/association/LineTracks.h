// SPDX-License-Identifier: Apache-2.0
// Tracks on a line, whose distances are known at sight.
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

/// A system track that only holds such a track, with its id.
inline std::shared_ptr<Veskar::SystemTrack> systemAt(double u, Veskar::Source source, int id,
                                                     const char* className = "human") {
    return makeSystemTrack(trackAt(u, source, id, className), id);
}

}  // namespace VeskarTest
