// SPDX-License-Identifier: Apache-2.0
#include "fusion/FusionFixture.h"

#include "support/TrackFactory.h"

#include <cmath>

namespace VeskarTest {
namespace {

std::shared_ptr<Veskar::Track> report(Veskar::Source source, int id, double time,
                                      const Seen& seen) {
    Report report;
    report.source = source;
    report.id = id;
    report.time = time;
    report.state << seen.u, seen.velocity, 0.0, 0.0, 20.0, 0.0;
    report.covariance = seen.variance * Veskar::StateMatrix::Identity();
    report.className = seen.className;
    report.classProbability = 0.8;
    auto track = makeTrack(report);
    track->boundingBox << seen.u - 0.05, 0.1, -0.1, 0.2;
    track->probability = seen.gain;
    return track;
}

}  // namespace

Veskar::Config fusionConfig() {
    Veskar::Config config;
    config.module.gainNegative = {0.7, 0.8};
    config.module.gatingDistance = 3.0;
    config.module.positionGatingDistance = 3.0;
    config.module.systemTrackConfirmationLimitUpper = 0.9;
    config.module.systemTrackConfirmationLimitLower = 0.6;
    config.module.useJVA = true;
    config.module.trackedOdMotionAnalyzerMaxHistoryLength = 20;
    config.module.trackedOdMotionAnalyzerMinHistoryLength = 2;
    config.module.trackedOdMotionAnalyzerDistanceThreshold = 0.2;
    return config;
}

std::shared_ptr<Veskar::Track> video(int id, double time, const Seen& seen) {
    return report(Veskar::VideoObject, id, time, seen);
}

std::shared_ptr<Veskar::Track> radar(int id, double time, const Seen& seen) {
    return report(Veskar::Radar, id, time, seen);
}

Veskar::FusionModule& FusionTest::module() {
    if (!made_) {
        made_ = std::make_unique<Veskar::FusionModule>(config, [this] {
            ++clockReadings;
            return now;
        });
    }
    return *made_;
}

void FusionTest::makeFusedTrack(const Seen& seen) {
    showVideo(10.0, {video(1, 10.0, seen)});
    showRadar(10.0, {radar(1, 10.0, seen)});
    ASSERT_EQ(systemIds(), std::vector<int>{1});
    ASSERT_TRUE(systemTrack(0).hasTracks(Veskar::VideoObject));
    ASSERT_TRUE(systemTrack(0).hasTracks(Veskar::Radar));
}

void FusionTest::setClock(double seconds) {
    now = std::chrono::nanoseconds(static_cast<std::int64_t>(std::llround(seconds * 1e9)));
}

std::vector<int> FusionTest::systemIds() {
    std::vector<int> ids;
    for (const auto& track : module().systemTracks) {
        ids.push_back(track->id);
    }
    return ids;
}

std::vector<int> FusionTest::heldIds(std::size_t index, Veskar::Source source) {
    std::vector<int> ids;
    for (const auto& entry : systemTrack(index).getSensorTracks(source)) {
        ids.push_back(entry.first);
    }
    return ids;
}

Outcome FusionTest::outcome() {
    Outcome result;
    for (const auto& track : module().systemTracks) {
        result.ids.push_back(track->id);
        for (const Veskar::Source source : {Veskar::VideoObject, Veskar::Radar}) {
            for (const auto& [id, sensorTrack] : track->getSensorTracks(source)) {
                result.ids.push_back(id);
                result.numbers.push_back(sensorTrack->coastingTime);
            }
        }
        const auto& P = track->covariance;
        const auto& history = track->trackProbabilityHistory;
        result.numbers.insert(result.numbers.end(), P.data(), P.data() + P.size());
        result.numbers.insert(result.numbers.end(), track->state.data(),
                              track->state.data() + track->state.size());
        result.numbers.insert(result.numbers.end(), history.begin(), history.end());
    }
    return result;
}

}  // namespace VeskarTest
