// SPDX-License-Identifier: Apache-2.0
// The header, which is the first line of a recording.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/Installation.h>

#include "host/json/LineText.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Veskar::Host::Internal {

/// Version of the recording format that is read and written.
constexpr int recordingVersion = 1;

/// What the truth lines of a recording cover.
enum class TruthKind {
    None,        ///< there are none
    Incomplete,  ///< some of the visible objects: tracks without truth are not wrong
    Complete     ///< every object
};

/// The header of a recording: the installation and the origin of the data.
struct RecordingHeader : Installation {
    std::string name;                   ///< short name
    std::string origin;                 ///< where the data comes from
    std::string licence;                ///< terms of use of the data
    std::optional<double> epoch;        ///< UNIX time of time 0, when known
    std::optional<std::uint64_t> seed;  ///< of a simulation, below 2^63
    TruthKind truth = TruthKind::None;  ///< what the truth lines cover
};

/// Begins the header of a file that is made of a recording, up to its radar.
/// @param text receives the beginning of an object
/// @param format name of the file's format
/// @param version version of the file's format
/// @param header the recording's header
VESKAR_HOST_EXPORT void beginHeader(LineText& text, const std::string& format, int version,
                                    const RecordingHeader& header);
/// @param header a header
/// @return its line, with line end
VESKAR_HOST_EXPORT std::string toJsonLine(const RecordingHeader& header);

}  // namespace Veskar::Host::Internal
