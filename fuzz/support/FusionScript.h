// SPDX-License-Identifier: Apache-2.0
// A host's calls of the fusion, decoded from the fuzzer's bytes.
#pragma once

#include <veskar/Config.h>
#include <veskar/FusionModule.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

namespace VeskarFuzz {

/// One call of FusionModule::cycle.
struct Call {
    Veskar::Source source = Veskar::VideoObject;
    double timestamp = 0.0;          ///< seconds
    std::chrono::nanoseconds now{};  ///< of the steady clock
    std::vector<Veskar::Track> tracks;
};

/// A configuration and the calls made with it.
struct FusionScript {
    Veskar::Config config;
    std::vector<Call> calls;
    /// Whether every value is within the range of real sensors, so that the output must be finite.
    bool isPlausible = true;
    /// The greatest time stamp of all frames, s, except those whose doubles have a resolution
    /// coarser than a tenth of a second.
    double latest = 0.0;
};

/// @return the configuration with switches and gates chosen by the bytes; the rest as shipped
Veskar::Config readConfig(FuzzedDataProvider& bytes);

/// @return as many calls as the bytes suffice for
FusionScript readScript(FuzzedDataProvider& bytes);

/// A regular report of an object that walks along u, number @p id.
/// @param source the sensor
/// @param id track id; the object is at u = 0.4 id - 0.6
/// @param time seconds
/// @return the report
Veskar::Track usualReport(Veskar::Source source, int id, double time);

/// Overwrites one field of a track with any value.
void spoil(Veskar::Track& track, FuzzedDataProvider& bytes);

/// A module with a clock set by the calls.
class ScriptedModule {
public:
    explicit ScriptedModule(const Veskar::Config& config)
        : module_(config, [this] { return now_; }) {}

    /// Makes a call with copies of its tracks, because the fusion predicts them later.
    void cycle(const Call& call);
    Veskar::FusionModule& fusion() { return module_; }

private:
    std::chrono::nanoseconds now_{};
    Veskar::FusionModule module_;
};

}  // namespace VeskarFuzz
