// SPDX-License-Identifier: Apache-2.0
#include "fusion/LatticeScenario.h"

#include "support/TrackFactory.h"

namespace VeskarTest {

using Veskar::Source;

LatticeScenario::LatticeScenario(unsigned seed, const Switches& switches) : random_(seed) {
    switches.apply(config_);
    config_.module.gainNegative = {0.5, 0.5};
    config_.module.gatingDistance = 1.2;  // between lattice distances
    config_.module.positionGatingDistance = 1.2;
    config_.module.velocityGatingSimilarity = -0.5;
    config_.module.systemTrackConfirmationLimitUpper = 0.9;
    config_.module.systemTrackConfirmationLimitLower = 0.6;
}

Step LatticeScenario::next() {
    Step step{};
    const bool startsAfresh = random_.integer(0, 29) == 0;
    if (startsAfresh) {
        time_ += 1.0;
    }
    step.source = random_.integer(0, 1) == 0 ? Source::VideoObject : Source::Radar;
    step.timestamp = time_;
    step.now = std::chrono::nanoseconds(static_cast<std::int64_t>((time_ + 2.0) * 1e9));
    const int count = startsAfresh ? 0 : random_.integer(0, 6);
    for (int i = 0; i < count; ++i) {
        step.tracks.push_back(makeReport(step));
    }
    return step;
}

std::shared_ptr<Veskar::Track> LatticeScenario::makeReport(const Step& step) {
    Report report;
    report.source = step.source;
    report.id = random_.integer(1, 9);
    report.time = step.timestamp;
    report.state[0] = 0.25 * random_.integer(-2, 2);
    report.state[2] = 0.25 * random_.integer(-1, 1);
    report.covariance = 0.125 * Veskar::StateMatrix::Identity();
    report.className = random_.integer(0, 3) == 0 ? "car" : "human";
    auto track = makeTrack(report);
    track->probability = random_.integer(0, 1) == 0 ? 2.0 : 0.5;
    track->startTime -= random_.integer(0, 2);
    track->coastingTime = random_.integer(0, 9) == 0 ? 0.5 : 0.0;
    return track;
}

}  // namespace VeskarTest
