// SPDX-License-Identifier: Apache-2.0
// Creates tracks for tests.
#pragma once

#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include "support/RandomEstimates.h"

#include <memory>
#include <string>

namespace VeskarTest {

/// The properties of a sensor track that tests set. Defaults: at the origin with unit covariance,
/// at time 10 s, class and colours "unknown" with probability 0, no boxes or optional values.
struct Report {
    Veskar::Source source = Veskar::Source::VideoObject;
    int id = 1;
    double time = 10.0;
    Veskar::StateVector state = Veskar::StateVector::Zero();
    Veskar::StateMatrix covariance = Veskar::StateMatrix::Identity();
    std::string className = "unknown";
    double classProbability = 0.0;
};

/// @return a sensor track in the image-plane frame
std::shared_ptr<Veskar::Track> makeTrack(const Report& report = {});
/// @return a default sensor track with a source and an id
std::shared_ptr<Veskar::Track> makeTrack(Veskar::Source source, int id);
/// @return a sensor track with a source, an id and an estimate
std::shared_ptr<Veskar::Track> makeTrack(Veskar::Source source, int id, const Estimate& estimate);
/// @return a system track made from a sensor track
std::shared_ptr<Veskar::SystemTrack> makeSystemTrack(std::shared_ptr<Veskar::Track> track,
                                                     int id = 100);

}  // namespace VeskarTest
