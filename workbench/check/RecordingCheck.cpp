// SPDX-License-Identifier: Apache-2.0
#include "check/RecordingCheck.h"

#include "check/FrameStatistics.h"
#include "check/LocatedJson.h"
#include "check/SceneCheck.h"
#include "check/TrackPairs.h"
#include "geometry/Projection.h"
#include "io/InputError.h"
#include "recording/RecordingReader.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <string_view>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// Fewer samples of common objects say nothing.
constexpr std::size_t fewestSamples = 50;
constexpr std::size_t fewestBlocks = 8;
/// More faults than this are no longer listed one by one.
constexpr std::size_t mostFaults = 100;

/// Splits "FILE:LINE: KEY: REASON" as the reader words it.
Finding findingOf(const InputError& error, const std::string& file, std::uint64_t line) {
    std::string_view text = error.what();
    const std::string place = fmt::format("{}:{}: ", file, line);
    if (text.substr(0, place.size()) == place) {
        text.remove_prefix(place.size());
    }
    Finding finding{Severity::Fault, line, "", "", std::string(text)};
    const std::size_t colon = text.find(": ");
    const bool namesKey = colon != std::string_view::npos &&
                          text.substr(0, colon).find(' ') == std::string_view::npos;
    if (namesKey) {
        finding.key = text.substr(0, colon);
        finding.message = text.substr(colon + 2);
    }
    return finding;
}

/// Opens a recording and checks its header member by member.
/// @return nothing when the header has a fault, so that no line can be understood
std::unique_ptr<RecordingReader> open(const std::string& path, Findings& findings) {
    bool hasLine = false;
    const auto checkLine = [&](std::string_view text) {
        hasLine = true;
        LocatedValue header;
        if (parseLocated(text, Comments::Refused, header).line == 0) {
            checkHeader(header, findings);
        }
    };
    try {
        return std::make_unique<RecordingReader>(path, TruthLines::Read, checkLine);
    } catch (const InputError& error) {
        if (!hasLine) {
            throw;  // there is no such file
        }
        if (!hasFault(findings)) {
            findings.push_back(findingOf(error, path == "-" ? "<stdin>" : path, 1));
        }
        return nullptr;
    }
}

Finding noteOf(std::string key, std::string message) {
    return {Severity::Note, 0, std::move(key), "", std::move(message)};
}

void judgeFrames(const char* name, const FrameStatistics& frames, Findings& findings) {
    if (frames.frames() < 2) {
        findings.push_back({Severity::Warning, 0, name, "",
                            fmt::format("{} frames in the whole recording", frames.frames())});
        return;
    }
    const double interval = frames.medianInterval();
    findings.push_back(noteOf(
        name,
        fmt::format("{} frames, {} of them empty, every {:.3f} s ({:.1f} per second), {:.1f} "
                    "tracks each; {:.0f} ms from measurement to arrival, at most {:.0f} ms",
                    frames.frames(), frames.emptyFrames(), interval, 1.0 / interval,
                    static_cast<double>(frames.tracks()) / static_cast<double>(frames.frames()),
                    1000.0 * frames.meanDelay(), 1000.0 * frames.longestDelay())));
    const double limit = std::max(3.0 * interval, 0.3);
    const FrameStatistics::Gap& longest = *frames.longestGap();
    if (longest.length > limit) {
        findings.push_back(
            {Severity::Warning, longest.line, name, "",
             fmt::format("no frame for {:.2f} s after {:.2f} s, the longest of {} gaps of more "
                         "than {:.2f} s{}",
                         longest.length, longest.after, frames.gapsLongerThan(limit), limit,
                         std::string_view(name) == "video"
                             ? "; a host sends empty frames then, or radar frames wait 1.5 s"
                             : "")});
    }
    if (interval > 0.4) {
        findings.push_back(
            {Severity::Warning, 0, name, "",
             fmt::format("a frame every {:.2f} s, but a track without a report for 0.5 s is "
                         "dropped; the host must report predicted tracks in between",
                         interval)});
    }
}

/// One property of the installation, in the units of the header.
struct Deviation {
    const char* name;      ///< as in "the camera's height"
    const char* unit;      ///< with a blank in front
    Estimated estimate;    ///< true minus stated
    double limit;          ///< below it nobody notices
    double observableStd;  ///< above it the recording does not tell
    std::string remedy;    ///< what to write where
};

