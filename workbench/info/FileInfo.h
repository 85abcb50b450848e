// SPDX-License-Identifier: Apache-2.0
// What a recording or a file of fused tracks contains, in numbers.
#pragma once

#include "check/FrameStatistics.h"
#include "recording/Excerpt.h"
#include "recording/Recording.h"
#include "replay/RunDigests.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace Workbench {

class LineReader;

/// A span of time that grows with each value.
struct TimeSpan {
    double first = std::numeric_limits<double>::infinity();  ///< s
    double last = -std::numeric_limits<double>::infinity();  ///< s

    /// @param time s
    void add(double time);
    /// @return s; 0 without any time
    double length() const { return last < first ? 0.0 : last - first; }
};

/// Contents of a recording.
struct RecordingInfo {
    /// Contents of one sensor's frames.
    struct Sensor {
        FrameStatistics frames;
        std::set<std::int32_t> ids;                    ///< of all tracks
        std::map<std::string, std::uint64_t> classes;  ///< reports by class
    };

    RecordingHeader header;
    TimeSpan span;  ///< of measurements and truth
    Sensor video;
    Sensor radar;
    std::uint64_t truthFrames = 0;
    std::map<std::int32_t, std::string> trueObjects;  ///< class by id
    std::string digest;                               ///< see RecordingReader::digest
};

/// Contents of a file of fused tracks.
struct FusedInfo {
    std::string recording;  ///< its name
    TimeSpan span;          ///< of the estimates
    std::uint64_t frames = 0;
    std::uint64_t tracks = 0;             ///< in all frames together
    std::set<std::int32_t> ids;           ///< of system tracks
    std::set<std::int32_t> confirmedIds;  ///< of those, once confirmed
    std::optional<RunDigests> digests;    ///< nothing: an unfinished file, or one of an old program
};

/// Called after each line with the file that is being read.
using InfoProgress = std::function<void(const LineReader&)>;

/// @param path a recording
/// @param excerpt the part of it that is looked at
/// @param progress called after each line
/// @return its contents
/// @throw InputError the fault, with file and line
RecordingInfo infoOfRecording(const std::string& path, const Excerpt& excerpt,
                              const InfoProgress& progress);

/// @param path a file of fused tracks, as `replay` and `run` write them
/// @param progress called after each line
/// @return its contents
/// @throw InputError the fault, with file and line
FusedInfo infoOfFused(const std::string& path, const InfoProgress& progress);

/// @param info contents of a file
/// @return some lines for people, each with line end
std::string toText(const RecordingInfo& info);
/// @copydoc toText(const RecordingInfo&)
std::string toText(const FusedInfo& info);

/// @param info contents of a file
/// @return the same as an object; the names of its members include units
nlohmann::ordered_json toJson(const RecordingInfo& info);
/// @copydoc toJson(const RecordingInfo&)
nlohmann::ordered_json toJson(const FusedInfo& info);

}  // namespace Workbench
