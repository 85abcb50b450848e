// SPDX-License-Identifier: Apache-2.0
#include "check/RecordingCheck.h"

#include <veskar-host/InputError.h>
#include <veskar-host/Projection.h>

#include "check/FrameStatistics.h"
#include "check/LocatedJson.h"
#include "check/SceneCheck.h"
#include "check/TrackPairs.h"
#include "io/Counted.h"
#include "recording/LabelWords.h"
#include "recording/RecordingReader.h"
#include "recording/RefusedFrame.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

namespace Workbench {
namespace {

/// With fewer samples of common objects nothing is concluded.
constexpr std::size_t fewestSamples = 50;
constexpr std::size_t fewestBlocks = 8;
/// With this many reports, isolated objects would suffice to judge the installation.
constexpr std::uint64_t plentyOfReports = 200;
/// Further faults are only counted.
constexpr std::uint64_t mostFaults = 100;

Finding faultOf(const InputError& error, std::uint64_t line) {
    return {Severity::Fault, line, error.key(), "", error.reason()};
}

/// Opens a recording and checks its header member by member.
/// @return nothing when the header has a fault, so that the lines cannot be read
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
            findings.push_back(faultOf(error, 1));
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
                            counted(frames.frames(), "frame") + " in the whole recording"});
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
             fmt::format("no frame for {:.2f} s after {:.2f} s, the longest of {} of more than "
                         "{:.2f} s{}",
                         longest.length, longest.after,
                         counted(frames.gapsLongerThan(limit), "gap"), limit,
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

/// One property of the installation, in the units of the header, with its judgement.
struct Deviation {
    const char* name;      ///< as in "the camera's height"
    const char* unit;      ///< with a leading blank
    Estimated estimate;    ///< true minus stated
    double limit;          ///< smaller values are negligible
    double observableStd;  ///< with larger ones the recording does not determine it
    std::string remedy;    ///< instruction with the key to change
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

namespace {

/// Collects faults of single lines and lists the first ones.
class LineFaults {
public:
    void add(Finding finding) {
        if (++count_ <= mostFaults) {
            list_.push_back(std::move(finding));
        } else {
            countKind(finding.key);
        }
    }

    /// @param findings receives the faults
    /// @param key key of the convention that explains all of them; empty when there is none
    void tell(const std::string& key, Findings& findings) const {
        if (!key.empty() && count_ > 0) {
            findings.push_back({Severity::Fault, list_.front().line, key, "",
                                count_ == 1 ? "the frame is refused for it"
                                            : fmt::format("{} frames are refused for it, this is "
                                                          "the first",
                                                          count_),
                                false, count_});
            return;
        }
        findings.insert(findings.end(), list_.begin(), list_.end());
        if (count_ > mostFaults) {
            const std::uint64_t more = count_ - mostFaults;
            findings.push_back({Severity::Fault, 0, "", "",
                                counted(more, "more faulty line") + kinds(), false, more});
        }
    }

private:
    /// Counts those beyond the listed ones by the member that is at fault, whatever its index.
    void countKind(const std::string& key) {
        constexpr std::size_t mostKinds = 20;
        std::string kind;
        for (const char c : key) {
            const bool isIndex = std::isdigit(static_cast<unsigned char>(c)) != 0 &&
                                 !kind.empty() && kind.back() == '[';
            kind += isIndex ? "" : std::string(1, c);
        }
        const bool isKnown = !kind.empty() && (kinds_.count(kind) > 0 || kinds_.size() < mostKinds);
        ++(isKnown ? kinds_[kind] : others_);
    }

    /// @return ": 20 in tracks[].range, 3 in time, 1 elsewhere", the most frequent first
    std::string kinds() const {
        std::vector<std::pair<std::string, std::uint64_t>> sorted(kinds_.begin(), kinds_.end());
        std::stable_sort(sorted.begin(), sorted.end(),
                         [](const auto& a, const auto& b) { return a.second > b.second; });
        std::string text;
        for (const auto& [kind, count] : sorted) {
            text += fmt::format("{}{} in {}", text.empty() ? ": " : ", ", count, kind);
        }
        if (others_ > 0 && !text.empty()) {
            text += fmt::format(", {} elsewhere", others_);
        }
        return text;
    }

    std::uint64_t count_ = 0;
    Findings list_;
    std::map<std::string, std::uint64_t> kinds_;
    std::uint64_t others_ = 0;
};

/// Gathers the evidence from the lines of a recording.
class Lines {
public:
    explicit Lines(const RecordingReader& opened)
        : reader_(opened),
          pairs_(opened.header()),
          conventions_(opened.header()),
          words_([this](const char* key, const std::string& word, const std::string& advice) {
              const bool isClass = std::string_view(key) == "class";
              unknownWords_.push_back({isClass ? "class-words" : "color-words",
                                       false,
                                       {Severity::Warning, reader_.input().lineNumber(), key,
                                        fmt::format("\"{}\"", word), advice}});
          }) {}

    void take(const RecordingLine& line) {
        words_.look(line);
        if (const auto* frame = std::get_if<SensorFrame>(&line)) {
            statisticsOf(*frame).add(*frame, reader_.input().lineNumber());
            pairs_.add(*frame);
            conventions_.add(*frame);
        }
    }

    void take(const RefusedFrame& refused) {
        const bool isTime = refused.cause == RefusedFrame::Cause::Time;
        (isTime ? refusedTimes_ : refusedBoxes_).add(faultAt(refused));
        conventions_.add(refused);
        words_.look(refused.frame);
        if (!isTime) {
            statisticsOf(refused.frame).add(refused.frame, reader_.input().lineNumber());
        }
    }

    void take(const InputError& error) { otherFaults_.add(faultAt(error)); }

    void judge(RecordingCheckResult& result) const {
        result.conventions = conventions_.found();
        result.conventions.insert(result.conventions.end(), unknownWords_.begin(),
                                  unknownWords_.end());
        Findings faults;
        otherFaults_.tell("", faults);
        refusedTimes_.tell(explaining("time", result), faults);
        refusedBoxes_.tell(explaining("box", result), faults);
        std::stable_sort(faults.begin(), faults.end(),
                         [](const Finding& a, const Finding& b) { return a.line < b.line; });
        Findings& findings = result.findings;
        findings.insert(findings.end(), faults.begin(), faults.end());
        judgeFrames("video", video_, findings);
        judgeFrames("radar", radar_, findings);
        for (const Convention& convention : result.conventions) {
            findings.push_back(convention.finding);
        }
        judgeInstallation(result);
    }

private:
    FrameStatistics& statisticsOf(const SensorFrame& frame) {
        return frame.source == Veskar::VideoObject ? video_ : radar_;
    }

    Finding faultAt(const InputError& error) const {
        return faultOf(error, reader_.input().lineNumber());
    }

    static std::string explaining(const char* key, const RecordingCheckResult& result) {
        const bool isExplained = std::any_of(
            result.conventions.begin(), result.conventions.end(),
            [key](const Convention& convention) { return convention.finding.key == key; });
        return isExplained ? key : "";
    }

    void judgeInstallation(RecordingCheckResult& result) const {
        if (std::any_of(result.conventions.begin(), result.conventions.end(),
                        [](const Convention& convention) { return convention.misplaces; })) {
            result.findings.push_back(
                noteOf("installation", "cannot be judged before that is put right"));
            return;
        }
        if (!sensorsAgree()) {
            result.findings.push_back(disagreement());
            return;
        }
        if (pairs_.samples().size() >= fewestSamples) {
            result.mounting =
                estimateMounting(pairs_.samples(), reader_.header().camera.mounting.position[2]);
        }
        if (!result.mounting || result.mounting->blocks < fewestBlocks) {
            const std::size_t blocks = result.mounting ? result.mounting->blocks : 0;
            result.mounting.reset();
            result.findings.push_back(withoutEstimate(blocks));
            return;
        }
        judgeMounting(reader_.header(), *result.mounting, result.findings);
    }

    /// Whether enough video reports have a radar partner at their position, as far as this can be
    /// judged.
    bool sensorsAgree() const {
        constexpr double leastShare = 0.15;
        const Agreement& tally = conventions_.agreement();
        return tally.asked() < plentyOfReports || pairs_.radarTracks() == 0 ||
               tally.share({}) > leastShare;
    }

    Finding disagreement() const {
        const Agreement& tally = conventions_.agreement();
        return {Severity::Warning, 0, "installation", "",
                fmt::format("radar and video do not see objects in the same places: of {} reports "
                            "of {} video tracks {:.0f} % have one of the {} radar tracks where "
                            "they stand; look at the mounting, the lens and the clocks",
                            tally.asked(), pairs_.videoTracks(), 100.0 * tally.share({}),
                            pairs_.radarTracks())};
    }

    /// States why the installation cannot be judged.
    Finding withoutEstimate(std::size_t blocks) const {
        const Agreement& tally = conventions_.agreement();
        const bool isPlenty = tally.share({}) * static_cast<double>(tally.asked()) >
                              static_cast<double>(plentyOfReports);
        return noteOf(
            "installation",
            fmt::format("{} to judge it: {} samples of {} pairs of tracks in {} stretches of time, "
                        "{} in {} are needed; video has {} tracks, radar {}",
                        isPlenty ? "both sensors see the objects, but too rarely one that is alone "
                                   "and keeps its course,"
                                 : "too few objects were seen by both sensors",
                        pairs_.samples().size(), pairs_.pairs(), blocks, fewestSamples,
                        fewestBlocks, pairs_.videoTracks(), pairs_.radarTracks()));
    }

    const RecordingReader& reader_;
    FrameStatistics video_;
    FrameStatistics radar_;
    TrackPairs pairs_;
    Conventions conventions_;
    std::vector<Convention> unknownWords_;
    UnknownWords words_;
    LineFaults otherFaults_;
    LineFaults refusedTimes_;
    LineFaults refusedBoxes_;
};

}  // namespace

RecordingCheckResult checkRecording(const std::string& path,
                                    const std::function<void(const LineReader&)>& progress) {
    RecordingCheckResult result;
    const std::unique_ptr<RecordingReader> opened = open(path, result.findings);
    if (!opened) {
        return result;
    }
    RecordingReader& reader = *opened;
    Lines lines(reader);
    for (;;) {
        const std::uint64_t lineBefore = reader.input().lineNumber();
        try {
            const std::optional<RecordingLine> line = reader.next();
            if (!line) {
                break;
            }
            lines.take(*line);
        } catch (const RefusedFrame& error) {
            lines.take(error);
        } catch (const InputError& error) {
            if (reader.input().lineNumber() == lineBefore) {
                throw;  // the reading itself has failed, not a line
            }
            lines.take(error);
        }
        progress(reader.input());
    }
    lines.judge(result);
    return result;
}

}  // namespace Workbench
