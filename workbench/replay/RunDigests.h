// SPDX-License-Identifier: Apache-2.0
// What a run was made from, in the line that closes its files.
#pragma once

#include "io/LineValue.h"
#include "recording/Recording.h"

#include <optional>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

/// Digests of all that a run depends on, see io/Digest.h and docs/recording-format.md.
struct RunDigests {
    std::string recording;      ///< see RecordingReader::digest
    std::string camera;         ///< as used
    std::string configuration;  ///< as used
    std::string host;           ///< of the host's constants; empty when all had their defaults
};

/// @param value any JSON
/// @return the digest of its text without blanks, with the members of objects sorted by name
std::string digestOf(const nlohmann::json& value);

/// @param recording digest of the recording
/// @param header as fusedHeaderLine takes it
/// @param configuration as fusedHeaderLine takes it
/// @param constants as fusedHeaderLine takes it
/// @return what the closing lines of a run state
RunDigests digestsOfRun(const std::string& recording, const RecordingHeader& header,
                        const std::string& configuration, const std::string& constants);

/// @param constants as fusedHeaderLine takes it
/// @return their digest; empty when all have their defaults
std::string digestOfConstants(const std::string& constants);

/// @param digests of a run
/// @return the last line of its files, with line end
std::string closingLine(const RunDigests& digests);

/// Reads a line if it is the closing one.
/// @param line a line of a run's file
/// @param digests what was read of the file's closing line so far; receives what the line states
/// @return whether it is the closing line
/// @throw InputError what is wrong with it, or when it stands behind the closing line
bool readClosingLine(const LineFields& line, std::optional<RunDigests>& digests);

}  // namespace Workbench
