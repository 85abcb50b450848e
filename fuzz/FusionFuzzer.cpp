// SPDX-License-Identifier: Apache-2.0
// The fusion, driven by any sequence of frames with any tracks. Checks that
// - ids are unique, and there are no more system tracks than reports;
// - plausible and finite input gives finite output;
// - an observer changes nothing;
// - three seconds of empty frames leave no system track, whatever preceded them;
// - ten seconds after a report with one invalid field, the scene is the same as without it.
#include "fusion/ReportFault.h"
#include "support/FusionScript.h"
#include "support/Require.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include <Eigen/Eigenvalues>

using namespace VeskarFuzz;
using Veskar::FusionModule;
using Veskar::Track;

namespace {

/// Receives all events and ignores them.
class Onlooker : public Veskar::FusionObserver {};

/// Whether two matrices hold the same numbers, where NaN equals NaN.
template <typename Matrix>
bool isSame(const Matrix& a, const Matrix& b) {
    return (a.array() == b.array() || (a.array().isNaN() && b.array().isNaN())).all();
}

/// The public state of a system track.
struct Seen {
    int id;
    bool isConfirmed;
    Veskar::StateVector state;
    Veskar::StateMatrix covariance;

    bool operator==(const Seen& other) const {
        return id == other.id && isConfirmed == other.isConfirmed && isSame(state, other.state) &&
               isSame(covariance, other.covariance);
    }
};

std::vector<Seen> look(FusionModule& fusion) {
    std::vector<Seen> seen;
    for (const auto& track : fusion.systemTracks) {
        seen.push_back({track->id, track->isConfirmed, track->state, track->covariance});
    }
    return seen;
}

void requireOrder(FusionModule& fusion, std::size_t reports, bool mustBeFinite) {
    std::set<int> ids;
    for (const auto& track : fusion.systemTracks) {
        require(ids.insert(track->id).second, "ids of system tracks are unique");
        require(!mustBeFinite || (track->state.allFinite() && track->covariance.allFinite()),
                "what is finite stays finite");
    }
    require(fusion.systemTracks.size() <= reports, "no more system tracks than reports");
}

std::vector<std::vector<Seen>> run(const FusionScript& script, Veskar::FusionObserver* observer) {
    ScriptedModule module(script.config);
    module.fusion().setObserver(observer);
    std::vector<std::vector<Seen>> pictures;
    std::size_t reports = 0;
    for (const Call& call : script.calls) {
        reports += call.tracks.size();
        module.cycle(call);
        requireOrder(module.fusion(), reports, script.isPlausible);
        pictures.push_back(look(module.fusion()));
    }
    return pictures;
}

Call frame(Veskar::Source source, double time, int objects) {
    Call call;
    call.source = source;
    call.timestamp = time;
    constexpr double clockReach = 9.2e9;  // s, 292 years
    call.now = std::chrono::nanoseconds(
        static_cast<std::int64_t>(std::clamp(time, -clockReach, clockReach) * 1e9));
    for (int id = 0; id < objects; ++id) {
        call.tracks.push_back(usualReport(source, id, time));
    }
    return call;
}

/// Frames of both sensors, or of radar alone, at the longest interval that system tracks survive,
/// which is below 0.5 s.
void show(ScriptedModule& module, double from, double seconds, int objects, bool hasVideo = true) {
    constexpr double pause = 0.4;
    const int frames = static_cast<int>(std::lround(seconds / pause));
    for (int i = 0; i < frames; ++i) {
        const double time = from + pause * i;
        if (hasVideo) {
            module.cycle(frame(Veskar::VideoObject, time, objects));
        }
        module.cycle(frame(Veskar::Radar, time + 0.02, objects));
    }
}

void requireSilenceEndsAll(const FusionScript& script) {
    ScriptedModule module(script.config);
    for (const Call& call : script.calls) {
        module.cycle(call);
    }
    // A report may be stamped 10 s ahead of its frame, and the track that it starts lives that much
    // longer. For the same reason the empty frames begin after the latest frame: when a clock is
    // set back by less than an hour, system tracks without reports live on for that time.
    show(module, script.latest + 10.0, 3.0, 0);
    require(module.fusion().systemTracks.empty(), "three seconds of silence end every track");
}

/// The positions of the confirmed system tracks after a scene with a frame of reports, invalid or
/// not.
std::vector<double> placesAfter(const Veskar::Config& config, const Call& reports) {
    constexpr int objects = 3;
    ScriptedModule module(config);
    // A report that leaves its system track keeps the start time of its sensor track, and two
    // system tracks with the same start time are never merged. Therefore the other sensor starts
    // first.
    show(module, 98.0, 2.0, objects, reports.source != Veskar::VideoObject);
    show(module, 100.0, 2.0, objects);
    module.cycle(reports);
    show(module, 102.1, 10.0, objects);
    std::vector<double> places;
    for (const auto& track : module.fusion().systemTracks) {
        if (track->isConfirmed) {
            places.push_back(track->state[0]);
        }
    }
    std::sort(places.begin(), places.end());
    return places;
}

/// Whether the fusion can remove a report from an estimate without loss of precision. A position of
/// 1e12 or a variance of 1e-12 is accepted by FusionModule::cycle, but the other reports of the
/// system track lose their significant digits beside it, and these are not recovered while its
/// sensors continue to report.
bool leavesDigits(const Track& report) {
    if (Veskar::faultOf(report, report.time) != Veskar::ReportFault::None) {
        return true;  // rejected
    }
    const Eigen::SelfAdjointEigenSolver<Veskar::StateMatrix> solver(report.covariance,
                                                                    Eigen::EigenvaluesOnly);
    return report.state.cwiseAbs().maxCoeff() < 1e6 && solver.eigenvalues().minCoeff() > 1e-6 &&
           solver.eigenvalues().maxCoeff() < 1e6;
}

void requireRecovery(FuzzedDataProvider& bytes) {
    Veskar::Config config = readConfig(bytes);
    // The greedy association only merges a radar track into an older one of video, so a video track
    // that an invalid report splits off would remain separate.
    config.module.useJVA = true;
    const Veskar::Source source = bytes.ConsumeBool() ? Veskar::Radar : Veskar::VideoObject;
    const Call sound = frame(source, 102.05, 3);
    Call spoiled = sound;
    spoil(spoiled.tracks[1], bytes);
    if (!leavesDigits(spoiled.tracks[1])) {
        return;
    }
    const std::vector<double> expected = placesAfter(config, sound);
    const std::vector<double> places = placesAfter(config, spoiled);
    const auto isNear = [](double a, double b) { return std::abs(a - b) < 1e-3; };
    require(std::equal(places.begin(), places.end(), expected.begin(), expected.end(), isNear),
            "one spoiled report is forgotten after ten seconds");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider bytes(data, size);
    if (bytes.ConsumeIntegral<std::uint8_t>() < 32) {
        requireRecovery(bytes);
        return 0;
    }
    const FusionScript script = readScript(bytes);
    Onlooker onlooker;
    require(run(script, nullptr) == run(script, &onlooker), "an observer changes nothing");
    requireSilenceEndsAll(script);
    return 0;
}
