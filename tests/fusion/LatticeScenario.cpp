// SPDX-License-Identifier: Apache-2.0
#include "fusion/LatticeScenario.h"

#include "support/TrackFactory.h"

namespace VeskarTest {

using Veskar::Source;

LatticeScenario::LatticeScenario(unsigned seed, const Switches& switches) : random(seed) {
    switches.apply(config);
    config.module.gainNegative = {0.5, 0.5};
    config.module.gatingDistance = 1.2;  // between lattice distances
    config.module.positionGatingDistance = 1.2;
    config.module.velocityGatingSimilarity = -0.5;
    config.module.systemTrackConfirmationLimitUpper = 0.9;
    config.module.systemTrackConfirmationLimitLower = 0.6;
}

Step LatticeScenario::next() {
    Step step{};
    const bool startsAfresh = random.integer(0, 29) == 0;
    if (startsAfresh) {
        time += 1.0;
    }
    step.source = random.integer(0, 1) == 0 ? Source::VideoObject : Source::Radar;
    step.timestamp = time;
    step.now = std::chrono::nanoseconds(static_cast<std::int64_t>((time + 2.0) * 1e9));
    const int count = startsAfresh ? 0 : random.integer(0, 6);
    for (int i = 0; i < count; ++i) {
        step.tracks.push_back(makeReport(step));
    }
    return step;
}

std::shared_ptr<Veskar::Track> LatticeScenario::makeReport(const Step& step) {
    Report report;
    report.source = step.source;
    report.id = random.integer(1, 9);
    report.time = step.timestamp;
    report.state[0] = 0.25 * random.integer(-2, 2);
    report.state[2] = 0.25 * random.integer(-1, 1);
    report.covariance = 0.125 * Veskar::StateMatrix::Identity();
    report.className = random.integer(0, 3) == 0 ? "car" : "human";
    auto track = makeTrack(report);
    track->probability = random.integer(0, 1) == 0 ? 2.0 : 0.5;
    track->startTime -= random.integer(0, 2);
    track->coastingTime = random.integer(0, 9) == 0 ? 0.5 : 0.0;
    return track;
}

}  // namespace VeskarTest
