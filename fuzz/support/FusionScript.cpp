// SPDX-License-Identifier: Apache-2.0
#include "support/FusionScript.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace VeskarFuzz {
namespace {

using Veskar::StateMatrix;
using Veskar::StateVector;
using Veskar::Track;

constexpr std::size_t mostCalls = 60;
constexpr std::size_t mostTracks = 6;
constexpr double begin = 100.0;         // s
constexpr double coarsestStamp = 1e12;  // s

/// Any double, with a preference for unusual ones.
double anyNumber(FuzzedDataProvider& bytes) {
    static const double strange[] = {0.0,
                                     -0.0,
                                     -1.0,
                                     1e-300,
                                     1e30,
                                     -1e30,
                                     1e300,
                                     1.7e9,
                                     std::numeric_limits<double>::denorm_min(),
                                     std::numeric_limits<double>::max(),
                                     std::numeric_limits<double>::lowest(),
                                     std::numeric_limits<double>::infinity(),
                                     -std::numeric_limits<double>::infinity(),
                                     std::numeric_limits<double>::quiet_NaN()};
    if (bytes.ConsumeBool()) {
        return bytes.PickValueInArray(strange);
    }
    const auto bits = bytes.ConsumeIntegral<std::uint64_t>();
    double number = 0.0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

/// A number on a coarse grid, so that ties and repetitions are likely.
double gridNumber(FuzzedDataProvider& bytes, double least, double most) {
    return least + (most - least) * bytes.ConsumeIntegral<std::uint8_t>() / 255.0;
}

std::string anyClass(FuzzedDataProvider& bytes) {
    static const char* const names[] = {"human",   "vehicle", "car",  "truck",
                                        "unknown", "animal",  "bike", "human_face"};
    return bytes.PickValueInArray(names);
}

StateMatrix plausibleCovariance(FuzzedDataProvider& bytes) {
    StateMatrix root = StateMatrix::Zero();
    for (int i = 0; i < 6; ++i) {
        root(i, i) = gridNumber(bytes, 0.02, 0.5);
    }
    const int row = bytes.ConsumeIntegralInRange(1, 5);
    root(row, row - 1) = gridNumber(bytes, -0.1, 0.1);
    return root * root.transpose();
}

Track readTrack(FuzzedDataProvider& bytes, Veskar::Source source, double time) {
    StateVector state;
    state << gridNumber(bytes, -1.2, 1.2), gridNumber(bytes, -0.3, 0.3),
        gridNumber(bytes, -1.2, 1.2), gridNumber(bytes, -0.3, 0.3), gridNumber(bytes, 1.0, 60.0),
        gridNumber(bytes, -5.0, 5.0);
    Track track(state, plausibleCovariance(bytes), time, bytes.ConsumeIntegralInRange(0, 7), source,
                Veskar::ImagePlaneRange, anyClass(bytes), gridNumber(bytes, 0.0, 1.0), "red",
                gridNumber(bytes, 0.0, 1.0), "unknown", 0.0, "blue", 0.5);
    track.boundingBox << state[0] - 0.05, 0.1, state[2], gridNumber(bytes, 0.0, 0.5);
    static const double gains[] = {0.3, 1.0, 1.2, 2.0, 3.0};
    track.probability = bytes.PickValueInArray(gains);
    static const double coasting[] = {0.0, 0.0, 0.1, 0.5, 0.6};
    track.coastingTime = bytes.PickValueInArray(coasting);
    if (source == Veskar::Radar) {
        track.speed = gridNumber(bytes, 0.0, 6.0);
    }
    return track;
}

Call readCall(FuzzedDataProvider& bytes, double& time, bool& isPlausible) {
    static const double steps[] = {0.05, 0.05, 0.1, 0.0, 0.6, -0.02, 1.7, 30.0};
    time += bytes.PickValueInArray(steps);
    static const Veskar::Source sources[] = {Veskar::VideoObject, Veskar::Radar,
                                             Veskar::VideoObject, Veskar::Radar, Veskar::VideoVura};
    Call call;
    call.source = bytes.PickValueInArray(sources);
    call.timestamp = time;
    call.now = std::chrono::nanoseconds(static_cast<std::int64_t>((time + 0.02) * 1e9));
    const auto flags = bytes.ConsumeIntegral<std::uint8_t>();
    for (std::size_t i = 0; i < flags % (mostTracks + 1); ++i) {
        call.tracks.push_back(readTrack(bytes, call.source, time));
    }
    if (flags >= 224) {
        call.timestamp = anyNumber(bytes);
        isPlausible = false;
    } else if (flags >= 176 && !call.tracks.empty()) {
        spoil(call.tracks.front(), bytes);
        isPlausible = false;
    }
    return call;
}

}  // namespace

void spoil(Track& track, FuzzedDataProvider& bytes) {
    double* const numbers[] = {&track.time,
                               &track.startTime,
                               &track.coastingTime,
                               &track.probability,
                               &track.classProbability,
                               &track.colorProbability,
                               &track.upperClothingColorProbability,
                               &track.lowerClothingColorProbability};
    switch (bytes.ConsumeIntegralInRange(0, 5)) {
        case 0:
            track.state[bytes.ConsumeIntegralInRange(0, 5)] = anyNumber(bytes);
            break;
        case 1:
            track.covariance(bytes.ConsumeIntegralInRange(0, 5),
                             bytes.ConsumeIntegralInRange(0, 5)) = anyNumber(bytes);
            break;
        case 2:
            track.covariance *= anyNumber(bytes);
            break;
        case 3:
            track.boundingBox[bytes.ConsumeIntegralInRange(0, 3)] = anyNumber(bytes);
            break;
        case 4:
            track.speed = anyNumber(bytes);
            break;
        default:
            *bytes.PickValueInArray(numbers) = anyNumber(bytes);
    }
}

Veskar::Config readConfig(FuzzedDataProvider& bytes) {
    Veskar::Config config;
    auto& module = config.module;
    module.gainNegative = {0.6, 0.7};
    module.splitGating = bytes.ConsumeBool();
    module.useJVA = bytes.ConsumeBool();
    module.allowRadarToMultiple = bytes.ConsumeBool();
    module.removeClassMismatches = bytes.ConsumeBool();
    module.gatingDistance = gridNumber(bytes, 1.0, 8.0);
    module.positionGatingDistance = gridNumber(bytes, 1.0, 5.0);
    module.velocityGatingSimilarity = gridNumber(bytes, -1.0, 0.5);
    module.velocityMinGatingLimit = 0.3;
    module.stationaryBlockingMinSpeed = 4.0;
    module.stationaryBlockingMaxUVSpeed = 0.3;
    module.stationaryBlockingMinVideoAge = 1.0;
    module.systemTrackConfirmationLimitUpper = 0.9;
    module.systemTrackConfirmationLimitLower = 0.6;
    config.detectionPriority.vodHeightFractionLimit = 0.1;
    return config;
}

FusionScript readScript(FuzzedDataProvider& bytes) {
    FusionScript script;
    script.config = readConfig(bytes);
    double time = begin;
    while (bytes.remaining_bytes() > 0 && script.calls.size() < mostCalls) {
        script.calls.push_back(readCall(bytes, time, script.isPlausible));
        const double stamp = script.calls.back().timestamp;
        if (stamp < coarsestStamp) {
            script.latest = std::max(script.latest, stamp);
        }
    }
    return script;
}

Track usualReport(Veskar::Source source, int id, double time) {
    StateVector state;
    state << 0.4 * id - 0.6, 0.0, -0.2, 0.0, 20.0, 0.0;
    StateVector variances;
    variances << 4e-4, 1e-3, 2e-3, 2e-3, 0.2, 0.2;
    Track track(state, variances.asDiagonal(), time, id, source, Veskar::ImagePlaneRange, "human",
                0.8, "red", 0.6, "unknown", 0.0, "unknown", 0.0);
    track.boundingBox << state[0] - 0.05, 0.1, state[2], 0.3;
    track.probability = 2.0;
    if (source == Veskar::Radar) {
        track.speed = 0.0;
    }
    return track;
}

void ScriptedModule::cycle(const Call& call) {
    now_ = call.now;
    std::vector<std::shared_ptr<Track>> tracks;
    tracks.reserve(call.tracks.size());
    for (const Track& track : call.tracks) {
        tracks.push_back(std::make_shared<Track>(track));
    }
    module_.cycle(call.source, call.timestamp, tracks);
}

}  // namespace VeskarFuzz
