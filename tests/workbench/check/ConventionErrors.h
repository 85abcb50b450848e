// SPDX-License-Identifier: Apache-2.0
// Simulated recordings, and typical faults of their producers.
#pragma once

#include "check/RecordingCheck.h"
#include "recording/Recording.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VeskarTest {

/// A fault in every line of a recording.
struct ConventionError {
    std::string what;      ///< description
    std::string expected;  ///< name of the convention that must be found violated
    void (*ofHeader)(Workbench::RecordingHeader&) = nullptr;
    void (*ofFrame)(Workbench::SensorFrame&) = nullptr;
};

/// @return all of them
const std::vector<ConventionError>& conventionErrors();

/// @param what description as in conventionErrors
/// @return that one
const ConventionError& conventionError(const std::string& what);

/// A recording in memory, without truth.
struct Recorded {
    Workbench::RecordingHeader header;
    std::vector<Workbench::SensorFrame> frames;
};

/// @param scenario name of a shipped scenario
/// @param seed seed of the simulation
/// @param duration in seconds; 0 for the scenario's own
/// @return the reports of the sensors
Recorded simulated(const std::string& scenario, std::uint64_t seed, double duration);

/// @param recorded the reports of the sensors
/// @param error applied to them
/// @param path of the file
void write(const Recorded& recorded, const ConventionError& error, const std::string& path);

/// @param result of a check
/// @return the names of the conventions that it has found
std::vector<std::string> namesOf(const Workbench::RecordingCheckResult& result);

}  // namespace VeskarTest