void judge(const Deviation& deviation, Findings& findings) {
    const auto& [name, unit, estimate, limit, observableStd, remedy] = deviation;
    if (estimate.std > observableStd) {
        findings.push_back(
            noteOf(name, fmt::format("the recording does not tell (uncertain by {:.2g}{})",
                                     estimate.std, unit)));
        return;
    }
    const bool isOff = estimate.isSignificant && std::abs(estimate.value) > limit;
    findings.push_back({isOff ? Severity::Warning : Severity::Note, 0, name, "",
                        fmt::format("off by {:+.2f}{} (standard deviation {:.2f}){}",
                                    estimate.value, unit, estimate.std, isOff ? remedy : "")});
}

}  // namespace

void judgeMounting(const RecordingHeader& header, const MountingEstimate& estimate,
                   Findings& findings) {
    const auto inDegrees = [](const Estimated& angle) {
        return Estimated{degrees(angle.value), degrees(angle.std), angle.isSignificant};
    };
    const Mounting& camera = header.camera.mounting;
    const Mounting& radar = header.radar.mounting;
    const Estimated yaw = inDegrees(estimate.yaw);
    const Estimated pitch = inDegrees(estimate.pitch);
    judge({"yaw", " degrees", yaw, 0.7, 1.0,
           fmt::format("; set camera.rotation.yaw to {:.2f} instead of {:.2f}, or "
                       "radar.rotation.yaw to {:.2f} instead of {:.2f}",
                       camera.yaw + yaw.value, camera.yaw, radar.yaw - yaw.value, radar.yaw)},
          findings);
    judge({"height", " m", estimate.height, 0.2, 0.3,
           fmt::format("; set camera.position[2] to {:.2f} instead of {:.2f}",
                       camera.position[2] + estimate.height.value, camera.position[2])},
          findings);
    judge({"pitch", " degrees", pitch, 0.5, 0.7,
           fmt::format("; set camera.rotation.pitch to {:.2f} instead of {:.2f}",
                       camera.pitch + pitch.value, camera.pitch)},
          findings);
    judge({"lag", " s", estimate.lag, 0.08, 0.1,
           fmt::format("; subtract {:.3f} s from the radar's time stamps", estimate.lag.value)},
          findings);
}

RecordingCheckResult checkRecording(
    const std::string& path, const std::function<void(std::uint64_t, std::uint64_t)>& progress) {
    RecordingCheckResult result;
    const std::unique_ptr<RecordingReader> opened = open(path, result.findings);
    if (!opened) {
        return result;
    }
    RecordingReader& reader = *opened;
    FrameStatistics video;
    FrameStatistics radar;
    TrackPairs pairs(reader.header());
    std::size_t faults = 0;
    for (;;) {
        const std::uint64_t lineBefore = reader.input().lineNumber();
        try {
            const std::optional<RecordingLine> line = reader.next();
            if (!line) {
                break;
            }
            if (const auto* frame = std::get_if<SensorFrame>(&*line)) {
                (frame->source == Veskar::VideoObject ? video : radar)
                    .add(*frame, reader.input().lineNumber());
                pairs.add(*frame);
            }
        } catch (const InputError& error) {
            if (reader.input().lineNumber() == lineBefore) {
                throw;  // the reading itself has failed, not a line
            }
            if (++faults <= mostFaults) {
                result.findings.push_back(
                    findingOf(error, reader.input().name(), reader.input().lineNumber()));
            }
        }
        progress(reader.input().bytesRead(), reader.input().size());
    }
    if (faults > mostFaults) {
        result.findings.push_back(
            {Severity::Fault, 0, "", "", fmt::format("{} more faulty lines", faults - mostFaults)});
    }
    judgeFrames("video", video, result.findings);
    judgeFrames("radar", radar, result.findings);
    if (pairs.samples().size() >= fewestSamples) {
        result.mounting =
            estimateMounting(pairs.samples(), reader.header().camera.mounting.position[2]);
    }
    if (!result.mounting || result.mounting->blocks < fewestBlocks) {
        result.mounting.reset();
        result.findings.push_back(
            noteOf("installation", "too few objects were seen by both sensors to judge it"));
        return result;
    }
    judgeMounting(reader.header(), *result.mounting, result.findings);
    return result;
}

}  // namespace Workbench
