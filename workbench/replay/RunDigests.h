// SPDX-License-Identifier: Apache-2.0
// Digests of a run's inputs, in the line that closes its files.
#pragma once

#include "io/LineValue.h"
#include "recording/Recording.h"

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// Digests of everything that a run depends on, see io/Digest.h and docs/recording-format.md.
struct RunDigests {
    std::string recording;      ///< see RecordingReader::digest
    std::string camera;         ///< as used
    std::string configuration;  ///< as used
    std::string host;           ///< of the host's parameters; empty when all have their defaults
};

/// @param value any JSON
/// @return digest of its text without whitespace, with the members of objects sorted by name
std::string digestOf(const nlohmann::json& value);

/// @param recording digest of the recording
/// @param header as fusedHeaderLine takes it
/// @param configuration as fusedHeaderLine takes it
/// @param constants as fusedHeaderLine takes it
/// @return the digests for the closing lines of a run
RunDigests digestsOfRun(const std::string& recording, const RecordingHeader& header,
                        const std::string& configuration, const std::string& constants);

/// @param constants as fusedHeaderLine takes it
/// @return their digest; empty when all have their defaults
std::string digestOfConstants(const std::string& constants);

/// @param digests digests of a run
/// @return the closing line of its files, with line end
std::string closingLine(const RunDigests& digests);

/// Reads the digests if a line is the closing line.
/// @param line a line of a run's file
/// @param digests digests of an earlier closing line, if any; receives those of this line
/// @return whether it is the closing line
/// @throw InputError the fault of the line, or that it follows the closing line
bool readClosingLine(const LineFields& line, std::optional<RunDigests>& digests);

}  // namespace Workbench
