// SPDX-License-Identifier: Apache-2.0
// What a host does to the fusion, read from the bytes of the fuzzer.
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
    /// Whether every value lies where values of real sensors may lie, so that what comes out must
    /// be finite.
    bool isPlausible = true;
    /// The greatest stamp of all frames, those aside whose doubles are too coarse to count tenths
    /// of seconds; seconds.
    double latest = 0.0;
};

/// @return the switches and gates that the bytes choose; everything else as shipped
Veskar::Config readConfig(FuzzedDataProvider& bytes);

/// @return as many calls as the bytes are good for
FusionScript readScript(FuzzedDataProvider& bytes);

/// A usual report of an object that walks along u, number @p id.
/// @param source the sensor
/// @param id of the track; the object stands at u = 0.4 id - 0.6
/// @param time seconds
/// @return the report
Veskar::Track usualReport(Veskar::Source source, int id, double time);

/// Overwrites one field of a track with any value.
void spoil(Veskar::Track& track, FuzzedDataProvider& bytes);

/// A module on a clock that the calls set.
class ScriptedModule {
public:
    explicit ScriptedModule(const Veskar::Config& config)
        : module_(config, [this] { return now_; }) {}

    /// Makes a call with copies of its tracks, which the fusion moves later on.
    void cycle(const Call& call);
    Veskar::FusionModule& fusion() { return module_; }

private:
    std::chrono::nanoseconds now_{};
    Veskar::FusionModule module_;
};

}  // namespace VeskarFuzz
